#include <sys/stat.h>

#include <QScopeGuard>

#include "clifixtures.h"

// Names of files, folders and the program's own folder that are not UTF-8 (Windows-1251 and
// Latin-1 here) or that hold control characters: listed, converted to MP3 and back (each named by
// its own bytes), refused and reported, with U+FFFD for each byte that is not UTF-8 and every
// control escaped. DEL, U+0085 and U+009F (the first and last of C1) are controls too; U+00A0 is
// not, nor is Thai (three bytes, the first 0xE0). What varies from run to run is left out.
TEST(Names, NotUtf8OrWithControlCharactersListConvertAndShowEscaped)
{
    QTemporaryDir dir; // rm removes what it holds: QTemporaryDir cannot remove names that are not UTF-8
    const auto remove = qScopeGuard([&] { QProcess::execute(u"rm"_s, {u"-rf"_s, dir.path()}); });
    const QByteArray cli = QFile::encodeName(cliPath()), root = QFile::encodeName(dir.path()) + '/';
    const QByteArray music = root + "\xCC\xF3\xE7\xFB\xEA\xE0/", russian = "\xCF\xE5\xF1\xED\xFF"; // "Музыка", "Песня"
    ProgramCopy copy; // run from a folder named "Прог" in Windows-1251: its codecs are found all the same
    ASSERT_EQ(::rename(QFile::encodeName(copy.dir.path()).constData(), (root + "\xCF\xF0\xEE\xE3").constData()), 0);
    for (const QByteArray &folder : {music, root + "in\tfolder", root + "prog\t\xE9"})
        ASSERT_EQ(::mkdir(folder.constData(), 0700), 0);
    ASSERT_EQ(::mkdir((root + "shut\tfolder").constData(), 0), 0);
    ASSERT_EQ(::link(cli.constData(), (root + "prog\t\xE9/kestrelvane-cli").constData()), 0);
    makeWav(dir.filePath(u"sine.wav"_s));
    for (const QByteArray &name : {russian, QByteArray("caf\xE9"), QByteArray("tab\tname"), QByteArray("line\nbreak"),
                                   QByteArray("back\\slash"), QByteArray("esc\x1b\x7f\r"), QByteArray("nel\xC2\x85"),
                                   QByteArray("apc\xC2\x9F"), QByteArray("nbsp\xC2\xA0"), QByteArray("thai\xE0\xB9\x80")})
        ASSERT_EQ(::link((root + "sine.wav").constData(), (music + name + ".wav").constData()), 0);
    QStringList lines;
    const CliRun bash{.program = u"/bin/bash"_s, .unprivileged = true, .env = {u"XDG_DATA_HOME="_s + dir.filePath(u"data"_s)}};
    for (const QByteArrayList &commandLine :
         {QByteArrayList{cli, "list", music},
          {root + "\xCF\xF0\xEE\xE3/kestrelvane-cli", "convert", "--to", "mp3", music, "tab\tname.wav", "line\nbreak.wav",
           russian + ".wav", "caf\xE9.wav"},
          {cli, "convert", "--to", "wav", "--from", "mp3", music, russian + ".mp3"},
          {cli, "convert", "--to", "wav", "--from", "mp3", music, "caf\xE9.mp3"}, {cli, "list", music},
          {cli, "convert", "--to", "ogg", root + "in\tfolder/", "no\tsuch\\.wav"},
          {cli, "list", root + "gone\n\xE9"}, {cli, "list", music + "tab\tname.wav"}, {cli, "list", "--kind", "x\ty", root},
          {cli, "list", root + "shut\tfolder"}, {cli, "convert", "--to", "mp3", root + "shut\tfolder"}, {cli, "li\tst"},
          {root + "prog\t\xE9/kestrelvane-cli", "convert", "--to", "ogg", music}}) {
        // Passed byte for byte through bash's $'\xHH' quoting, which QProcess (UTF-8 only) cannot do.
        QByteArray script = "exec";
        for (const QByteArray &arg : commandLine)
            script += " $'" + arg.toPercentEncoding().replace('%', "\\x") + '\'';
        lines += shown(QString::fromUtf8(commandLine.join(' ')).replace(cliPath(), u"kestrelvane-cli"_s),
                       runCli({u"-c"_s, QString::fromLatin1(script)}, bash));
    }
    lines.removeIf([](const QString &line) { return line.startsWith(u"2> ["_s); }); // the progress, timed
    lines.replaceInStrings(QRegularExpression(u"^(Free Disk Space: ).*|(\tDone\t).*"_s), u"\\1\\2<varies>"_s);
    kv::test::expectAsRecorded(u"cli-names"_s, lines, dir.path());
    EXPECT_NE(::access((music + "tab\tname.ogg").constData(), F_OK), 0);
}
