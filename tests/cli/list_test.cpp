#include <gtest/gtest.h>

#include <map>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "clirunner.h"
#include "support/qtprinters.h"

namespace {

// A canonical 44-byte PCM header followed by zeros up to length bytes.
void writeWav(const QString &path, quint32 rate, quint16 channels, qint64 length, const char *riff = "RIFF")
{
    QByteArray h(riff, 4);
    auto put = [&h](quint32 v, int bytes) { for (int i = 0; i < bytes; ++i) h.append(static_cast<char>(v >> (8 * i))); };
    put(static_cast<quint32>(length - 8), 4);
    h.append("WAVEfmt ", 8);
    for (const auto &[v, bytes] : {std::pair<quint32, int>{16, 4}, {1, 2}, {channels, 2}, {rate, 4},
                                  {rate * channels * 2, 4}, {channels * 2u, 2}, {16, 2}})
        put(v, bytes);
    h.append("data", 4);
    put(static_cast<quint32>(length - 44), 4);
    h.resize(length, '\0');
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly) && f.write(h) == h.size());
}

// Name -> content and modification time of every entry, to prove a run left the folder alone.
std::map<QString, std::pair<QByteArray, qint64>> snapshot(const QString &folder)
{
    std::map<QString, std::pair<QByteArray, qint64>> entries;
    for (const QFileInfo &fi : QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
        QFile f(fi.absoluteFilePath());
        EXPECT_TRUE(f.open(QIODevice::ReadOnly));
        entries[fi.fileName()] = {f.readAll(), fi.lastModified().toMSecsSinceEpoch()};
    }
    return entries;
}

// The free space changes from run to run: its line is checked by form, then masked.
QString maskFreeSpace(const QString &out, const QString &pattern)
{
    const QRegularExpression line(QStringLiteral("^") + pattern + QStringLiteral("$"), QRegularExpression::MultilineOption);
    EXPECT_TRUE(line.match(out).hasMatch()) << out.toStdString();
    return QString(out).replace(line, QStringLiteral("FREE"));
}

const QString rows = QStringLiteral("a.wav\t1723\t0:00:10\t1411\t44100\tStereo\n"
                                    "B.wav\t16\t0:00:01\t128\t8000\tMono\n"
                                    "D.WAV\t43\t0:00:01\t353\t22050\tMono\n");

class ListCommand : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        writeWav(dir.filePath(QStringLiteral("a.wav")), 44100, 2, 1764044);
        writeWav(dir.filePath(QStringLiteral("B.wav")), 8000, 1, 16044);         // sorts after a.wav
        writeWav(dir.filePath(QStringLiteral("c.wav")), 8000, 1, 16044, "riff"); // refused by the reader
        writeWav(dir.filePath(QStringLiteral("D.WAV")), 22050, 1, 44144);        // listed despite the case
        writeWav(dir.filePath(QStringLiteral("notes.txt")), 8000, 1, 16044);
    }

    QTemporaryDir dir;
};

} // namespace

TEST_F(ListCommand, PrintsRowsPanelsAndStatistics)
{
    const auto before = snapshot(dir.path());
    const CliResult r = runCli({QStringLiteral("list"), dir.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, QString());
    EXPECT_EQ(maskFreeSpace(r.out, QStringLiteral("Free Disk Space: [0-9]+(\\.[0-9])? MB")),
              QStringLiteral("File Name\tFile Size, KB\tDuration\tBitrate, kbps\tSampling, Hz\tChannel\n") + rows
                  + QStringLiteral("\nFREE\nFiles: 3\nSize: 1.7 MB\nDuration: 0:00:12\nAverage bitrate: 631 kbps\n"
                                   "\nSelected: 3\nSize: 1.7 MB\nAverage Mp3 File Size: 0.6 MB\n"
                                   "Average Ogg File Size: 0.5 MB\nAverage Mpc File Size: 0.7 MB\n"));
    EXPECT_EQ(snapshot(dir.path()), before);
}

TEST_F(ListCommand, RussianTextsWithTheUsersDecimalComma)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8"));
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--lang"), QStringLiteral("ru"), dir.path()}, env);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(maskFreeSpace(r.out, QStringLiteral("Свободно: [0-9]+(,[0-9])? МБ")),
              QStringLiteral("Имя файла\tРазмер, КБ\tВремя\tПоток, Кб/с\tЧастота, Гц\tКаналы\n") + rows
                  + QStringLiteral("\nFREE\nФайлов: 3\nРазмер: 1,7 МБ\nВремя: 0:00:12\nПоток: 631 Кб/с\n"
                                   "\nВыделено файлов: 3\nРазмер файлов: 1,7 МБ\nПрогноз - Размер Mp3: 0,6 МБ\n"
                                   "Прогноз - Размер Ogg: 0,5 МБ\nПрогноз - Размер Mpc: 0,7 МБ\n"));
}

TEST_F(ListCommand, PartialRowStopsTotalsAndStatistics)
{
    // Sample rate 0: the row keeps size, bit rate and channel but has no duration to total.
    writeWav(dir.filePath(QStringLiteral("e.wav")), 0, 2, 2048);
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--kind=wav"), dir.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, QString());
    EXPECT_EQ(r.out, QStringLiteral("File Name\tFile Size, KB\tDuration\tBitrate, kbps\tSampling, Hz\tChannel\n") + rows
                         + QStringLiteral("e.wav\t2\t\t0\t\tStereo\n\n"));
}

TEST_F(ListCommand, RefusesWhatItCannotList)
{
    const QString usage = QStringLiteral("usage: kestrelvane-cli list [--kind wav|mp3|ogg|mpc] [--lang en|ru] FOLDER\n");
    const QString missing = dir.filePath(QStringLiteral("missing"));
    const QString file = dir.filePath(QStringLiteral("notes.txt"));
    const struct { QStringList args; QString err; } cases[] = {
        {{missing}, QStringLiteral("kestrelvane-cli: ") + missing + QStringLiteral(": no such folder\n")},
        {{file}, QStringLiteral("kestrelvane-cli: ") + file + QStringLiteral(": not a folder\n")},
        {{QStringLiteral("--verbose"), dir.path()}, QStringLiteral("kestrelvane-cli: unknown option \"--verbose\"\n") + usage},
        {{QStringLiteral("--kind"), QStringLiteral("flac"), dir.path()},
         QStringLiteral("kestrelvane-cli: unknown kind \"flac\" (wav, mp3, ogg or mpc)\n") + usage},
        {{}, QStringLiteral("kestrelvane-cli: no FOLDER given\n") + usage},
    };
    for (const auto &c : cases) {
        const CliResult r = runCli(QStringList{QStringLiteral("list")} + c.args);
        EXPECT_EQ(r.status, 2);
        EXPECT_EQ(r.out, QString());
        EXPECT_EQ(r.err, c.err);
    }
}
