#include <sys/stat.h>

#include <csignal>

#include <QScopeGuard>

#include "cli/clifixtures.h"
#include "support/signalhandled.h"

// One installation for every check: installing is what is tested, and it takes a while. The
// installed program lists a folder and runs each encoder of the codec folder installed beside it.
// Installed for every user, the program's folder is not the user's to write: the settings are then
// read from (and written to) the user's configuration folder.
TEST(Install, InstalledProgramRunsItsCodecsAndKeepsTheSettingsInTheUsersFolder)
{
    QTemporaryDir prefix, music, home;
    const CliResult install = runCli({u"--install"_s, QStringLiteral(KV_BUILD_DIR), u"--prefix"_s, prefix.path()},
                                     {.program = QStringLiteral(KV_CMAKE)});
    ASSERT_EQ(install.status, 0) << "cmake --install: " << install.out.toStdString() << install.err.toStdString();
    const QString bin = prefix.filePath(u"bin/"_s), source = music.filePath(u"Evening take.wav"_s);
    ASSERT_TRUE(QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"), source));
    const CliRun cli{.program = bin + u"kestrelvane-cli"_s};
    const CliResult list = runCli({u"list"_s, music.path()}, cli);
    EXPECT_TRUE(list.out.contains(u"\nEvening take.wav\t9\t0:00:00\t1411\t44100\tStereo\n"_s)) << list.out.toStdString();
    for (const char *kind : {"mp3", "ogg", "mpc"}) {
        const CliResult r = runCli({u"convert"_s, u"--to"_s, QLatin1String(kind), music.path()}, cli);
        EXPECT_EQ(r.status, 0) << kind << ' ' << r.err.toStdString();
        EXPECT_TRUE(r.out.contains(u"Finished 1 of 1"_s)) << kind;
        EXPECT_GT(QFileInfo(music.filePath(u"Evening take."_s + QLatin1String(kind))).size(), 0) << kind;
    }
    EXPECT_EQ(readAll(source), readAll(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav")));

    const QString configFolder = home.filePath(u"config/kestrelvane"_s), config = configFolder + u"/kestrvan.cfg"_s;
    ASSERT_TRUE(QDir().mkpath(configFolder));
    const QByteArray settings = record({{7, 55}}); // Ogg quality 4.5
    write(config, settings);
    CliRun how{.program = u"/usr/bin/env"_s,
               .env = {u"HOME="_s + home.path(), u"XDG_CONFIG_HOME="_s + home.filePath(u"config"_s), u"QT_QPA_PLATFORM=offscreen"_s}};
    QStringList runner; // how a program of the installation is started: as the user, or as nobody for root
    if (::geteuid() == 0) {
        if (!QFileInfo(u"/usr/bin/setpriv"_s).isExecutable())
            GTEST_SKIP() << "setpriv is needed to drop root";
        // Every folder is writable for root: nobody may only read the program, and owns the user's folders.
        ::chmod(QFile::encodeName(prefix.path()).constData(), 0755);
        ASSERT_EQ(QProcess::execute(u"/bin/chown"_s, {u"-R"_s, u"65534:65534"_s, home.path()}), 0);
        how.program = u"/usr/bin/setpriv"_s;
        runner = {u"--reuid=65534"_s, u"--regid=65534"_s, u"--clear-groups"_s};
    } else {
        ::chmod(QFile::encodeName(bin).constData(), 0555);
    }
    const auto reopen = qScopeGuard([&] { ::chmod(QFile::encodeName(bin).constData(), 0755); }); // for the prefix's removal
    const CliResult r = runCli(runner + QStringList{bin + u"kestrelvane-cli"_s, u"options"_s}, how);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, QString());
    EXPECT_TRUE(r.out.contains(u"Ogg\t--quiet --quality 4.5\t"_s)) << r.out.toStdString();

#ifdef KV_WITH_WINDOW
    // The window reads them there too, and a session's end saves them back there.
    QProcess window;
    startCli(window, runner + QStringList{bin + u"kestrelvane"_s}, how);
    bool up = false;
    for (int i = 0; i < 300 && !(up = kv::test::handlesSignal(window.processId(), SIGTERM)); ++i)
        QThread::msleep(100);
    ::kill(static_cast<pid_t>(window.processId()), SIGTERM);
    ASSERT_TRUE(window.waitForFinished(20000));
    ASSERT_TRUE(up) << window.readAllStandardError().constData();
    EXPECT_EQ(window.exitCode(), 128 + SIGTERM);
    const QByteArray saved = readAll(config);
    ASSERT_EQ(saved.size(), settings.size());
    EXPECT_EQ(saved[7], 55);
    EXPECT_NE(saved, settings) << "the window's place is saved with them";
    EXPECT_FALSE(QFile::exists(home.filePath(u"config/kestrvan.cfg"_s)));
#endif
}
