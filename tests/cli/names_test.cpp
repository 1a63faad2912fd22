#include <fstream>

#include <sys/stat.h>

#include "clifixtures.h"

namespace {

// Names that are not UTF-8 cannot go through QFile's names.
QByteArray readRaw(const QByteArray &path)
{
    std::ifstream f(path.constData(), std::ios::binary);
    return QByteArray::fromStdString(std::string(std::istreambuf_iterator<char>(f), {}));
}

// A one-second sine under a name given byte for byte: a link to one made once.
void linkWav(const QByteArray &path)
{
    static QTemporaryDir dir;
    static const QByteArray wav = [] {
        makeWav(dir.filePath(u"a.wav"_s));
        return QFile::encodeName(dir.filePath(u"a.wav"_s));
    }();
    ASSERT_EQ(::link(wav.constData(), path.constData()), 0) << path.constData();
}

// A temporary folder that may come to hold names that are not UTF-8, which QTemporaryDir cannot
// remove: rm does.
struct RawTemporaryDir : QTemporaryDir
{
    ~RawTemporaryDir() { QProcess::execute(u"rm"_s, {u"-rf"_s, path()}); }
};

// The listed rows, or the job lines and the count line.
QStringList rows(const QString &out)
{
    return out.section(u"\n\n"_s, 0, 0).split(u'\n', Qt::SkipEmptyParts).mid(1);
}

} // namespace

// A Windows-1251 folder holding a Windows-1251 and a Latin-1 name: listed with U+FFFD shown for
// each such byte, converted to MP3 and back, the targets keeping the same bytes.
TEST(NamesNotUtf8, ListAndConvertBothWaysWithRealCodecs)
{
    RawTemporaryDir root;
    const QByteArray cli = QFile::encodeName(cliPath());
    const QByteArray folder = QFile::encodeName(root.path()) + "/\xCC\xF3\xE7\xFB\xEA\xE0"; // "Музыка"
    ASSERT_EQ(::mkdir(folder.constData(), 0755), 0);
    const QByteArray russian = "\xCF\xE5\xF1\xED\xFF", latin = "caf\xE9"; // "Песня", "café"
    for (const QByteArray &name : {russian, latin})
        linkWav(folder + '/' + name + ".wav");
    const CliResult listed = runBytes({cli, "list", folder});
    EXPECT_EQ(listed.status, 0) << listed.err.toStdString();
    const QString tail = u".wav\t172\t0:00:01\t1411\t44100\tStereo"_s;
    EXPECT_EQ(rows(listed.out), QStringList({u"caf\uFFFD"_s + tail, QString(5, QChar(0xFFFD)) + tail}));

    // Run from a program folder named so too: the codecs beside it are found all the same.
    ProgramCopy copy;
    const QByteArray program = QFile::encodeName(root.path()) + "/\xCF\xF0\xEE\xE3"; // "Прог"
    ASSERT_EQ(::rename(QFile::encodeName(copy.dir.path()).constData(), program.constData()), 0);
    const CliResult encoded = runBytes({program + "/kestrelvane-cli", "convert", "--to", "mp3", folder});
    EXPECT_EQ(encoded.status, 0) << encoded.out.toStdString() << encoded.err.toStdString();
    // Decoded one at a time, each named on the command line by its own bytes.
    for (const QByteArray &name : {russian, latin}) {
        EXPECT_GT(readRaw(folder + '/' + name + ".mp3").size(), 1000) << name.toHex().constData();
        ASSERT_EQ(::unlink((folder + '/' + name + ".wav").constData()), 0);
        const CliResult decoded = runBytes({cli, "convert", "--to", "wav", "--from", "mp3", folder, name + ".mp3"});
        EXPECT_EQ(decoded.status, 0) << decoded.out.toStdString() << decoded.err.toStdString();
        EXPECT_EQ(rows(decoded.out).size(), 2) << decoded.out.toStdString(); // the job and "Finished 1 of 1"
        EXPECT_TRUE(readRaw(folder + '/' + name + ".wav").startsWith("RIFF")) << name.toHex().constData();
    }
}

// Control characters in names, in the program's folder and in arguments come out escaped wherever
// they are shown; a folder that may not be read, an unknown command and missing codecs are said so.
TEST(NamesWithControlCharacters, EscapedInListConvertAndMessages)
{
    RawTemporaryDir dir;
    const QByteArray cli = QFile::encodeName(cliPath()), root = QFile::encodeName(dir.path()) + '/';
    // DEL, U+0085 and U+009F are controls too, the last two the first and the last of C1; U+00A0 is
    // not, nor is Thai (three bytes, the first 0xE0).
    for (const char *name : {"tab\tname.wav", "line\nbreak.wav", "back\\slash.wav", "esc\x1b\x7f\r.wav", "nel\xC2\x85.wav",
                             "apc\xC2\x9F.wav", "nbsp\xC2\xA0.wav", "thai\xE0\xB9\x80.wav"})
        linkWav(root + name);
    const CliResult listed = runBytes({cli, "list", root});
    EXPECT_EQ(listed.status, 0);
    QStringList expected{u"apc\\xc2\\x9f"_s, u"back\\\\slash"_s, u"esc\\x1b\\x7f\\r"_s, u"line\\nbreak"_s, u"nbsp\u00A0"_s,
                         u"nel\\xc2\\x85"_s, u"tab\\tname"_s, u"thai\u0E40"_s};
    EXPECT_EQ(rows(listed.out), expected.replaceInStrings(QRegularExpression(u"$"_s), u".wav\t172\t0:00:01\t1411\t44100\tStereo"_s));

    // Named jobs run in list order.
    const CliResult converted = runBytes({cli, "convert", "--to", "ogg", root, "tab\tname.wav", "line\nbreak.wav"});
    EXPECT_EQ(converted.status, 0) << converted.err.toStdString();
    const QStringList jobs = rows(converted.out);
    ASSERT_EQ(jobs.size(), 3) << converted.out.toStdString();
    EXPECT_TRUE(jobs[0].startsWith(u"line\\nbreak.wav\tDone\t"_s)) << jobs[0].toStdString();
    EXPECT_TRUE(jobs[1].startsWith(u"tab\\tname.wav\tDone\t"_s)) << jobs[1].toStdString();

    ASSERT_EQ(::mkdir((root + "in\tfolder").constData(), 0700), 0);
    ASSERT_EQ(::mkdir((root + "shut\tfolder").constData(), 0), 0);
    const QByteArray program = root + "prog\t\xE9/";
    ASSERT_EQ(::mkdir(program.constData(), 0700), 0);
    ASSERT_EQ(::link(cli.constData(), (program + "kestrelvane-cli").constData()), 0);
    QStringList lines;
    for (const QByteArrayList &commandLine :
         {QByteArrayList{cli, "convert", "--to", "ogg", root + "in\tfolder/", "no\tsuch\\.wav"},
          {cli, "list", root + "gone\n\xE9"}, {cli, "list", root + "tab\tname.wav"}, {cli, "list", "--kind", "x\ty", root},
          {cli, "list", root + "shut\tfolder"}, {cli, "convert", "--to", "mp3", root + "shut\tfolder"}, {cli, "li\tst"},
          {program + "kestrelvane-cli", "convert", "--to", "mp3", root}})
        lines += shown(QString::fromUtf8(commandLine.join(' ')).replace(cliPath(), u"kestrelvane-cli"_s),
                       runBytes(commandLine, {.unprivileged = true}));
    kv::test::expectAsRecorded(u"cli-names-refused"_s, lines, dir.path());
    EXPECT_FALSE(QFile::exists(dir.filePath(u"tab\tname.mp3"_s)));
}
