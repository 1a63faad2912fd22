#include <gtest/gtest.h>

#include <csignal>

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QXmlStreamReader>

#include "support/qtprinters.h"
#include "support/signalhandled.h"

namespace {

struct Finished
{
    QString out, err;
    int status = -1;
};

Finished run(const QString &program, const QStringList &args, const QProcessEnvironment &env = QProcessEnvironment::systemEnvironment())
{
    QProcess p;
    p.setProcessEnvironment(env);
    p.start(program, args);
    if (!p.waitForFinished(120000)) {
        p.kill();
        p.waitForFinished();
        return {QString(), QStringLiteral("timed out")};
    }
    return {QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError()),
            p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1};
}

QByteArray contents(const QString &path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// One installation for the whole suite: installing is what is tested, and it takes a while.
class Install : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_prefix = new QTemporaryDir;
        const Finished r = run(QStringLiteral(KV_CMAKE), {QStringLiteral("--install"), QStringLiteral(KV_BUILD_DIR),
                                                     QStringLiteral("--prefix"), s_prefix->path()});
        s_installed = r.status == 0;
        if (!s_installed)
            std::fprintf(stderr, "%s%s", qPrintable(r.out), qPrintable(r.err));
    }
    static void TearDownTestSuite() { delete s_prefix; }
    void SetUp() override { ASSERT_TRUE(s_installed) << "cmake --install failed"; }

    static QString path(const QString &relative) { return s_prefix->path() + QLatin1Char('/') + relative; }
    static QString cli() { return path(QStringLiteral("bin/kestrelvane-cli")); }

    static inline QTemporaryDir *s_prefix = nullptr;
    static inline bool s_installed = false;
};

TEST_F(Install, InstalledCliListsAFolderAndRunsItsCodecs)
{
    QTemporaryDir music;
    const QString source = music.filePath(QStringLiteral("Evening take.wav"));
    ASSERT_TRUE(QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"), source));
    const QByteArray before = contents(source);

    const Finished list = run(cli(), {QStringLiteral("list"), music.path()});
    EXPECT_EQ(list.status, 0) << qPrintable(list.err);
    EXPECT_TRUE(list.out.contains(QStringLiteral("\nEvening take.wav\t9\t0:00:00\t1411\t44100\tStereo\n"))) << qPrintable(list.out);

    // Each encoder of the installed codec folder, found beside the installed program.
    for (const char *kind : {"mp3", "ogg", "mpc"}) {
        const Finished convert = run(cli(), {QStringLiteral("convert"), QStringLiteral("--to"), QLatin1String(kind), music.path()});
        EXPECT_EQ(convert.status, 0) << kind << ' ' << qPrintable(convert.err);
        EXPECT_TRUE(convert.out.contains(QStringLiteral("Finished 1 of 1"))) << kind;
        EXPECT_GT(QFileInfo(music.filePath(QStringLiteral("Evening take.") + QLatin1String(kind))).size(), 0) << kind;
    }
    EXPECT_EQ(contents(source), before);
}

// Installed for every user, the program's folder is not the user's to write: the settings are
// then read from (and written to) the user's configuration folder.
TEST_F(Install, ReadOnlyProgramFolderTakesTheSettingsFromTheUsersFolder)
{
    QTemporaryDir home;
    const QString configFolder = home.filePath(QStringLiteral("config/kestrelvane"));
    ASSERT_TRUE(QDir().mkpath(configFolder));
    QByteArray record(10310, '\0');
    record[7] = 55; // Ogg quality 4.5
    QFile config(configFolder + QStringLiteral("/kestrvan.cfg"));
    ASSERT_TRUE(config.open(QIODevice::WriteOnly) && config.write(record) == record.size());
    config.close();

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    // How a program of the installation is started: as the user, or as nobody when that is root.
    QStringList runner;
    const QString bin = path(QStringLiteral("bin"));
    const QFile::Permissions open = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup
                                    | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
    if (::geteuid() == 0) {
        // Every folder is writable for root: run as nobody, who may only read the program.
        for (const QString &folder : {s_prefix->path(), home.path(), home.filePath(QStringLiteral("config")), configFolder})
            QFile::setPermissions(folder, open);
        // The user's own folder is nobody's, so the window can save there.
        for (const QString &own : {home.path(), home.filePath(QStringLiteral("config")), configFolder, config.fileName()})
            ASSERT_EQ(::chown(QFile::encodeName(own).constData(), 65534, 65534), 0);
        if (!QFileInfo(QStringLiteral("/usr/bin/setpriv")).isExecutable())
            GTEST_SKIP() << "setpriv is needed to drop root";
        runner = {QStringLiteral("/usr/bin/setpriv"), QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                  QStringLiteral("--clear-groups")};
    } else {
        QFile::setPermissions(bin, open & ~QFile::WriteOwner);
    }
    auto started = [&](const QString &program, const QStringList &args) {
        return runner.isEmpty() ? std::pair{program, args} : std::pair{runner[0], runner.mid(1) + QStringList{program} + args};
    };
    const auto [cliProgram, cliArgs] = started(cli(), {QStringLiteral("options")});
    const Finished r = run(cliProgram, cliArgs, env);
    EXPECT_EQ(r.status, 0) << qPrintable(r.err);
    EXPECT_EQ(r.err, QString());
    EXPECT_TRUE(r.out.contains(QStringLiteral("Ogg\t--quiet --quality 4.5\t"))) << qPrintable(r.out);

#ifdef KV_WITH_WINDOW
    // The window reads them there too, and a session's end saves them back there.
    QProcess window;
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    window.setProcessEnvironment(env);
    const auto [gui, guiArgs] = started(path(QStringLiteral("bin/kestrelvane")), {});
    window.start(gui, guiArgs);
    ASSERT_TRUE(window.waitForStarted());
    bool up = false;
    for (int i = 0; i < 300 && !(up = kv::test::handlesSignal(window.processId(), SIGTERM)); ++i)
        QThread::msleep(100);
    ::kill(static_cast<pid_t>(window.processId()), SIGTERM);
    ASSERT_TRUE(window.waitForFinished(20000));
    QFile::setPermissions(bin, open);
    ASSERT_TRUE(up) << window.readAllStandardError().constData();
    EXPECT_EQ(window.exitCode(), 128 + SIGTERM);
    const QByteArray saved = contents(config.fileName());
    ASSERT_EQ(saved.size(), record.size());
    EXPECT_EQ(saved[7], 55);
    EXPECT_NE(saved, record) << "the window's place is saved with them";
    EXPECT_FALSE(QFile::exists(home.filePath(QStringLiteral("config/kestrvan.cfg"))));
#else
    QFile::setPermissions(bin, open);
#endif
}

} // namespace
