// kestrelvane-cli convert: one Make command on one folder, run to its end as the window runs it,
// with the job list printed at the end.

#include <algorithm>
#include <csignal>

#include <QCoreApplication>
#include <QEventLoop>
#include <QLocale>
#include <QSocketNotifier>
#include <QTimer>

#include "app/codecset.h"
#include "app/runwakeups.h"
#include "browser/filelist.h"
#include "cli/arguments.h"
#include "cli/clitext.h"
#include "cli/command.h"
#include "engine/conversionrun.h"
#include "engine/jobfailure.h"
#include "engine/runparameters.h"
#include "platform/posix/posixclock.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixfolders.h"
#include "platform/posix/posixprocesses.h"
#include "settings/configfile.h"
#include "settings/startupsettings.h"
#include "ui/statusbar.h"
#include "ui/uitext.h"

namespace kv::cli {

namespace {

Command convertCommand();

const Command &self()
{
    static const Command command = convertCommand();
    return command;
}

struct ConvertRequest
{
    QString to;
    QString from;
    int jobs = 0; // 0: the processor count
    QString folder;
    QStringList names;
};

// Fills request from args; an empty result means go on, anything else is the usage problem.
QString parse(const QStringList &args, ConvertRequest &request)
{
    Arguments parsed;
    const QStringList known{QStringLiteral("--to"), QStringLiteral("--from"), QStringLiteral("--jobs")};
    if (QString problem = parseArguments(args, known, parsed); !problem.isEmpty())
        return problem + QStringLiteral(" (put -- before a name that starts with -)");
    request.to = parsed.value(QStringLiteral("--to"));
    request.from = parsed.value(QStringLiteral("--from"));
    if (request.to.isEmpty())
        return QStringLiteral("no --to given");
    if (!QStringList{QStringLiteral("mp3"), QStringLiteral("ogg"), QStringLiteral("mpc"), QStringLiteral("wav")}
             .contains(request.to))
        return QStringLiteral("unknown target \"") + request.to + QStringLiteral("\" (mp3, ogg, mpc or wav)");
    if (parsed.has(QStringLiteral("--from"))
        && !QStringList{QStringLiteral("mp3"), QStringLiteral("ogg"), QStringLiteral("mpc")}.contains(request.from))
        return QStringLiteral("unknown source \"") + request.from + QStringLiteral("\" (mp3, ogg or mpc)");
    if (parsed.has(QStringLiteral("--jobs"))) {
        bool ok = false;
        request.jobs = parsed.value(QStringLiteral("--jobs")).toInt(&ok);
        if (!ok || request.jobs < 1 || request.jobs > 8)
            return QStringLiteral("--jobs takes a number from 1 to 8");
    }
    if (request.to == QLatin1String("wav") && request.from.isEmpty())
        return QStringLiteral("--to wav needs --from mp3, ogg or mpc");
    if (request.to != QLatin1String("wav") && !request.from.isEmpty())
        return QStringLiteral("--from goes only with --to wav (encoding reads WAV files)");
    if (request.to == QLatin1String("wav") && request.jobs != 0)
        return QStringLiteral("--jobs goes only with encoding: decoding runs one file at a time");
    if (parsed.positionals.isEmpty())
        return QStringLiteral("no FOLDER given");
    request.folder = parsed.positionals.takeFirst();
    request.names = parsed.positionals;
    return {};
}

MakeCommand commandOf(const QString &to)
{
    if (to == QLatin1String("mp3"))
        return MakeCommand::Mp3;
    if (to == QLatin1String("ogg"))
        return MakeCommand::Ogg;
    if (to == QLatin1String("mpc"))
        return MakeCommand::Mpc;
    return MakeCommand::Wav;
}

// The run's progress on standard error: redrawn in place on a terminal, otherwise a plain line
// whenever another job has finished.
class ProgressLine
{
public:
    explicit ProgressLine(const ConversionRun &run) : m_run(run), m_terminal(isTerminal(2)) {}

