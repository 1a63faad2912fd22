#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include "clirunner.h"
#include "support/qtprinters.h"

namespace {

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &bytes)
{
    const QString path = dir.filePath(name);
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
    return path;
}

QByteArray record()
{
    return QByteArray(10310, '\0');
}

QString lines(const char *encoder, const char *options, int bitrate)
{
    return QStringLiteral("encoder\t") + QLatin1String(encoder) + QStringLiteral("\noptions\t")
           + QLatin1String(options) + QStringLiteral("\nbitrate\t") + QString::number(bitrate)
           + QLatin1Char('\n');
}

} // namespace

TEST(OptionsCommand, PrintsTheSelectedTabsEncoder)
{
    QTemporaryDir dir;
    QByteArray mpc = record();
    mpc[0] = 3;       // Musepack tab
    mpc[9] = 1;       // quality mode
    mpc[11] = 45;     // 4.5
    QByteArray ogg = record();
    ogg[0] = 2;
    ogg[7] = 55;      // quality 4.5, decimal comma kept under a comma locale
    QByteArray mp3 = record();
    mp3[0] = 7;       // no such tab: the first stays
    mp3[2] = 2;
    mp3[5] = 16;      // " 8 kbps"
    QByteArray russian = record();
    russian[1] = 1;
    russian[0] = 1;
    russian[2] = 3;
    russian.replace(3142, 9, QByteArray("  -V 2   "));

    const struct
    {
        QByteArray bytes;
        const char *locale;
        QString out;
    } cases[] = {
        {mpc, "de_DE.UTF-8", lines("Mpc", "--overwrite --silent --quality 4.5", 155)},
        {ogg, "de_DE.UTF-8", lines("Ogg", "--quiet --quality 4,5", 144)},
        {mp3, "C.UTF-8", lines("Mp3", "--preset cbr 8 --silent --priority", 8)},
        {russian, "C.UTF-8", lines("Mp3", "-V 2 --silent --priority", 224)},
    };
    for (const auto &c : cases) {
        const QString path = writeFile(dir, QStringLiteral("kestrvan.cfg"), c.bytes);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("LC_ALL"), QLatin1String(c.locale));
        const CliResult r = runCli({QStringLiteral("options"), QStringLiteral("--config"), path}, env);
        EXPECT_EQ(r.out, c.out);
        EXPECT_EQ(r.err, QString());
        EXPECT_EQ(r.status, 0);
    }
}

TEST(OptionsCommand, FileNotReadLeavesTheDefaults)
{
    QTemporaryDir dir;
    const QString shortFile = writeFile(dir, QStringLiteral("short.cfg"), QByteArray(10309, '\3'));
    const QString missing = dir.filePath(QStringLiteral("missing.cfg"));
    const struct
    {
        QString path;
        QString why;
    } cases[] = {
        {shortFile, QStringLiteral("10309 bytes, not 10310")},
        {missing, QStringLiteral("missing")},
    };
    for (const auto &c : cases) {
        const CliResult r = runCli({QStringLiteral("options"), QStringLiteral("--config=") + c.path});
        EXPECT_EQ(r.out, lines("Mp3", "--preset extreme --silent --priority", 234));
        EXPECT_EQ(r.err, QStringLiteral("kestrelvane-cli: ") + c.path + QStringLiteral(" not read (") + c.why
                             + QStringLiteral("); using the defaults\n"));
        EXPECT_EQ(r.status, 0);
    }
}

TEST(OptionsCommand, LoadEndedByARefusedValueKeepsWhatCameBefore)
{
    QTemporaryDir dir;
    QByteArray bytes = record();
    bytes[0] = 2;
    bytes[6] = 1;   // Ogg average bitrate: applied
    bytes[7] = 111; // quality 10.1: refused, so ...
    bytes[8] = 72;  // ... the 200 kbps is never reached
    const QString path = writeFile(dir, QStringLiteral("kestrvan.cfg"), bytes);
    const CliResult r = runCli({QStringLiteral("options"), QStringLiteral("--config"), path});
    EXPECT_EQ(r.out, lines("Ogg", "--quiet --bitrate 192", 192));
    EXPECT_EQ(r.status, 0);
}

TEST(OptionsCommand, UsageAndHelp)
{
    const CliResult bad = runCli({QStringLiteral("options"), QStringLiteral("--verbose")});
    EXPECT_EQ(bad.out, QString());
    EXPECT_EQ(bad.err, QStringLiteral("kestrelvane-cli: unknown option \"--verbose\"\n"
                                      "usage: kestrelvane-cli options [--config FILE]\n"));
    EXPECT_EQ(bad.status, 2);

    const CliResult noFile = runCli({QStringLiteral("options"), QStringLiteral("--config")});
    EXPECT_EQ(noFile.status, 2);
    EXPECT_TRUE(noFile.err.endsWith(QStringLiteral("usage: kestrelvane-cli options [--config FILE]\n")));

    const CliResult help = runCli({QStringLiteral("options"), QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.startsWith(QStringLiteral("usage: kestrelvane-cli options [--config FILE]\n\n")));
    EXPECT_TRUE(help.out.contains(QStringLiteral("10310")));
    EXPECT_EQ(help.err, QString());
}
