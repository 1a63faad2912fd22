#include <gtest/gtest.h>

#include "clifixtures.h"
#include "support/qtprinters.h"
#include "support/recorded.h"

using namespace Qt::StringLiterals;

TEST(OptionsCommand, PrintsEveryEncoder)
{
    QByteArray commandLine = record({{2, 3}, {6, 2}});
    commandLine.replace(3142, 8, QByteArray("  -V 2  "));
    // Tabs and backslashes in a command-line text are escaped, so the line keeps three fields.
    const QByteArray oggText("-q 3\t--x=a\\b\r\x01");
    commandLine.replace(4166, oggText.size(), oggText);
    // %1 in the error is the file's path; a missing or otherwise unread one is in Output.
    const struct { QByteArray bytes; const char *locale; const char *out; const char *err = ""; } cases[] = {
        {record({{2, 2}, {5, 16}, {7, 55}, {9, 1}, {11, 45}}), "de_DE.UTF-8",
         "Mp3\t--preset cbr 8 --silent --priority\t8\nOgg\t--quiet --quality 4.5\t144\nMpc\t--overwrite --silent --quality 4.5\t155\n"},
        {commandLine, "C.UTF-8",
         "Mp3\t-V 2 --silent --priority\t224\nOgg\t--quiet -q 3\\t--x=a\\\\b\\r\\x01\t224\nMpc\t--overwrite --silent --braindead\t270\n"},
        {QByteArray(10309, '\3'), "C.UTF-8",
         "Mp3\t--preset extreme --silent --priority\t234\nOgg\t--quiet --quality 6\t192\nMpc\t--overwrite --silent --insane\t240\n",
         "kestrelvane-cli: %1 not read (10309 bytes, not 10310); using the defaults\n"},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("kestrvan.cfg"));
    for (const auto &c : cases) {
        write(path, c.bytes);
        const CliResult r = runCli({QStringLiteral("options"), QStringLiteral("--config"), path}, {.locale = c.locale});
        EXPECT_EQ(r.out, QLatin1String(c.out));
        EXPECT_EQ(r.err, QString::fromUtf8(c.err).replace(QStringLiteral("%1"), path));
        EXPECT_EQ(r.status, 0);
    }
}

// Every misuse names what is wrong, then the command's usage, and ends with status 2.
TEST(Usage, MisusesGiveTheirReasonAndTheCommandsUsage)
{
    const char *optionsUsage = "options [--config FILE]";
    const char *listUsage = "list [--kind wav|mp3|ogg|mpc] [--lang en|ru] FOLDER";
    const char *convertUsage = "convert --to mp3|ogg|mpc|wav [--from mp3|ogg|mpc] [--jobs N] FOLDER [NAME...]";
    const struct { QStringList args; const char *reason, *usage; } cases[] = {
        {{u"options"_s, u"--verbose"_s, u"/"_s}, "unknown option \"--verbose\"", optionsUsage},
        {{u"options"_s, u"a"_s}, "unexpected argument \"a\"", optionsUsage},
        {{u"list"_s, u"--verbose"_s, u"/"_s}, "unknown option \"--verbose\"", listUsage},
        {{u"list"_s}, "no FOLDER given", listUsage},
        {{u"list"_s, u"/"_s, u"/tmp"_s}, "only one FOLDER can be listed", listUsage},
        {{u"list"_s, u"--kind"_s, u"flac"_s, u"/"_s}, "unknown kind \"flac\" (wav, mp3, ogg or mpc)", listUsage},
        {{u"list"_s, u"--lang"_s, u"de"_s, u"/"_s}, "unknown language \"de\" (en or ru)", listUsage},
        {{u"convert"_s, u"/"_s}, "no --to given", convertUsage},
        {{u"convert"_s, u"--to"_s, u"mp3"_s, u"/"_s, u"-x.wav"_s}, "unknown option \"-x.wav\" (put -- before a name that starts with -)",
         convertUsage},
        {{u"convert"_s, u"--to"_s, u"flac"_s, u"/"_s}, "unknown target \"flac\" (mp3, ogg, mpc or wav)", convertUsage},
    };
    for (const auto &c : cases) {
        const CliResult r = runCli(c.args);
        EXPECT_EQ(r.out, QString());
        EXPECT_EQ(r.err, u"kestrelvane-cli: "_s + QString::fromUtf8(c.reason) + u"\nusage: kestrelvane-cli "_s
                             + QLatin1String(c.usage) + QLatin1Char('\n'));
        EXPECT_EQ(r.status, 2) << c.args.join(u' ').toStdString();
    }
    // No command, and each command's help, as reviewed.
    QStringList shown;
    for (const QStringList &args : {QStringList(), {u"list"_s, u"--help"_s}, {u"convert"_s, u"--help"_s}, {u"options"_s, u"--help"_s}}) {
        const CliResult r = runCli(args);
        shown += (QStringList{u"$ kestrelvane-cli"_s} + args).join(u' ') + u" (status %1)"_s.arg(r.status);
        shown += (r.out + r.err).split(u'\n');
    }
    kv::test::expectAsRecorded(u"cli-help"_s, shown);
    // The other ways help is asked for.
    EXPECT_EQ(runCli({u"convert"_s, u"-h"_s}), runCli({u"convert"_s, u"--help"_s}));
    EXPECT_EQ(runCli({u"help"_s}), runCli({u"--help"_s}));
}
