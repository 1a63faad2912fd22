#include <gtest/gtest.h>

#include <csignal>

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
    const CliResult r = runCli({u"list"_s, u"--kind"_s, u"mpc"_s, u"--lang"_s, u"ru"_s, dir.path()}, {.locale = "ru_RU.UTF-8"});
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

// The configuration's language decides the job list: captions, status words, units, the count
// line (without a configuration it is English, as every other convert test shows). Any language
// byte but 0 is Russian. A job whose target stays empty reads "Ошибка"; interrupted, the waiting
// job reads "Прервано" and the command fails.
TEST(Languages, ConvertRunsFollowTheConfiguredLanguage)
{
    const QString russian = u"Имя файла\tСтатус\tИсходный\tРазмер\t%\tВремя работы\n"_s;
    const QString english = u"File Name\tStatus\tFile Size\tSize\t%\tEncoding time\n"_s;
    const QString row = u"f%1\\.wav\\t%2\\t172 %3\\t[1-9]\\d* %3\\t[1-9]\\d*\\t0:00:0\\d\\n"_s;
    const struct { char language; bool interrupted; QString header, rows; int status; } cases[] = {
        {'\x01', false, russian, row.arg(1).arg(u"Готово"_s, u"КБ"_s) + row.arg(2).arg(u"Готово"_s, u"КБ"_s) + u"Выполнено 2 из 2"_s, 0},
        {'\x00', false, english, row.arg(1).arg(u"Done"_s, u"KB"_s) + row.arg(2).arg(u"Done"_s, u"KB"_s) + u"Finished 2 of 2"_s, 0},
        {'\x02', true, russian,
         u"f1\\.wav\\tОшибка\\t172 КБ\\t\\t\\t0:00:0\\d\\nf2\\.wav\\tПрервано\\t172 КБ\\t\\t\\t\\nВыполнено 0 из 2"_s, 1},
    };
    for (const auto &c : cases) {
        ProgramCopy program(c.language);
        QTemporaryDir wavs;
        makeWav(wavs.filePath(u"f1.wav"_s));
        makeWav(wavs.filePath(u"f2.wav"_s));
        if (c.interrupted) // an encoder that leaves an empty target, then takes a second
            program.fakeLame(": > \"$t\"\n/bin/sleep 1\n");
        QProcess p;
        program.start(p, {u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, wavs.path()});
        for (int i = 0; c.interrupted && i < 1000 && !QFile::exists(wavs.filePath(u"f1.mp3"_s)); ++i)
            QThread::msleep(10);
        if (c.interrupted)
            ::kill(static_cast<pid_t>(p.processId()), SIGINT);
        ASSERT_TRUE(p.waitForFinished(60000));
        EXPECT_EQ(p.exitCode(), c.status) << p.readAllStandardError().toStdString();
        const QString out = QString::fromUtf8(p.readAllStandardOutput());
        EXPECT_TRUE(QRegularExpression(u"^%1%2\\n$"_s.arg(QRegularExpression::escape(c.header), c.rows)).match(out).hasMatch())
            << out.toStdString();
    }
}
