#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include "clirunner.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

// The encoder gets the quality the settings hold whatever the user's locale: an Ogg quality of 6.5
// gives a file whose header announces 208 kbps, where 6 (what "6,5" reads as in the codec's C
// locale) would give 192 and an Arabic-digit text another rate again.
TEST(ConvertInEveryLocale, OggEncoderGetsTheQualityOfTheSettings)
{
    QByteArray record(10310, '\0');
    record[7] = 75; // Ogg quality 6.5, stored as tenths + 10
    QFile config(QFileInfo(cliPath()).path() + u"/kestrvan.cfg"_s);
    ASSERT_TRUE(config.open(QIODevice::WriteOnly) && config.write(record) == record.size());
    config.close();

    for (const char *locale : {"C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8", "ru_RU.UTF-8", "sv_SE.UTF-8", "ar_EG.UTF-8"}) {
        QTemporaryDir dir;
        ASSERT_EQ(QProcess::execute(u"/usr/bin/sox"_s, {u"-n"_s, u"-r44100"_s, u"-c2"_s, u"-b16"_s, dir.filePath(u"a.wav"_s),
                                                        u"synth"_s, u"1"_s, u"sine"_s, u"440"_s}),
                  0);
        const CliResult converted = runCli({u"convert"_s, u"--to"_s, u"ogg"_s, dir.path()}, locale);
        EXPECT_EQ(converted.status, 0) << locale << converted.err.toStdString();
        const CliResult listed = runCli({u"list"_s, u"--kind"_s, u"ogg"_s, dir.path()});
        EXPECT_EQ(listed.out.section(u'\n', 1, 1).section(u'\t', 3, 3), u"~208"_s) << locale << listed.out.toStdString();
    }
    config.remove();
}