    void update()
    {
        const RunDisplay &d = m_run.display();
        if (!m_terminal) {
            if (d.labels[2] != m_lastFinished) {
                m_lastFinished = d.labels[2];
                err(text() + QLatin1Char('\n'));
            }
            return;
        }
        const QString line = text();
        if (line != m_lastLine) {
            m_lastLine = line;
            err(QStringLiteral("\r") + line + QStringLiteral("\x1b[K"));
        }
    }

    void finish()
    {
        if (m_terminal && !m_lastLine.isEmpty())
            err(QStringLiteral("\r\x1b[K"));
    }

private:
    QString text() const
    {
        const RunDisplay &d = m_run.display();
        // The window's bar appears with its estimate; until then the share of ended jobs stands in.
        const double share = d.barVisible && d.barMax > 0 ? d.barValue / d.barMax : endedShare();
        const int width = 24;
        const int filled = std::clamp(static_cast<int>(share * width), 0, width);
        QString line = QLatin1Char('[') + QString(filled, QLatin1Char('#')) + QString(width - filled, QLatin1Char('.'))
                       + QStringLiteral("] ") + d.labels[2];
        if (!d.labels[0].isEmpty())
            line += QStringLiteral("  elapsed ") + d.labels[0];
        if (d.remainingVisible && !d.labels[1].isEmpty())
            line += QStringLiteral("  remaining ") + d.labels[1];
        return line;
    }

    double endedShare() const
    {
        const size_t jobs = m_run.jobs().size();
        return jobs == 0 ? 0.0 : double(m_run.endedJobs()) / double(jobs);
    }

