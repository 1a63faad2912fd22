// kestrelvane-cli options: the option texts and expected bit rates the window would use now.

#include <QLocale>

#include "cli/arguments.h"
#include "cli/clitext.h"
#include "cli/command.h"
#include "platform/posix/posixfiles.h"
#include "settings/configfile.h"
#include "settings/configrecord.h"
#include "settings/encodersettings.h"
#include "settings/startupsettings.h"

namespace kv::cli {

namespace {

Command optionsCommand();

const Command &self()
{
    static const Command command = optionsCommand();
    return command;
}

QString encoderName(Encoder encoder)
{
    switch (encoder) {
    case Encoder::Ogg: return QStringLiteral("Ogg");
    case Encoder::Mpc: return QStringLiteral("Mpc");
    case Encoder::Mp3: break;
    }
    return QStringLiteral("Mp3");
}

int runOptions(const QStringList &args)
{
    Arguments parsed;
    if (const QString problem = parseArguments(args, {QStringLiteral("--config")}, parsed); !problem.isEmpty())
        return usageError(self(), problem);
    if (!parsed.positionals.isEmpty())
        return usageError(self(), QStringLiteral("unexpected argument \"") + parsed.positionals.first() + QLatin1Char('"'));
    const QString configPath = parsed.value(QStringLiteral("--config"), configFile());

    PosixFiles files;
    const QLocale locale = QLocale::system();
    const StartupSettings startup = loadStartupSettings(configPath, files, locale);
    // What the path is comes first: a folder, a FIFO or a file we may not read is not "missing".
    const QString unreadable = describeUnreadable(configPath);
    if (!startup.fileRead || !unreadable.isEmpty()) {
        const std::optional<std::int64_t> size = files.fileSize(configPath);
        const QString why = !unreadable.isEmpty() ? unreadable
                            : size ? QString::number(*size) + QStringLiteral(" bytes, not ")
                                         + QString::number(ConfigRecord::kSize)
                                   : QStringLiteral("missing");
        err(QStringLiteral("kestrelvane-cli: ") + escapedText(configPath) + QStringLiteral(" not read (") + why
            + QStringLiteral("); using the defaults\n"));
    }

    BitrateEstimates estimates; // all 0 first, as the statistics refresh does
    EstimateBitrates(startup.settings(), estimates);
    // One builder for the three, in the order the window can call it: they share a mode part.
    OptionTextBuilder builder;
    const struct { Encoder encoder; std::int16_t estimate; } lines[] = {
        {Encoder::Mp3, estimates.mp3}, {Encoder::Ogg, estimates.ogg}, {Encoder::Mpc, estimates.mpc}};
    for (const auto &line : lines)
        out(encoderName(line.encoder) + QLatin1Char('\t')
            + escapedText(builder.BuildOptionText(line.encoder, startup.settings())) + QLatin1Char('\t')
            + QString::number(line.estimate) + QLatin1Char('\n'));
    return ExitOk;
}

Command optionsCommand()
{
    return Command{
        QStringLiteral("options"),
        QStringLiteral("options [--config FILE]"),
        QStringLiteral(
            "Shows, for each encoder, the option text a conversion would put on its command line\n"
            "and the bit rate in kbps the size forecast expects of it: three lines, each with three\n"
            "tab-separated fields:\n"
            "  Mp3<TAB>OPTION TEXT<TAB>KBPS\n"
            "  Ogg<TAB>OPTION TEXT<TAB>KBPS\n"
            "  Mpc<TAB>OPTION TEXT<TAB>KBPS\n"
            "\n"
            "The settings are those the window starts with: the defaults, then the configuration\n"
            "file kestrvan.cfg, read only when it is exactly 10310 bytes long. It lies beside the\n"
            "program, or in ~/.config/kestrelvane/ where the program's folder cannot be written.\n"
            "A file that is not read is reported on standard error and the defaults are shown.\n"
            "The numbers of an option text are written as the encoders read them, with ASCII\n"
            "digits, \"-\" and \".\" (\"--quality 6.5\"), whatever the locale. A command-line text\n"
            "that holds a tab, newline or carriage return shows it as \\t, \\n or \\r, other control\n"
            "characters as \\xHH and a backslash as \\\\.\n"
            "\n"
            "  --config FILE   read FILE instead of the window's configuration file\n"),
        runOptions,
    };
}

const Registration registration{self()};

} // namespace

} // namespace kv::cli
