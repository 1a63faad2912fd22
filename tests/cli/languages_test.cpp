#include <gtest/gtest.h>

#include <csignal>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include "clirunner.h"
#include "support/qtprinters.h"

using namespace Qt::StringLiterals;

namespace {

void write(const QString &path, const QByteArray &data)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    ASSERT_EQ(f.write(data), data.size());
}

// A PCM header with the fields the reader looks at, then zeros up to length bytes.
void writeWav(const QString &path, quint32 rate, char channels, qint64 length)
{
    QByteArray b = "RIFF\0\0\0\0WAVEfmt \x10\0\0\0\x01\0"_ba + QByteArray(length - 22, '\0');
    b[22] = channels;
    for (int i = 0; i < 4; ++i)
        b[24 + i] = static_cast<char>(rate >> (8 * i));
    write(path, b);
}

void makeWav(const QString &path)
{
    ASSERT_EQ(QProcess::execute(u"/usr/bin/sox"_s, {u"-n"_s, u"-r44100"_s, u"-c2"_s, u"-b16"_s, path, u"synth"_s, u"1"_s,
                                                    u"sine"_s, u"440"_s}),
              0);
}

// The free space changes from run to run: its line is checked by form, then masked.
QString maskFreeSpace(const QString &out, const QString &label, const QString &unit)
{
    const QRegularExpression line(u"^%1[0-9]+([.,][0-9])?%2$"_s.arg(QRegularExpression::escape(label),
                                                                   QRegularExpression::escape(unit)),
                                  QRegularExpression::MultilineOption);
    EXPECT_TRUE(line.match(out).hasMatch()) << out.toStdString();
    return QString(out).replace(line, u"FREE"_s);
}

} // namespace