    const ConversionRun &m_run;
    bool m_terminal;
    QString m_lastLine;
    QString m_lastFinished;
};

QString jobReport(const ConversionRun &run, const UiText &text)
{
    const QLatin1Char tab('\t');
    const QLatin1Char newline('\n');
    QString report = QStringList(text.jobColumns.begin(), text.jobColumns.end()).join(tab) + newline;
    for (const EncodeJob &job : run.jobs()) {
        for (size_t c = 0; c < job.columns.size(); ++c) {
            if (c > 0)
                report += tab;
            report += escapedText(job.columns[c]);
        }
        report += newline;
    }
    return report + run.display().labels[2] + newline;
}

// After the job list: each job whose codec failed, with how it ended and the end of what it
// wrote on its standard error, indented. Empty when every codec succeeded.
QString failureReport(const ConversionRun &run)
{
    QString report;
    for (const EncodeJob &job : run.jobs()) {
        if (!job.codecFailure)
            continue;
        report += QLatin1Char('\n') + escapedText(job[EncodeJob::Name]) + QLatin1Char('\t') + job[EncodeJob::Status]
                  + QLatin1Char('\t') + processEndText(*job.codecFailure) + QLatin1Char('\n');
        for (const QString &line : errorOutputText(*job.codecFailure).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            report += QStringLiteral("    ") + escapedText(line.trimmed()) + QLatin1Char('\n');
    }
    return report;
}

int runConvert(const QStringList &args)
{
    ConvertRequest request;
    const QString problem = parse(args, request);
    if (!problem.isEmpty())
        return usageError(self(), problem);

    const std::optional<QString> folder = folderArgument(request.folder);
    if (!folder)
        return ExitUsage;

    PosixFiles files;
    const QString program = programFolder();
    const QStringList missing = checkCodecs(program, files);
    if (!missing.isEmpty()) {
        // Each names the program's own folder, whose name may hold any byte: escaped as every name is.
        for (const QString &message : missing)
            err(escapedText(message) + QLatin1Char('\n'));
        return ExitUsage;
    }

    const QLocale locale = QLocale::system();
    const StartupSettings startup = loadStartupSettings(configFile(), files, locale);
    const UiText &text =
        startup.controls.languagePanelText() == russianTexts().languageName ? russianTexts() : englishTexts();

    PosixFolders folders;
    FileListState list;
    StatusBar status;
    // The kinds were checked by parse(), so each names a pattern.
    const AudioFormat shown =
        *formatFromPattern(QStringLiteral("*.") + (request.to == QLatin1String("wav") ? request.from : QStringLiteral("wav")));
    list.path = *folder;
    list.pattern = patternOf(shown);
    ScanContext scan{list, status, text, locale, folders,
                     headerReaders(files),
                     {}, {}, {}};
    if (ScanFolder(scan) == ScanEnd::NotListed) {
        err(QStringLiteral("kestrelvane-cli: ") + escapedText(request.folder) + QStringLiteral(": cannot read folder\n"));
        return ExitUsage;
    }
    for (const QString &name : request.names) {
        const auto row = std::find_if(list.rows.begin(), list.rows.end(),
                                      [&](const FileRow &r) { return r.info[MediaInfo::Name] == name; });
        if (row == list.rows.end()) {
            err(QStringLiteral("kestrelvane-cli: ") + escapedText(name) + QStringLiteral(": not listed in ")
                + escapedText(request.folder) + QLatin1Char('\n'));
            return ExitUsage;
        }
        row->checked = true;
    }

    RunParameters parameters;
    OptionTextBuilder builder;
    applyMakeCommand(parameters, commandOf(request.to), shown, startup.settings(), builder);

    PosixClock clock;
    PosixProcesses processes;
    PosixProcesses::preferPromptWakeups();
    const bool bell = isTerminal(2);
    ConversionRun run(ConversionContext{clock, processes, files, parameters, list, program,
                                        [bell] {
                                            if (bell)
                                                err(QStringLiteral("\a"));
                                        },
                                        {}},
                      text);
    const int slots = request.jobs > 0 ? request.jobs : processes.processorCount();
    const bool prepared = run.PrepareJobs(request.names.isEmpty(), startup.settings().mp3.cbrIndex, slots);
    for (const LeftOutSource &source : run.leftOut())
        err(QStringLiteral("kestrelvane-cli: ") + escapedText(source.name) + QStringLiteral(" left out: its target ")
            + escapedText(source.target.mid(source.target.lastIndexOf(QLatin1Char('/')) + 1))
            + QStringLiteral(" is made from ") + escapedText(source.sameTargetAs) + QStringLiteral(" in this run\n"));
    if (!prepared) {
        err(QStringLiteral("kestrelvane-cli: no file to convert\n"));
        return ExitNoJobs;
    }

    // The window's 100 ms timer, plus an immediate tick whenever a codec ends, so a slot is
    // refilled at once. Unlike the window, the command ends when nothing waits or runs.
    ProgressLine progress(run);
    QEventLoop loop;
    int interrupts = 0;
    int abortSignal = 0; // the signal that ended the run early
    auto work = [&] {
        PosixProcesses::clearExitEvents();
        run.tick();
        progress.update();
        if (run.idle()) {
            run.tick(); // records an end that came between the tick's poll and ours
            loop.quit();
        } else if (!run.anyRunning()) {
            // A step that fails alike on every tick (a source under 512 bytes rounds to 0 KB and
            // gives no percentage) leaves jobs waiting with nothing running: the window would
            // tick on for ever, the command ends with them still waiting once another tick
            // changes nothing. Only then is the job list copied: a copy at every tick made a
            // run of many files quadratic.
            const std::vector<EncodeJob> before = run.jobs();
            run.tick();
            progress.update();
            if (!run.anyRunning() && run.jobs() == before)
                loop.quit();
        }
    };
    QTimer timer;
    timer.setInterval(100);
    QObject::connect(&timer, &QTimer::timeout, &loop, work);
    watchRunWakeups(&loop, processes.wakeups(), work);
    // The first Ctrl-C lets the running jobs finish; a second one, or a request to end (SIGTERM,
    // SIGHUP) or a closed output pipe, kills the running codecs at once.
    QSocketNotifier interrupted(InterruptWatcher::install(), QSocketNotifier::Read);
    QObject::connect(&interrupted, &QSocketNotifier::activated, &loop, [&] {
        for (const int sig : InterruptWatcher::takeSignals()) {
            if (abortSignal != 0)
                break;
            if (sig == SIGINT && ++interrupts == 1) {
                run.stop();
                progress.update();
                continue;
            }
            run.stop();
            run.abortRunning();
            abortSignal = sig;
            loop.quit();
        }
    });
    timer.start();
    QTimer::singleShot(0, &loop, work);
    loop.exec();
    // Whatever ended the loop, no codec outlives the command.
    if (run.anyRunning()) {
        run.stop();
        run.abortRunning();
    }
    processes.readOutput();
    progress.finish();

    out(jobReport(run, text) + failureReport(run));
    if (abortSignal != 0)
        return ExitSignalBase + abortSignal;
    for (const EncodeJob &job : run.jobs()) {
        if (job[EncodeJob::Status] != text.statusDone || job.codecFailure)
            return ExitFailedJobs;
    }
    return ExitOk;
}

Command convertCommand()
{
    return Command{
        QStringLiteral("convert"),
        QStringLiteral("convert --to mp3|ogg|mpc|wav [--from mp3|ogg|mpc] [--jobs N] FOLDER [NAME...]"),
        QStringLiteral(
            "Converts the files of FOLDER as the window's Make commands do: WAV files to MP3, Ogg\n"
            "or Musepack (--to mp3, ogg, mpc), or MP3, Ogg or Musepack files back to WAV (--to wav\n"
            "with --from). The targets are written beside the sources, with the other extension;\n"
            "an existing target is replaced: the old file is moved to the desktop trash, and\n"
            "deleted only where its volume has no trash. When two listed files would make the same\n"
            "target (x.wav and x.WAV), the later one is left out and said so on standard error.\n"
            "The encoder settings are those of the window's kestrvan.cfg (beside the program, or in\n"
            "~/.config/kestrelvane/ where the program's folder cannot be written), or the defaults\n"
            "when it is missing.\n"
            "\n"
            "  --to KIND     mp3, ogg, mpc or wav: what to make\n"
            "  --from KIND   mp3, ogg or mpc: what to decode (only with --to wav)\n"
            "  --jobs N      encode N files at a time, 1 to 8 (default: the processor count, at\n"
            "                most 8); decoding always runs one file at a time\n"
            "  NAME...       the listed files to convert (default: every listed file); put --\n"
            "                before a name that starts with -\n"
            "\n"
            "Only 44100 Hz files are encoded to Musepack. While the run goes on its progress is\n"
            "shown on standard error. At the end standard output gets the six captions of the job\n"
            "list, one line per job (name, status, source size, target size, %, time; separated\n"
            "by tabs) and the \"Finished N of M\" line. Then, for each codec that exited with a\n"
            "non-zero status or died by a signal: an empty line, the job's name, its status and\n"
            "how the codec ended (tab-separated), and the last lines of its error output (up to\n"
            "4 KB), each indented by four blanks. In names and messages a tab, newline and\n"
            "carriage return are written \\t, \\n and \\r, other control characters \\xHH and a\n"
            "backslash \\\\; a byte that is not UTF-8 shows as U+FFFD.\n"
            "\n"
            "Ctrl-C once: the waiting files are not started (\"Break\"), the running ones finish.\n"
            "Ctrl-C twice, SIGTERM, SIGHUP or a closed output pipe: the running codecs are killed\n"
            "(\"Killed\"), their unfinished targets deleted and the job list printed if it can be;\n"
            "finished targets are kept.\n"
            "\n"
            "Exit status: 0 when every job is \"Done\" and every codec succeeded; 1 when any job\n"
            "ended otherwise, any codec failed or the output could not be written; 2 for a usage\n"
            "error, a missing folder or a codec missing or not executable; 3 when there was\n"
            "nothing to convert; 128 + the signal after a hard stop (130 after a second Ctrl-C,\n"
            "143 after SIGTERM, 129 after SIGHUP, 141 after a closed pipe).\n"),
        runConvert,
    };
}

const Registration registration{self()};

} // namespace

} // namespace kv::cli
