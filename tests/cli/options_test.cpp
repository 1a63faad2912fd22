#include <gtest/gtest.h>

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include "clirunner.h"
#include "support/qtprinters.h"

namespace {

// A zero record with some bytes set: {offset, value}.
QByteArray record(std::initializer_list<std::pair<int, int>> bytes)
{
    QByteArray r(10310, '\0');
    for (const auto &[at, value] : bytes)
        r[at] = static_cast<char>(value);
    return r;
}

struct Line
{
    const char *options;
    int bitrate;
};

QString lines(Line mp3, Line ogg, Line mpc)
{
    return QStringLiteral("Mp3\t%1\t%2\nOgg\t%3\t%4\nMpc\t%5\t%6\n")
        .arg(QLatin1String(mp3.options), QString::number(mp3.bitrate), QLatin1String(ogg.options),
             QString::number(ogg.bitrate), QLatin1String(mpc.options), QString::number(mpc.bitrate));
}

// What an all-zero record leaves for an encoder that a case does not set.
constexpr Line zeroMp3{"--preset insane --silent --priority", 320};
constexpr Line zeroOgg{"--quiet --quality -1", 45};
constexpr Line zeroMpc{"--overwrite --silent --braindead", 270};

} // namespace

TEST(OptionsCommand, PrintsEveryEncoder)
{
    QByteArray commandLine = record({{0, 1}, {1, 1}, {2, 3}});
    commandLine.replace(3142, 9, QByteArray("  -V 2   "));
    const struct { QByteArray bytes; const char *locale; QString out; } cases[] = {
        // Musepack quality 4.5: the comma of the locale is replaced.
        {record({{0, 3}, {9, 1}, {11, 45}}), "de_DE.UTF-8", lines(zeroMp3, zeroOgg, {"--overwrite --silent --quality 4.5", 155})},
        // Ogg quality 4.5: the comma is kept.
        {record({{0, 2}, {7, 55}}), "de_DE.UTF-8", lines(zeroMp3, {"--quiet --quality 4,5", 144}, zeroMpc)},
        // Constant " 8 kbps".
        {record({{0, 7}, {2, 2}, {5, 16}}), "C.UTF-8", lines({"--preset cbr 8 --silent --priority", 8}, zeroOgg, zeroMpc)},
        {commandLine, "C.UTF-8", lines({"-V 2 --silent --priority", 224}, zeroOgg, zeroMpc)},
        // Ogg average bitrate is applied, then quality 10.1 is refused: the load ends there, so
        // the Ogg bit rate of 200 and every Musepack field keep their defaults.
        {record({{0, 2}, {6, 1}, {7, 111}, {8, 72}}), "C.UTF-8",
         lines(zeroMp3, {"--quiet --bitrate 192", 192}, {"--overwrite --silent --insane", 240})},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("kestrvan.cfg"));
    for (const auto &c : cases) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(c.bytes);
        f.close();
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
    const QString shortFile = dir.filePath(QStringLiteral("short.cfg"));
    QFile f(shortFile);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(QByteArray(10309, '\3'));
    f.close();
    const QString missing = dir.filePath(QStringLiteral("missing.cfg"));
    const struct { QString path; const char *why; } cases[] = {
        {shortFile, "10309 bytes, not 10310"},
        {missing, "missing"},
    };
    for (const auto &c : cases) {
        const CliResult r = runCli({QStringLiteral("options"), QStringLiteral("--config=") + c.path});
        EXPECT_EQ(r.out, lines({"--preset extreme --silent --priority", 234}, {"--quiet --quality 6", 192},
                               {"--overwrite --silent --insane", 240}));
        EXPECT_EQ(r.err, QStringLiteral("kestrelvane-cli: %1 not read (%2); using the defaults\n")
                             .arg(c.path, QLatin1String(c.why)));
        EXPECT_EQ(r.status, 0);
    }
}

TEST(OptionsCommand, UsageAndHelp)
{
    const QString usage = QStringLiteral("usage: kestrelvane-cli options [--config FILE]\n");
    const CliResult bad = runCli({QStringLiteral("options"), QStringLiteral("--verbose")});
    EXPECT_EQ(bad.out, QString());
    EXPECT_EQ(bad.err, QStringLiteral("kestrelvane-cli: unknown option \"--verbose\"\n") + usage);
    EXPECT_EQ(bad.status, 2);
    const CliResult noFile = runCli({QStringLiteral("options"), QStringLiteral("--config")});
    EXPECT_EQ(noFile.err, QStringLiteral("kestrelvane-cli: --config needs a file\n") + usage);
    EXPECT_EQ(noFile.status, 2);
    const CliResult help = runCli({QStringLiteral("options"), QStringLiteral("--help")});
    EXPECT_TRUE(help.out.startsWith(usage + QLatin1Char('\n')));
    EXPECT_EQ(help.status, 0);
}
