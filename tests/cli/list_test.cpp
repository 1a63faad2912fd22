#include "clifixtures.h"

// Captions, panels, units and statistics of `list`, in Russian under a Russian (comma) locale:
// stream version 8 as the encoder writes it; 42.5 kbps on average is a tie that goes to 42; the
// forecasts come from the unrounded 0.011 MB (0.059, 0.049 and 0.061). Bit rates that sum to 0
// (a file under 512 bytes is 0 KB) end the statistics before the forecasts: those lines are left
// out, not printed empty. The free space changes from run to run: checked by form, then masked.
TEST(List, PrintsTheChosenLanguageAndNoForecastOfStatisticsEndedEarly)
{
    QTemporaryDir mpc, tiny;
    for (const char *name : {"stereo-44100.mpc", "mono-48000.mpc"})
        ASSERT_TRUE(QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mpc/") + QLatin1String(name), mpc.filePath(QLatin1String(name))));
    write(tiny.filePath(u"x.mpc"_s), QByteArray("MP+\x07\x28", 5) + QByteArray(95, '\0')); // 40 frames
    const QRegularExpression freeSpace(u"^(Свободно|Free Disk Space): [0-9]+([,.][0-9])? (МБ|MB)$"_s, QRegularExpression::MultilineOption);
    QStringList lines;
    for (const auto &[args, locale] : {std::pair(QStringList{u"--lang"_s, u"ru"_s, mpc.path()}, "ru_RU.UTF-8"),
                                       std::pair(QStringList{tiny.path()}, "C.UTF-8")}) {
        CliResult r = runCli(QStringList{u"list"_s, u"--kind"_s, u"mpc"_s} + args, {.locale = locale});
        EXPECT_EQ(r.out.count(freeSpace), 1) << r.out.toStdString();
        r.out.replace(freeSpace, u"\\1: FREE"_s);
        lines += shown(u"LC_ALL="_s + QLatin1String(locale) + u" kestrelvane-cli list --kind mpc "_s + args.join(u' '), r);
    }
    kv::test::expectAsRecorded(u"cli-list"_s, lines.replaceInStrings(tiny.path(), u"<tiny>"_s), mpc.path());
}