// Captions, panels, units and statistics of `list` in each language, the Russian under a comma locale.
TEST(Languages, ListPrintsTheChosenLanguage)
{
    QTemporaryDir dir;
    writeWav(dir.filePath(u"a.wav"_s), 44100, 2, 1764044);
    for (const char *name : {"stereo-44100.mpc", "mono-48000.mpc"})
        ASSERT_TRUE(QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mpc/") + QLatin1String(name), dir.filePath(QLatin1String(name))));

    const struct { const char *kind, *lang, *locale, *freeLabel, *mbUnit, *expected; } cases[] = {
        {"wav", "ru", "ru_RU.UTF-8", "Свободно: ", " МБ",
         "Имя файла\tРазмер, КБ\tВремя\tПоток, Кб/с\tЧастота, Гц\tКаналы\n"
         "a.wav\t1723\t0:00:10\t1411\t44100\tStereo\n\n"
         "FREE\nФайлов: 1\nРазмер: 1,7 МБ\nВремя: 0:00:10\nПоток: 1411 Кб/с\n\n"
         "Выделено файлов: 1\nРазмер файлов: 1,7 МБ\nПрогноз - Размер Mp3: 0,3 МБ\nПрогноз - Размер Ogg: 0,2 МБ\n"
         "Прогноз - Размер Mpc: 0,3 МБ\n"},
        // Stream version 8 as the encoder writes it; 42.5 kbps on average is a tie that goes to 42.
        // The forecasts come from the unrounded 0.011 MB: 0.059, 0.049 and 0.061.
        {"mpc", "ru", "ru_RU.UTF-8", "Свободно: ", " МБ",
         "Имя файла\tРазмер, КБ\tВремя\tПоток, Кб/с\tЧастота, Гц\tКаналы\n"
         "mono-48000.mpc\t4\t0:00:01\t~47\t48000\t1\nstereo-44100.mpc\t7\t0:00:02\t~38\t44100\t2\n\n"
         "FREE\nФайлов: 2\nРазмер: 0 МБ\nВремя: 0:00:03\nПоток: 42 Кб/с\n\n"
         "Выделено файлов: 2\nРазмер файлов: 0 МБ\nПрогноз - Размер Mp3: 0,1 МБ\nПрогноз - Размер Ogg: 0 МБ\n"
         "Прогноз - Размер Mpc: 0,1 МБ\n"},
        {"mpc", "en", "en_US.UTF-8", "Free Disk Space: ", " MB",
         "File Name\tFile Size, KB\tDuration\tBitrate, kbps\tSampling, Hz\tChannel\n"
         "mono-48000.mpc\t4\t0:00:01\t~47\t48000\t1\nstereo-44100.mpc\t7\t0:00:02\t~38\t44100\t2\n\n"
         "FREE\nFiles: 2\nSize: 0 MB\nDuration: 0:00:03\nAverage bitrate: 42 kbps\n\n"
         "Selected: 2\nSize: 0 MB\nAverage Mp3 File Size: 0.1 MB\nAverage Ogg File Size: 0 MB\n"
         "Average Mpc File Size: 0.1 MB\n"},
    };
    for (const auto &c : cases) {
        const CliResult r = runCli({u"list"_s, u"--kind"_s, QLatin1String(c.kind), u"--lang"_s, QLatin1String(c.lang), dir.path()},
                                   c.locale);
        EXPECT_EQ(r.status, 0) << c.kind << c.lang;
        EXPECT_EQ(r.err, QString());
        EXPECT_EQ(maskFreeSpace(r.out, QString::fromUtf8(c.freeLabel), QString::fromUtf8(c.mbUnit)),
                  QString::fromUtf8(c.expected))
            << c.kind << c.lang;
    }
}

namespace {

// A program folder of this test's own: the binary, a copy of the codec folder and, when given,
// a configuration record whose language byte is set.
struct Program
{
    QTemporaryDir dir;

    explicit Program(std::optional<char> language)
    {
        QFile::copy(cliPath(), dir.filePath(u"kestrelvane-cli"_s));
        QDir().mkpath(dir.filePath(u"codec"_s));
        for (const char *name : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"})
            QFile::copy(QStringLiteral(KV_BIN_DIR "/codec/") + QLatin1String(name), codec(name));
        if (language) {
            // All zeros load as the smallest settings; byte 1 holds the language, 0 English.
            QByteArray record(10310, '\0');
            record[1] = *language;
            write(dir.filePath(u"kestrvan.cfg"_s), record);
        }
    }
    QString codec(const char *name) const { return dir.filePath(u"codec/"_s + QLatin1String(name)); }
    QString path() const { return dir.filePath(u"kestrelvane-cli"_s); }
};

const QString kRussianHeader = u"Имя файла\tСтатус\tИсходный\tРазмер\t%\tВремя работы\n"_s;

} // namespace

// The configuration's language decides the job list: captions, status words, units, the count line.
TEST(Languages, ConvertRunFollowsTheConfiguredLanguage)
{
    QTemporaryDir wavs;
    makeWav(wavs.filePath(u"a.wav"_s));
    makeWav(wavs.filePath(u"b.wav"_s));
    const struct { std::optional<char> language; QString header, done, kb, finished; } cases[] = {
        {'\x01', kRussianHeader, u"Готово"_s, u"КБ"_s, u"Выполнено 2 из 2"_s},
        {'\x00', u"File Name\tStatus\tFile Size\tSize\t%\tEncoding time\n"_s, u"Done"_s, u"KB"_s, u"Finished 2 of 2"_s},
        {std::nullopt, u"File Name\tStatus\tFile Size\tSize\t%\tEncoding time\n"_s, u"Done"_s, u"KB"_s, u"Finished 2 of 2"_s},
    };
    for (const auto &c : cases) {
        const Program program(c.language);
        QProcess p;
        p.start(program.path(), {u"convert"_s, u"--to"_s, u"mp3"_s, wavs.path()});
        ASSERT_TRUE(p.waitForFinished(60000));
        const QString out = QString::fromUtf8(p.readAllStandardOutput());
        EXPECT_EQ(p.exitCode(), 0) << out.toStdString() << p.readAllStandardError().toStdString();
        const QRegularExpression expected(
            u"^%1a\\.wav\\t%2\\t172 %3\\t[1-9]\\d* %3\\t[1-9]\\d*\\t0:00:0\\d\\nb\\.wav\\t%2\\t172 %3\\t[1-9]\\d* %3\\t[1-9]\\d*\\t0:00:0\\d\\n%4\\n$"_s
                .arg(QRegularExpression::escape(c.header), c.done, c.kb, c.finished));
        EXPECT_TRUE(expected.match(out).hasMatch()) << out.toStdString();
    }
}

// An interrupted run in Russian: the waiting job reads "Прервано", the running one ends "Готово".
TEST(Languages, InterruptedRunInRussian)
{
    Program program('\x02');
    // An encoder that leaves a partial target, then takes a second.
    write(program.codec("lame"), "#!/bin/sh\nfor a do t=$a; done\n/usr/bin/head -c 5000 /dev/zero > \"$t\"\n/bin/sleep 1\n");
    QFile::setPermissions(program.codec("lame"), QFile::ReadOwner | QFile::ExeOwner);
    QTemporaryDir wavs;
    makeWav(wavs.filePath(u"f1.wav"_s));
    makeWav(wavs.filePath(u"f2.wav"_s));

    QProcess p;
    p.start(program.path(), {u"convert"_s, u"--to"_s, u"mp3"_s, u"--jobs"_s, u"1"_s, wavs.path()});
    ASSERT_TRUE(p.waitForStarted());
    QElapsedTimer clock;
    clock.start();
    while (!QFile::exists(wavs.filePath(u"f1.mp3"_s)) && clock.elapsed() < 10000)
        QThread::msleep(10);
    ::kill(static_cast<pid_t>(p.processId()), SIGINT);
    ASSERT_TRUE(p.waitForFinished(20000));
    const QString out = QString::fromUtf8(p.readAllStandardOutput());
    const QRegularExpression expected(u"^%1f1\\.wav\\tГотово\\t172 КБ\\t5 КБ\\t3\\t0:00:0\\d\\nf2\\.wav\\tПрервано\\t172 КБ\\t\\t\\t\\n"
                                      "Выполнено 1 из 2\\n$"_s.arg(QRegularExpression::escape(kRussianHeader)));
    EXPECT_TRUE(expected.match(out).hasMatch()) << out.toStdString();
}
