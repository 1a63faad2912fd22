// kestrelvane-cli list: the file list of one folder with its status-bar totals and the selection
// statistics, as the window would show them after opening the folder.

#include <QLocale>

#include "browser/filelist.h"
#include "browser/selectionstats.h"
#include "cli/arguments.h"
#include "cli/clitext.h"
#include "cli/command.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixfolders.h"
#include "settings/configfile.h"
#include "settings/startupsettings.h"
#include "ui/statusbar.h"
#include "ui/uitext.h"

namespace kv::cli {

namespace {

Command listCommand();

const Command &self()
{
    static const Command command = listCommand();
    return command;
}

struct ListRequest
{
    QString kind = QStringLiteral("wav");
    bool russian = false;
    QString folder;
};

// Fills request from args; an empty result means go on, anything else is the usage problem.
QString parse(const QStringList &args, ListRequest &request)
{
    Arguments parsed;
    if (QString problem = parseArguments(args, {QStringLiteral("--kind"), QStringLiteral("--lang")}, parsed);
        !problem.isEmpty())
        return problem;
    request.kind = parsed.value(QStringLiteral("--kind"), request.kind);
    if (!QStringList{QStringLiteral("wav"), QStringLiteral("mp3"), QStringLiteral("ogg"), QStringLiteral("mpc")}
             .contains(request.kind))
        return QStringLiteral("unknown kind \"") + request.kind + QStringLiteral("\" (wav, mp3, ogg or mpc)");
    const QString lang = parsed.value(QStringLiteral("--lang"), QStringLiteral("en"));
    if (lang != QLatin1String("en") && lang != QLatin1String("ru"))
        return QStringLiteral("unknown language \"") + lang + QStringLiteral("\" (en or ru)");
    request.russian = lang == QLatin1String("ru");
    if (parsed.positionals.isEmpty())
        return QStringLiteral("no FOLDER given");
    if (parsed.positionals.size() > 1)
        return QStringLiteral("only one FOLDER can be listed");
    request.folder = parsed.positionals.first();
    return {};
}

QString withoutTrailingBlanks(QString text)
{
    qsizetype end = text.size();
    while (end > 0 && text.at(end - 1) == QLatin1Char(' '))
        --end;
    text.truncate(end);
    return text;
}

int runList(const QStringList &args)
{
    ListRequest request;
    const QString problem = parse(args, request);
    if (!problem.isEmpty())
        return usageError(self(), problem);

    const std::optional<QString> folder = folderArgument(request.folder);
    if (!folder)
        return ExitUsage;

    PosixFiles files;
    PosixFolders folders;
    const QLocale locale = QLocale::system();
    const UiText &text = request.russian ? russianTexts() : englishTexts();

    FileListState list;
    list.path = *folder;
    list.pattern = QStringLiteral("*.") + request.kind;
    // Panels start empty: one still empty after the scan was never written, and is not printed.
    StatusBar status;
    SelectionLabels labels;
    bool statsReached = false;

    ScanContext context{list, status, text, locale, folders,
                        headerReaders(files),
                        {},
                        [&] {
                            // Settings are read only when the scan gets this far; a malformed row
                            // never costs the configuration file a look.
                            statsReached = true;
                            const StartupSettings startup =
                                loadStartupSettings(configFile(), files, locale);
                            // Every row counts, as with "Make All" pressed.
                            RefreshSelectionStats(list.rows, true, startup.settings(), text, locale, labels);
                        },
                        {}};
    if (ScanFolder(context) == ScanEnd::NotListed) {
        err(QStringLiteral("kestrelvane-cli: ") + escapedText(request.folder) + QStringLiteral(": cannot read folder\n"));
        return ExitUsage;
    }

    const QLatin1Char tab('\t');
    const QLatin1Char newline('\n');
    QString report;
    report.reserve(static_cast<qsizetype>(list.rows.size() + 16) * 64);
    for (size_t c = 0; c < text.listColumns.size(); ++c) {
        if (c > 0)
            report += tab;
        report += text.listColumns[c];
    }
    report += newline;
    for (const FileRow &row : list.rows) {
        for (int c = 0; c < MediaInfo::ColumnCount; ++c) {
            if (c > 0)
                report += tab;
            report += escapedText(row.info[c]);
        }
        report += newline;
    }
    report += newline;
    for (int panel = 2; panel <= 6; ++panel) {
        if (!status.panel(panel).isEmpty())
            report += withoutTrailingBlanks(status.panel(panel)) + newline;
    }
    if (statsReached) {
        report += newline;
        const struct { int caption; int value; } lines[] = {
            {0, SelectionLabels::Count},       {1, SelectionLabels::Size},
            {3, SelectionLabels::Mp3Forecast}, {4, SelectionLabels::OggForecast},
            {5, SelectionLabels::MpcForecast},
        };
        for (const auto &line : lines) {
            // A value the refresh did not reach (bit rates summing to 0 stop the forecasts) is
            // left out rather than shown blank.
            if (!labels[line.value].isEmpty())
                report += text.infoLabels.at(static_cast<size_t>(line.caption)) + QLatin1Char(' ')
                          + labels[line.value] + newline;
        }
    }
    out(report);
    return ExitOk;
}

Command listCommand()
{
    return Command{
        QStringLiteral("list"),
        QStringLiteral("list [--kind wav|mp3|ogg|mpc] [--lang en|ru] FOLDER"),
        QStringLiteral(
            "Lists the audio files of one kind in FOLDER as the window's file list shows them, with\n"
            "the totals of its status bar and the statistics of the selection.\n"
            "\n"
            "  --kind KIND   wav (the default), mp3, ogg or mpc: which files are listed\n"
            "  --lang LANG   en (the default) or ru: the language of captions and labels\n"
            "\n"
            "Output, UTF-8:\n"
            "  - the six column captions of the file list, separated by tabs;\n"
            "  - one line per listed file, in list order: name, size in KB, duration, bit rate\n"
            "    (\"~\" in front when estimated), sampling rate and channels, separated by tabs;\n"
            "    a column the file's header did not give is empty. In names a tab, newline and\n"
            "    carriage return are written \\t, \\n and \\r, other control characters \\xHH and a\n"
            "    backslash \\\\; a byte that is not UTF-8 shows as U+FFFD;\n"
            "  - an empty line, then the status-bar panels: free disk space, file count, total\n"
            "    size, total duration, average bit rate; a file whose row cannot be totalled stops\n"
            "    the totals, and then these lines are missing;\n"
            "  - when the totals were made: an empty line and the selection statistics with every\n"
            "    file selected (count, size, and the forecast size after MP3, Ogg and Musepack\n"
            "    encoding under the encoder settings of the window's kestrvan.cfg, or the defaults\n"
            "    when it is missing).\n"
            "\n"
            "Numbers follow your locale. Nothing is written to FOLDER.\n"
            "\n"
            "Exit status: 0 when listed; 1 when the output could not be written; 2 for a usage\n"
            "error or a FOLDER that does not exist or cannot be read (with a message on standard\n"
            "error).\n"),
        runList,
    };
}

const Registration registration{self()};

} // namespace

} // namespace kv::cli
