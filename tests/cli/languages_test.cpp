#include <gtest/gtest.h>

#include <csignal>

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QThread>

#include "clifixtures.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

// Captions, panels, units and statistics of `list` in Russian, under a Russian (comma) locale.
// Stream version 8 as the encoder writes it; 42.5 kbps on average is a tie that goes to 42. The
// forecasts come from the unrounded 0.011 MB: 0.059, 0.049 and 0.061.
TEST(Languages, ListPrintsTheChosenLanguage)
{
    QTemporaryDir dir;
    for (const char *name : {"stereo-44100.mpc", "mono-48000.mpc"})
        ASSERT_TRUE(QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mpc/") + QLatin1String(name), dir.filePath(QLatin1String(name))));
    const CliResult r = runCli({u"list"_s, u"--kind"_s, u"mpc"_s, u"--lang"_s, u"ru"_s, dir.path()}, "ru_RU.UTF-8");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, QString());
    // The free space changes from run to run: its line is checked by form, then masked.
    const QRegularExpression freeLine(u"^Свободно: [0-9]+(,[0-9])? МБ$"_s, QRegularExpression::MultilineOption);
    EXPECT_TRUE(freeLine.match(r.out).hasMatch()) << r.out.toStdString();
    EXPECT_EQ(QString(r.out).replace(freeLine, u"FREE"_s),
              u"Имя файла\tРазмер, КБ\tВремя\tПоток, Кб/с\tЧастота, Гц\tКаналы\n"
              "mono-48000.mpc\t4\t0:00:01\t~47\t48000\t1\nstereo-44100.mpc\t7\t0:00:02\t~38\t44100\t2\n\n"
              "FREE\nФайлов: 2\nРазмер: 0 МБ\nВремя: 0:00:03\nПоток: 42 Кб/с\n\n"
              "Выделено файлов: 2\nРазмер файлов: 0 МБ\nПрогноз - Размер Mp3: 0,1 МБ\nПрогноз - Размер Ogg: 0 МБ\n"
              "Прогноз - Размер Mpc: 0,1 МБ\n"_s);
}

namespace {

const QString kRussianHeader = u"Имя файла\tСтатус\tИсходный\tРазмер\t%\tВремя работы\n"_s;

} // namespace

// The configuration's language decides the job list: captions, status words, units, the count
// line. Without a configuration it is English, as every other convert test shows.
TEST(Languages, ConvertRunFollowsTheConfiguredLanguage)
{
    QTemporaryDir wavs;
    makeWav(wavs.filePath(u"a.wav"_s));
    const struct { char language; QString header, done, kb, finished; } cases[] = {
        {'\x01', kRussianHeader, u"Готово"_s, u"КБ"_s, u"Выполнено 1 из 1"_s},
        {'\x00', u"File Name\tStatus\tFile Size\tSize\t%\tEncoding time\n"_s, u"Done"_s, u"KB"_s, u"Finished 1 of 1"_s},
    };
    for (const auto &c : cases) {
        const CliResult r = ProgramCopy(c.language).convert({u"--to"_s, u"mp3"_s, wavs.path()});
        EXPECT_EQ(r.status, 0) << r.out.toStdString() << r.err.toStdString();
        const QRegularExpression expected(u"^%1a\\.wav\\t%2\\t172 %3\\t[1-9]\\d* %3\\t[1-9]\\d*\\t0:00:0\\d\\n%4\\n$"_s.arg(
            QRegularExpression::escape(c.header), c.done, c.kb, c.finished));
        EXPECT_TRUE(expected.match(r.out).hasMatch()) << r.out.toStdString();
    }
}

// An interrupted run in Russian (any language byte but 0): the waiting job reads "Прервано", the
// running one ends "Готово", and the command fails for what it left undone.
TEST(Languages, InterruptedRunInRussian)
{
    ProgramCopy program('\x02');
    program.fakeLame("/usr/bin/head -c 5000 /dev/zero > \"$t\"\n/bin/sleep 1\n");
    QTemporaryDir wavs;
    makeWav(wavs.filePath(u"f1.wav"_s));
    makeWav(wavs.filePath(u"f2.wav"_s));

    QProcess p;
    program.start(p, {u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, wavs.path()});
    QElapsedTimer clock;
    clock.start();
    while (!QFile::exists(wavs.filePath(u"f1.mp3"_s)) && clock.elapsed() < 10000)
        QThread::msleep(10);
    ::kill(static_cast<pid_t>(p.processId()), SIGINT);
    ASSERT_TRUE(p.waitForFinished(20000));
    EXPECT_EQ(p.exitCode(), 1);
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    const QRegularExpression expected(u"^%1f1\\.wav\\tГотово\\t172 КБ\\t5 КБ\\t3\\t0:00:0\\d\\nf2\\.wav\\tПрервано\\t172 КБ\\t\\t\\t\\n"
                                      "Выполнено 1 из 2\\n$"_s.arg(QRegularExpression::escape(kRussianHeader)));
    EXPECT_TRUE(expected.match(out).hasMatch()) << out.toStdString();
}
