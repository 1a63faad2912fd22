#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <QCoreApplication>
#include <QStandardPaths>

#include "cli/clitext.h"
#include "cli/command.h"
#include "platform/nativenames.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixpaths.h"
#include "settings/configfile.h"

namespace kv::cli {

std::vector<Command> &commands()
{
    static std::vector<Command> all;
    return all;
}

namespace {

int g_outputError = 0; // errno of the first failed write to standard output

} // namespace

void out(const QString &text)
{
    const QByteArray bytes = shownName(text).toUtf8();
    if (std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout)
            != static_cast<size_t>(bytes.size())
        && g_outputError == 0)
        g_outputError = errno;
}

// A command's status once its output is flushed: a full disk or a closed pipe under standard
// output must not pass for a complete listing.
int withOutputChecked(int status)
{
    if ((std::fflush(stdout) != 0 || std::ferror(stdout)) && g_outputError == 0)
        g_outputError = errno != 0 ? errno : EIO;
    if (g_outputError == 0)
        return status;
    if (g_outputError == EPIPE) // the reader is gone: nothing to tell, as if the pipe had ended us
        return status >= ExitSignalBase ? status : ExitSignalBase + SIGPIPE;
    err(QStringLiteral("kestrelvane-cli: cannot write the output: ") + QString::fromLocal8Bit(std::strerror(g_outputError))
        + QLatin1Char('\n'));
    return status >= ExitSignalBase ? status : ExitFailedJobs;
}

void err(const QString &text)
{
    const QByteArray bytes = shownName(text).toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

QString programFolder()
{
    // Not Qt's own answer: it decodes the path lossily when it is not UTF-8.
    QString folder = executableFolder();
    if (folder.isEmpty())
        folder = QCoreApplication::applicationDirPath();
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

QString configFile()
{
    // The file the window reads and writes: a program installed for every user keeps it in the
    // user's configuration folder.
    const QString folder = programFolder();
    PosixFiles files;
    return configFileLocation(folder, QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation),
                              files.fileSize(configFilePath(folder)).has_value(), isWritableFolder(folder));
}

int usageError(const Command &command, const QString &problem)
{
    if (!problem.isEmpty())
        err(QStringLiteral("kestrelvane-cli: ") + escapedText(problem) + QLatin1Char('\n')); // it may quote an argument
    err(QStringLiteral("usage: kestrelvane-cli ") + command.synopsis + QLatin1Char('\n'));
    return ExitUsage;
}

namespace {

QString overview()
{
    QString text = QStringLiteral("usage:\n");
    for (const Command &c : commands())
        text += QStringLiteral("  kestrelvane-cli ") + c.synopsis + QLatin1Char('\n');
    text += QStringLiteral("  kestrelvane-cli COMMAND --help\n");
    return text;
}

} // namespace

} // namespace kv::cli

int main(int argc, char **argv)
{
    using namespace kv::cli;
    QCoreApplication app(argc, argv);
    // The window's name, so both find the same configuration folder.
    QCoreApplication::setApplicationName(QStringLiteral("kestrelvane"));
    // Names come byte for byte, not through Qt's decoding, so one that is not UTF-8 still names
    // its file.
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(kv::nameFromBytes(argv[i]));
    if (args.isEmpty()) {
        err(overview());
        return ExitUsage;
    }
    const QString name = args.takeFirst();
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        out(QStringLiteral("kestrelvane-cli: list, inspect and convert audio folders without the window.\n\n")
            + overview());
        return withOutputChecked(ExitOk);
    }
    for (const Command &c : commands()) {
        if (c.name != name)
            continue;
        if (args.contains(QLatin1String("--help")) || args.contains(QLatin1String("-h"))) {
            out(QStringLiteral("usage: kestrelvane-cli ") + c.synopsis + QStringLiteral("\n\n") + c.help);
            return withOutputChecked(ExitOk);
        }
        return withOutputChecked(c.run(args));
    }
    err(QStringLiteral("kestrelvane-cli: unknown command \"") + escapedText(name) + QStringLiteral("\"\n") + overview());
    return ExitUsage;
}
