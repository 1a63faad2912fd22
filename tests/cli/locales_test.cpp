#include <gtest/gtest.h>

#include <QFileInfo>

#include "clifixtures.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

// The encoder gets the quality the settings hold whatever the user's locale: an Ogg quality of 6.5
// gives a file whose header announces 208 kbps, where 6 (what "6,5" reads as in the codec's C
// locale) would give 192 and an Arabic-digit text another rate again.
TEST(ConvertInEveryLocale, OggEncoderGetsTheQualityOfTheSettings)
{
    const QString config = QFileInfo(cliPath()).path() + u"/kestrvan.cfg"_s;
    write(config, record({{7, 75}})); // Ogg quality 6.5, stored as tenths + 10
    for (const char *locale : {"C.UTF-8", "en_US.UTF-8", "de_DE.UTF-8", "ru_RU.UTF-8", "sv_SE.UTF-8", "ar_EG.UTF-8"}) {
        QTemporaryDir dir;
        makeWav(dir.filePath(u"a.wav"_s));
        const CliResult converted = runCli({u"convert"_s, u"--to"_s, u"ogg"_s, dir.path()}, {.locale = locale});
        EXPECT_EQ(converted.status, 0) << locale << converted.err.toStdString();
        const CliResult listed = runCli({u"list"_s, u"--kind"_s, u"ogg"_s, dir.path()});
        EXPECT_EQ(listed.out.section(u'\n', 1, 1).section(u'\t', 3, 3), u"~208"_s) << locale << listed.out.toStdString();
    }
    QFile::remove(config);
}
