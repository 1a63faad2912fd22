// kestrelvane-cli options: the option text and expected bit rate the window would use now.

#include <QLocale>

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

std::int16_t estimateFor(Encoder encoder, const EncoderSettings &settings)
{
    BitrateEstimates estimates; // all 0 first, as the statistics refresh does
    EstimateBitrates(settings, estimates);
    switch (encoder) {
    case Encoder::Ogg: return estimates.ogg;
    case Encoder::Mpc: return estimates.mpc;
    case Encoder::Mp3: break;
    }
    return estimates.mp3;
}

int runOptions(const QStringList &args)
{
    QString configPath = configFilePath(programFolder());
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (a == QLatin1String("--config")) {
            if (i + 1 >= args.size())
                return usageError(self(), QStringLiteral("--config needs a file"));
            configPath = args.at(++i);
        } else if (a.startsWith(QLatin1String("--config="))) {
            configPath = a.mid(9);
        } else {
            return usageError(self(), QStringLiteral("unknown option \"") + a + QLatin1Char('"'));
        }
    }

    PosixFiles files;
    const QLocale locale = QLocale::system();
    const StartupSettings startup = loadStartupSettings(configPath, files, locale);
    if (!startup.fileRead) {
        const std::optional<std::int64_t> size = files.fileSize(configPath);
        const QString why = size ? QString::number(*size) + QStringLiteral(" bytes, not ")
                                       + QString::number(ConfigRecord::kSize)
                                 : QStringLiteral("missing");
        err(QStringLiteral("kestrelvane-cli: ") + configPath + QStringLiteral(" not read (") + why
            + QStringLiteral("); using the defaults\n"));
    }

    const Encoder encoder = startup.controls.selectedEncoder();
    OptionTextBuilder builder;
    const QString optionText = builder.BuildOptionText(encoder, startup.settings(), locale);
    out(QStringLiteral("encoder\t") + encoderName(encoder) + QLatin1Char('\n'));
    out(QStringLiteral("options\t") + optionText + QLatin1Char('\n'));
    out(QStringLiteral("bitrate\t") + QString::number(estimateFor(encoder, startup.settings()))
        + QLatin1Char('\n'));
    return ExitOk;
}

Command optionsCommand()
{
    return Command{
        QStringLiteral("options"),
        QStringLiteral("options [--config FILE]"),
        QStringLiteral(
            "Shows the encoder of the selected options tab, the option text its command line would\n"
            "get, and its expected bit rate in kbps, as three tab-separated lines:\n"
            "  encoder<TAB>Mp3|Ogg|Mpc\n"
            "  options<TAB>OPTION TEXT\n"
            "  bitrate<TAB>KBPS\n"
            "\n"
            "The settings are those the window starts with: the defaults, then the configuration\n"
            "file beside the program (kestrvan.cfg), read only when it is exactly 10310 bytes long.\n"
            "A file that is not read is reported on standard error and the defaults are shown.\n"
            "Numbers follow the user's locale.\n"
            "\n"
            "  --config FILE   read FILE instead of the configuration beside the program\n"),
        runOptions,
    };
}

const Registration registration{self()};

} // namespace

} // namespace kv::cli
