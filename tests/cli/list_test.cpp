#include <gtest/gtest.h>

#include <map>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "clirunner.h"
#include "support/qtprinters.h"

namespace {

// A canonical 44-byte PCM header followed by zeros up to length bytes.
void writeWav(const QString &path, qint32 rate, qint16 channels, qint64 length, const char *riff = "RIFF")
{
    QByteArray h;
    auto u32 = [&h](quint32 v) { for (int i = 0; i < 4; ++i) h.append(static_cast<char>((v >> (8 * i)) & 0xFF)); };
    auto u16 = [&h](quint16 v) { h.append(static_cast<char>(v & 0xFF)); h.append(static_cast<char>(v >> 8)); };
    h.append(riff, 4);
    u32(static_cast<quint32>(length - 8));
    h.append("WAVEfmt ", 8);
    u32(16);
    u16(1);
    u16(static_cast<quint16>(channels));
    u32(static_cast<quint32>(rate));
    u32(static_cast<quint32>(rate * channels * 2));
    u16(static_cast<quint16>(channels * 2));
    u16(16);
    h.append("data", 4);
    u32(static_cast<quint32>(length - 44));
    h.resize(length, '\0');
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    ASSERT_EQ(f.write(h), h.size());
}

// Name -> content and modification time of every entry, to prove a run left the folder alone.
std::map<QString, std::pair<QByteArray, qint64>> snapshot(const QString &folder)
{
    std::map<QString, std::pair<QByteArray, qint64>> entries;
    const QDir dir(folder);
    for (const QFileInfo &fi : dir.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        QFile f(fi.absoluteFilePath());
        EXPECT_TRUE(f.open(QIODevice::ReadOnly));
        entries[fi.fileName()] = {f.readAll(), fi.lastModified().toMSecsSinceEpoch()};
    }
    return entries;
}

// The free space changes from run to run; its line is checked by form and then masked.
QString maskFreeSpace(const QString &out, const QString &pattern)
{
    const QRegularExpression line(QStringLiteral("^") + pattern + QStringLiteral("$"),
                                  QRegularExpression::MultilineOption);
    EXPECT_TRUE(line.match(out).hasMatch()) << out.toStdString();
    QString masked = out;
    masked.replace(line, QStringLiteral("FREE"));
    return masked;
}

QProcessEnvironment localeEnv(const char *locale)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("LC_ALL"), QString::fromUtf8(locale));
    return env;
}

class ListCommand : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        folder = m_dir.path();
        writeWav(folder + QStringLiteral("/a.wav"), 44100, 2, 1764044);   // 10 s
        writeWav(folder + QStringLiteral("/B.wav"), 8000, 1, 16044);      // 1 s, sorts after a.wav
        writeWav(folder + QStringLiteral("/c.wav"), 8000, 1, 16044, "riff"); // refused by the reader
        writeWav(folder + QStringLiteral("/D.WAV"), 22050, 1, 44144);     // listed despite the case
        QFile notes(folder + QStringLiteral("/notes.txt"));
        ASSERT_TRUE(notes.open(QIODevice::WriteOnly));
        notes.write("not audio");
    }

    QTemporaryDir m_dir;
    QString folder;
};

} // namespace

TEST_F(ListCommand, PrintsRowsPanelsAndStatistics)
{
    const auto before = snapshot(folder);
    const CliResult r = runCli({QStringLiteral("list"), folder});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, QString());
    EXPECT_EQ(maskFreeSpace(r.out, QStringLiteral("Free Disk Space: [0-9]+(\\.[0-9])? MB")),
              QStringLiteral("File Name\tFile Size, KB\tDuration\tBitrate, kbps\tSampling, Hz\tChannel\n"
                             "a.wav\t1723\t0:00:10\t1411\t44100\tStereo\n"
                             "B.wav\t16\t0:00:01\t128\t8000\tMono\n"
                             "D.WAV\t43\t0:00:01\t353\t22050\tMono\n"
                             "\n"
                             "FREE\n"
                             "Files: 3\n"
                             "Size: 1.7 MB\n"
                             "Duration: 0:00:12\n"
                             "Average bitrate: 631 kbps\n"
                             "\n"
                             "Selected: 3\n"
                             "Size: 1.7 MB\n"
                             "Average Mp3 File Size: 0.6 MB\n"
                             "Average Ogg File Size: 0.5 MB\n"
                             "Average Mpc File Size: 0.7 MB\n"));
    EXPECT_EQ(snapshot(folder), before);
}

