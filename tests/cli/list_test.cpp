#include <gtest/gtest.h>

#include <QRegularExpression>

#include "clifixtures.h"
#include "support/qtprinters.h"

TEST(ListCommand, PrintsRowsPanelsAndStatistics)
{
    QTemporaryDir top;
    const QDir dir(top.filePath(QStringLiteral("music "))); // the blank ends the folder's name
    ASSERT_TRUE(QDir().mkpath(dir.path()));
    writeWav(dir.filePath(QStringLiteral("a.wav")), 44100, 2, 1764044);
    writeWav(dir.filePath(QStringLiteral("B.wav")), 8000, 1, 16044);         // sorts after a.wav
    writeWav(dir.filePath(QStringLiteral("c.wav")), 8000, 1, 16044, "riff"); // refused by the reader
    writeWav(dir.filePath(QStringLiteral("D.WAV")), 22050, 1, 44144);        // listed despite the case
    writeWav(dir.filePath(QStringLiteral("notes.txt")), 8000, 1, 16044);
    const QString rows = QStringLiteral("a.wav\t1723\t0:00:10\t1411\t44100\tStereo\nB.wav\t16\t0:00:01\t128\t8000\tMono\n"
                                        "D.WAV\t43\t0:00:01\t353\t22050\tMono\n");
    const QString header = QStringLiteral("File Name\tFile Size, KB\tDuration\tBitrate, kbps\tSampling, Hz\tChannel\n");
    const struct { QStringList args; bool partial; const char *freeSpace, *rest, *locale = "C.UTF-8"; } cases[] = {
        {{dir.path()}, false, "Free Disk Space: [0-9]+(\\.[0-9])? MB",
         "\nFREE\nFiles: 3\nSize: 1.7 MB\nDuration: 0:00:12\nAverage bitrate: 631 kbps\n\nSelected: 3\nSize: 1.7 MB\n"
         "Average Mp3 File Size: 0.6 MB\nAverage Ogg File Size: 0.5 MB\nAverage Mpc File Size: 0.7 MB\n"},
        // Sizes follow the user's locale.
        {{dir.path()}, false, "Free Disk Space: [0-9.]+(,[0-9])? MB",
         "\nFREE\nFiles: 3\nSize: 1,7 MB\nDuration: 0:00:12\nAverage bitrate: 631 kbps\n\nSelected: 3\nSize: 1,7 MB\n"
         "Average Mp3 File Size: 0,6 MB\nAverage Ogg File Size: 0,5 MB\nAverage Mpc File Size: 0,7 MB\n",
         "de_DE.UTF-8"},
        // Sample rate 0: the row keeps size, bit rate and channel but has no duration to total,
        // which stops the totals and the statistics.
        {{QStringLiteral("--kind=wav"), dir.path()}, true, "Free Disk Space: .*", "e.wav\t2\t\t0\t\tStereo\n\n"},
    };
    for (const auto &c : cases) {
        if (c.partial)
            writeWav(dir.filePath(QStringLiteral("e.wav")), 0, 2, 2048);
        const CliResult r = runCli(QStringList{QStringLiteral("list")} + c.args, {.locale = c.locale});
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.err, QString());
        // The free space changes from run to run: its line is checked by form, then masked.
        const QRegularExpression freeLine(QStringLiteral("^%1$").arg(QString::fromUtf8(c.freeSpace)),
                                          QRegularExpression::MultilineOption);
        EXPECT_EQ(freeLine.match(r.out).hasMatch(), !c.partial) << r.out.toStdString();
        EXPECT_EQ(QString(r.out).replace(freeLine, QStringLiteral("FREE")), header + rows + QString::fromUtf8(c.rest));
    }

    // Run in a working folder removed under it, "." still names that folder, now empty; a lone
    // "-" names the empty folder "-", not an option.
    const QString gone = top.filePath(QStringLiteral("gone"));
    ASSERT_TRUE(QDir().mkpath(gone) && QDir().mkpath(top.filePath(QStringLiteral("-"))));
    for (const auto &[folder, script] : {std::pair{gone, "cd \"$0\" && rmdir \"$0\" && exec \"$1\" list ."},
                                         std::pair{top.path(), "cd \"$0\" && exec \"$1\" list -"}}) {
        const CliResult r = runCli({QStringLiteral("-c"), QString::fromLatin1(script), folder, cliPath()},
                                   {.program = QStringLiteral("/bin/sh")});
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.err, QString());
        EXPECT_TRUE(r.out.startsWith(header) && r.out.contains(QStringLiteral("\nFiles: 0\n"))) << r.out.toStdString();
    }
}

// Bit rates that sum to 0 end the statistics before the forecasts: those lines are left out, not
// printed with an empty value.
TEST(ListStatistics, EndedEarlyPrintNoForecastLines)
{
    QTemporaryDir dir;
    // Under 512 bytes is 0 KB, so the row reads "~0" kbps beside a duration the totals accept.
    write(dir.filePath(QStringLiteral("x.mpc")), QByteArray("MP+\x07\x28", 5) + QByteArray(95, '\0')); // 40 frames
    const CliResult r = runCli({QStringLiteral("list"), QStringLiteral("--kind"), QStringLiteral("mpc"), dir.path()});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.out.contains(QStringLiteral("\nx.mpc\t0\t0:00:01\t~0\t44100\tn/a\n"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.endsWith(QStringLiteral("Average bitrate: 0 kbps\n\nSelected: 1\nSize: 0 MB\n"))) << r.out.toStdString();
}