TEST_F(ListCommand, RussianTextsWithTheUsersDecimalComma)
{
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--lang"), QStringLiteral("ru"), folder},
                               localeEnv("de_DE.UTF-8"));
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, QString());
    EXPECT_EQ(maskFreeSpace(r.out, QStringLiteral("Свободно: [0-9]+(,[0-9])? МБ")),
              QStringLiteral("Имя файла\tРазмер, КБ\tВремя\tПоток, Кб/с\tЧастота, Гц\tКаналы\n"
                             "a.wav\t1723\t0:00:10\t1411\t44100\tStereo\n"
                             "B.wav\t16\t0:00:01\t128\t8000\tMono\n"
                             "D.WAV\t43\t0:00:01\t353\t22050\tMono\n"
                             "\n"
                             "FREE\n"
                             "Файлов: 3\n"
                             "Размер: 1,7 МБ\n"
                             "Время: 0:00:12\n"
                             "Поток: 631 Кб/с\n"
                             "\n"
                             "Выделено файлов: 3\n"
                             "Размер файлов: 1,7 МБ\n"
                             "Прогноз - Размер Mp3: 0,6 МБ\n"
                             "Прогноз - Размер Ogg: 0,5 МБ\n"
                             "Прогноз - Размер Mpc: 0,7 МБ\n"));
}

TEST_F(ListCommand, PartialRowStopsTotalsAndStatistics)
{
    // Sample rate 0: the reader keeps the row with size, bit rate and channel but no duration,
    // and the totals cannot read it.
    writeWav(folder + QStringLiteral("/e.wav"), 0, 2, 2048);
    const auto before = snapshot(folder);
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--kind=wav"), folder});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, QString());
    EXPECT_EQ(r.out, QStringLiteral("File Name\tFile Size, KB\tDuration\tBitrate, kbps\tSampling, Hz\tChannel\n"
                                    "a.wav\t1723\t0:00:10\t1411\t44100\tStereo\n"
                                    "B.wav\t16\t0:00:01\t128\t8000\tMono\n"
                                    "D.WAV\t43\t0:00:01\t353\t22050\tMono\n"
                                    "e.wav\t2\t\t0\t\tStereo\n"
                                    "\n"));
    EXPECT_EQ(snapshot(folder), before);
}

TEST_F(ListCommand, KindWithoutFilesShowsZeroTotals)
{
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--kind"), QStringLiteral("ogg"), folder});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(maskFreeSpace(r.out, QStringLiteral("Free Disk Space: [0-9]+(\\.[0-9])? MB")),
              QStringLiteral("File Name\tFile Size, KB\tDuration\tBitrate, kbps\tSampling, Hz\tChannel\n"
                             "\n"
                             "FREE\n"
                             "Files: 0\n"
                             "Size: 0 MB\n"
                             "Duration: 0:00:00\n"
                             "Average bitrate: 0 kbps\n"
                             "\n"
                             "Selected: 0\n"
                             "Size: 0 MB\n"
                             "Average Mp3 File Size: 0 MB\n"
                             "Average Ogg File Size: 0 MB\n"
                             "Average Mpc File Size: 0 MB\n"));
}

TEST_F(ListCommand, RefusesWhatItCannotList)
{
    const QString usage = QStringLiteral("usage: kestrelvane-cli list [--kind wav|mp3|ogg|mpc] [--lang en|ru] FOLDER\n");
    const QString missing = folder + QStringLiteral("/missing");
    const QString file = folder + QStringLiteral("/notes.txt");
    const struct {
        QStringList args;
        QString err;
    } cases[] = {
        {{missing}, QStringLiteral("kestrelvane-cli: ") + missing + QStringLiteral(": no such folder\n")},
        {{file}, QStringLiteral("kestrelvane-cli: ") + file + QStringLiteral(": not a folder\n")},
        {{QStringLiteral("--verbose"), folder}, QStringLiteral("kestrelvane-cli: unknown option \"--verbose\"\n") + usage},
        {{QStringLiteral("-x"), folder}, QStringLiteral("kestrelvane-cli: unknown option \"-x\"\n") + usage},
        {{QStringLiteral("--kind"), QStringLiteral("flac"), folder},
         QStringLiteral("kestrelvane-cli: unknown kind \"flac\" (wav, mp3, ogg or mpc)\n") + usage},
        {{QStringLiteral("--lang=de"), folder}, QStringLiteral("kestrelvane-cli: unknown language \"de\" (en or ru)\n") + usage},
        {{}, QStringLiteral("kestrelvane-cli: no FOLDER given\n") + usage},
        {{folder, folder}, QStringLiteral("kestrelvane-cli: only one FOLDER can be listed\n") + usage},
    };
    for (const auto &c : cases) {
        const CliResult r = runCli(QStringList{QStringLiteral("list")} + c.args);
        EXPECT_EQ(r.status, 2) << c.args.join(QLatin1Char(' ')).toStdString();
        EXPECT_EQ(r.out, QString());
        EXPECT_EQ(r.err, c.err);
    }
}

TEST_F(ListCommand, HelpExplainsTheOutput)
{
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--help")});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.startsWith(QStringLiteral("usage: kestrelvane-cli list [--kind wav|mp3|ogg|mpc] [--lang en|ru] FOLDER\n")));
    EXPECT_TRUE(r.out.contains(QStringLiteral("--lang LANG")));
    EXPECT_EQ(r.err, QString());
}
