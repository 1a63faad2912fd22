#include "engine/conversionrun.h"

#include <algorithm>
#include <map>

#include "browser/filelist.h"
#include "common/clocktime.h"
#include "common/failure.h"
#include "common/rounding.h"
#include "common/texts.h"
#include "engine/commandline.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "settings/encodersettings.h"
#include "ui/uitext.h"

namespace kv {

namespace {

const QString zeroTime = QStringLiteral("0:00:00");

// The number a size column starts with ("176 KB" -> 176).
double leadingNumber(const QString &sizeText)
{
    const qsizetype blank = sizeText.indexOf(QLatin1Char(' '));
    return numberFromText(blank < 0 ? sizeText : sizeText.left(blank));
}

} // namespace

ConversionRun::ConversionRun(ConversionContext context, const UiText &text)
    : m_context(std::move(context)), m_text(&text)
{
}

double ConversionRun::nowSeconds()
{
    // The run's clock has single precision, start times and now alike: a start stored in a
    // float must never read as later than the same moment read again.
    return static_cast<float>(m_context.clock.secondsSinceMidnight());
}

int ConversionRun::countStatus(const QString &status) const
{
    return static_cast<int>(std::count_if(m_jobs.begin(), m_jobs.end(),
                                          [&](const EncodeJob &j) { return j[EncodeJob::Status] == status; }));
}

bool ConversionRun::PrepareJobs(bool allFiles, int cbrIndex, int processorCount)
{
    bool started = false;
    guarded([&] {
        const RunParameters &p = m_context.parameters;
        const FileListState &list = m_context.list;
        m_jobs.clear();
        m_finished.clear();
        m_settled = {};
        m_launched = 0;
        m_ended = 0;
        m_leftOut.clear();
        std::map<QString, QString> targets; // target path -> the job's name that writes it
        for (const FileRow &row : list.rows) {
            // mpcenc takes only a few sampling rates; the window only offers 44100 Hz sources.
            if (p.targetExtension == QLatin1String(".mpc")
                && numberFromText(row.info[MediaInfo::Sampling]) != 44100)
                continue;
            // High constant bitrates are refused by the encoder for low-rate sources.
            if (p.options.startsWith(QLatin1String("--preset cbr")) && kv::cbrKbps(cbrIndex) > 160
                && numberFromText(row.info[MediaInfo::Sampling]) < 32000)
                continue;
            if (!allFiles && !row.checked)
                continue;
            const QString &name = row.info[MediaInfo::Name];
            const JobPaths paths = jobPaths(list.currentFolder, name, p.targetExtension);
            // The extension match ignores case, so two sources may make one target: the later
            // one would overwrite the earlier one's result.
            if (const auto [it, added] = targets.emplace(paths.target, name); !added) {
                m_leftOut.push_back({name, paths.target, it->second});
                continue;
            }
            EncodeJob job;
            job[EncodeJob::Name] = name;
            m_jobs.push_back(job);
            m_finished.emplace_back();
            const std::int64_t bytes = m_context.files.fileSize(paths.source).value_or(0);
            m_jobs.back()[EncodeJob::SourceSize] = QString::number(sizeInKb(bytes)) + m_text->kbUnit;
        }
        if (m_jobs.empty())
            return;
        if (m_context.stopPlayer)
            m_context.stopPlayer();
        m_state.jobCount = Int16(static_cast<long long>(m_jobs.size()));
        // Decoders write one file at a time; encoders get a processor each.
        m_state.slotCount = p.sourceExtension == QLatin1String(".wav") ? Int16(processorCount) : Int16(1);
        // The last run's codecs have all ended and been recorded.
        for (SlotState &slot : m_state.slots) {
            slot.job = 0;
            m_context.processes.release(slot.handle);
            slot.handle = 0;
        }
        m_display.stopEnabled = true;
        m_display.closeEnabled = false;
        m_state.stopFlag = 0;
        m_state.totalSourceKb = 0;
        for (int i = 0; i < m_state.slotCount; ++i)
            m_display.indicators.at(static_cast<size_t>(i)) = Activity::Idle;
        m_display.labels[2] = m_text->finishedLabel + QStringLiteral("0") + m_text->ofLabel
                              + QString::number(m_state.jobCount.value());
        m_display.frameVisible = true;
        m_state.runStart = static_cast<float>(nowSeconds());
        m_display.timerEnabled = true;
        started = true;
    });
    return started;
}

void ConversionRun::tick()
{
    if (!m_display.timerEnabled)
        return;
    guarded([&] {
        const Int32 e = elapsedSeconds(nowSeconds(), m_state.runStart);
        if (e >= 0 && e < m_display.barMax)
            m_display.barValue = e;
        else
            m_display.barValue = m_display.barMax;
        m_display.labels[0] = durationText(e);
        m_display.labels[1] = m_display.barMax > m_display.barValue
                                  ? durationText(Int32::fromReal(m_display.barMax - m_display.barValue))
                                  : zeroTime;
        for (int slot = 1; slot <= m_state.slotCount; ++slot) {
            if (m_context.processes.hasEnded(m_state.slots.at(static_cast<size_t>(slot - 1)).handle))
                RunSlot(slot);
        }
    });
}

void ConversionRun::RunSlot(int slot)
{
    guarded([&] { runSlot(slot); });
}

void ConversionRun::runSlot(int slotNumber)
{
    if (slotNumber < 1 || slotNumber > RunState::SlotLimit)
        throw Failure("no such slot");
    SlotState &slot = m_state.slots.at(static_cast<size_t>(slotNumber - 1));
    // Only a job still "In Progress" is completed: a "Read only" or "Error" job never reaches the
    // end tests below, so such a run keeps ticking until it is closed by hand. Kept on purpose.
    if (slot.job >= 1 && m_jobs.at(static_cast<size_t>(slot.job.value() - 1))[EncodeJob::Status] == m_text->statusInProgress)
        complete(slot, slotNumber - 1);
    launchNext(slot);
}

void ConversionRun::complete(SlotState &slot, int slotIndex)
{
    const RunParameters &p = m_context.parameters;
    const QString &folder = m_context.list.currentFolder;
    Files &files = m_context.files;
    EncodeJob &job = m_jobs.at(static_cast<size_t>(slot.job.value() - 1));

    const double sourceKb = leadingNumber(job[EncodeJob::SourceSize]);
    const JobPaths paths = jobPaths(folder, job[EncodeJob::Name], p.targetExtension);
    const std::optional<std::int64_t> written = files.fileSize(paths.target);
    const Int32 targetKb = sizeInKb(written.value_or(0));
    const bool finished = targetKb != 0;
    if (finished) {
        m_finished.at(static_cast<size_t>(slot.job.value() - 1)) =
            {static_cast<double>(files.fileSize(paths.source).value_or(0)), static_cast<double>(*written)};
        job[EncodeJob::Percent] = QString::number(Int32::fromReal(divide(targetKb.value() * 100.0, sourceKb)).value());
        job[EncodeJob::SourceSize] = QString::number(Int32::fromReal(sourceKb).value()) + m_text->kbUnit;
        job[EncodeJob::TargetSize] = QString::number(targetKb.value()) + m_text->kbUnit;
        job[EncodeJob::Status] = m_text->statusDone;
        m_display.indicators.at(static_cast<size_t>(slotIndex)) = Activity::Idle;
    } else {
        job[EncodeJob::Status] = m_text->statusError;
        job.bold = true;
        // The status word alone does not tell a codec that wrote nothing from one that wrote little.
        if (!written)
            job.reason = QStringLiteral("no target written");
        else if (*written == 0)
            job.reason = QStringLiteral("empty target");
        else
            job.reason = QStringLiteral("target of %1 bytes, under 1 KB").arg(*written);
    }
    job[EncodeJob::Time] = durationText(elapsedSeconds(nowSeconds(), slot.start));
    ++m_ended;
    // The size decides the status as it always has; a failing codec is told all the same (a full
    // disk leaves part of a target, a read-only folder leaves the old one).
    if (const std::optional<ProcessEnd> end = m_context.processes.endOf(slot.handle); end && end->failed())
        job.codecFailure = end;

    // Progress: finished jobs count whole, with the sizes they ended with; running ones by their
    // target's size now, scaled by R. R is the plain sum of the finished jobs' percentages, not
    // their mean; the estimate has always been made this way and the remaining time shown
    // depends on it.
    auto bytesOf = [&](const QString &path) { return static_cast<double>(files.fileSize(path).value_or(0)); };
    // Rows at the top that ended for good join the kept sums; a copy takes the rest that ended.
    Settled sums = m_settled;
    for (; sums.rows < m_launched && m_jobs[sums.rows][EncodeJob::Status] != m_text->statusInProgress; ++sums.rows)
        count(sums, sums.rows);
    m_settled = sums;
    for (size_t row = m_settled.rows; row < m_launched; ++row)
        count(sums, row);
    double processedKb = sums.processedKb;
    const double ratioSum = sums.ratioSum;
    for (size_t row = m_settled.rows; row < m_launched; ++row) {
        const EncodeJob &j = m_jobs[row];
        if (j[EncodeJob::Status] != m_text->statusInProgress || ratioSum <= 0)
            continue;
        const JobPaths jp = jobPaths(folder, j[EncodeJob::Name], p.targetExtension);
        processedKb += bytesOf(jp.target) / ratioSum * 100 / 1024;
    }

    const Int16 done = sums.done;
    if (done == 1 && m_state.jobCount > m_state.slotCount) {
        // Summed once, when the first job is done: later completions that fail leave done at 1,
        // and summing every source again for each of them would make a failing run quadratic.
        if (finished) {
            double total = 0;
            for (const EncodeJob &j : m_jobs)
                total += bytesOf(jobPaths(folder, j[EncodeJob::Name], p.targetExtension).source) / 1024;
            m_state.totalSourceKb = total;
        }
        m_display.remainingVisible = true;
        m_display.barVisible = true;
    }
    if (processedKb > 0) {
        const double estimate =
            m_state.totalSourceKb / processedKb * elapsedSeconds(nowSeconds(), m_state.runStart);
        if (estimate >= 0)
            m_display.barMax = estimate;
    }
    const Int16 rows = static_cast<long long>(m_jobs.size());
    m_display.labels[2] = m_text->finishedLabel + QString::number(done.value()) + m_text->ofLabel
                          + QString::number(rows.value());
    m_display.selectedRow = slot.job.value() - 1;

    if (done >= rows)
        endOfRun();
    if (m_state.stopFlag == 1 && countStatus(m_text->statusInProgress) == 0)
        endOfRun();
}

void ConversionRun::count(Settled &sums, size_t row) const
{
    if (m_jobs[row][EncodeJob::Status] != m_text->statusDone)
        return;
    const FinishedBytes &bytes = m_finished.at(row);
    sums.processedKb += bytes.source / 1024;
    sums.ratioSum += divide(bytes.target, bytes.source) * 100;
    sums.done += 1;
}

void ConversionRun::launchNext(SlotState &slot)
{
    const auto waiting = std::find_if(m_jobs.begin() + static_cast<std::ptrdiff_t>(m_launched), m_jobs.end(),
                                      [](const EncodeJob &j) { return j[EncodeJob::Status].isEmpty(); });
    if (waiting == m_jobs.end())
        return;
    EncodeJob &job = *waiting;
    const Int16 row = static_cast<long long>(waiting - m_jobs.begin()) + 1;
    const RunParameters &p = m_context.parameters;
    const JobPaths paths = jobPaths(m_context.list.currentFolder, job[EncodeJob::Name], p.targetExtension);

    // The old target goes to the trash rather than away: the source may be its only other copy
    // and the codec may still fail.
    if (m_context.files.fileSize(paths.target).has_value()) {
        switch (m_context.files.moveToTrash(paths.target)) {
        case RemoveResult::Removed:
            break;
        case RemoveResult::AccessDenied:
            // Marked now; a launch that succeeds overwrites the word but the bold stays.
            job[EncodeJob::Status] = m_text->statusReadOnly;
            job.bold = true;
            break;
        case RemoveResult::OtherError:
            throw Failure("target cannot be deleted");
        }
    }

    const std::optional<ProcessHandle> handle = m_context.processes.start(
        buildCommandLine(m_context.programFolder, p.codec, p.options, paths), ChildEnvironment::Empty);
    const auto slotIndex = static_cast<size_t>(&slot - m_state.slots.data());
    if (handle) {
        job[EncodeJob::Status] = m_text->statusInProgress;
        // The slot's last codec was recorded when it ended; a long session must not keep every
        // codec's record and error output.
        m_context.processes.release(slot.handle);
        slot.handle = *handle;
        m_display.indicators.at(slotIndex) = Activity::Running;
    } else {
        // The slot keeps its old, ended handle, so the next tick offers it the next job.
        job[EncodeJob::Status] = m_text->statusReadOnly;
    }
    m_launched = static_cast<size_t>(row.value());
    slot.job = row;
    slot.start = static_cast<float>(nowSeconds());
}

void ConversionRun::endOfRun()
{
    m_display.timerEnabled = false;
    m_display.stopEnabled = false;
    m_display.closeEnabled = true;
    m_display.barValue = m_display.barMax;
    m_display.labels[1] = zeroTime;
    if (m_context.beep)
        m_context.beep();
}

void ConversionRun::relabel(const UiText &before)
{
    guarded([&] {
        const std::pair<const QString *, const QString *> words[] = {
            {&before.statusInProgress, &m_text->statusInProgress}, {&before.statusDone, &m_text->statusDone},
            {&before.statusBreak, &m_text->statusBreak},           {&before.statusReadOnly, &m_text->statusReadOnly},
            {&before.statusError, &m_text->statusError},           {&before.statusKilled, &m_text->statusKilled}};
        for (EncodeJob &job : m_jobs) {
            for (const auto &[from, to] : words) {
                if (!job[EncodeJob::Status].isEmpty() && job[EncodeJob::Status] == *from) {
                    job[EncodeJob::Status] = *to;
                    break;
                }
            }
            for (const int column : {EncodeJob::SourceSize, EncodeJob::TargetSize}) {
                QString &size = job[column];
                if (size.endsWith(before.kbUnit))
                    size = size.left(size.size() - before.kbUnit.size()) + m_text->kbUnit;
            }
        }
        if (!m_display.labels[2].isEmpty())
            m_display.labels[2] = m_text->finishedLabel + QString::number(countStatus(m_text->statusDone))
                                  + m_text->ofLabel + QString::number(static_cast<long long>(m_jobs.size()));
    });
}

void ConversionRun::stop()
{
    guarded([&] {
        m_state.stopFlag = 1;
        for (EncodeJob &job : m_jobs) {
            if (!job[EncodeJob::Status].isEmpty())
                continue;
            m_state.jobCount -= 1;
            job[EncodeJob::Status] = m_text->statusBreak;
            job.bold = true;
        }
        m_display.stopEnabled = false;
    });
}

void ConversionRun::close()
{
    m_display.frameVisible = false;
    m_display.remainingVisible = false;
    m_display.barVisible = false;
}

bool ConversionRun::idle()
{
    // The slots first: while a codec runs, the job list need not be walked.
    return !anyRunning()
           && std::none_of(m_jobs.begin(), m_jobs.end(), [](const EncodeJob &j) { return j[EncodeJob::Status].isEmpty(); });
}

bool ConversionRun::anyRunning()
{
    for (int i = 0; i < m_state.slotCount; ++i) {
        if (!m_context.processes.hasEnded(m_state.slots.at(static_cast<size_t>(i)).handle))
            return true;
    }
    return false;
}

bool ConversionRun::abortJob(int row)
{
    bool aborted = false;
    guarded([&] {
        for (int i = 0; i < m_state.slotCount; ++i) {
            SlotState &slot = m_state.slots.at(static_cast<size_t>(i));
            if (slot.job != row + 1 || m_jobs.at(static_cast<size_t>(row))[EncodeJob::Status] != m_text->statusInProgress)
                continue;
            // A codec that already ended wrote its target: the next tick records it as usual.
            if (m_context.processes.hasEnded(slot.handle))
                return;
            EncodeJob &job = m_jobs.at(static_cast<size_t>(row));
            killJob(slot, i, job, m_text->statusError);
            job.reason = QStringLiteral("aborted");
            job.codecFailure = m_context.processes.endOf(slot.handle);
            m_display.selectedRow = row;
            aborted = true;
            // The run's own end tests count only "Done" rows and run only at a completion; an
            // aborted last job would leave the run ticking for ever with Close disabled.
            const bool waiting = std::any_of(m_jobs.begin(), m_jobs.end(),
                                             [](const EncodeJob &j) { return j[EncodeJob::Status].isEmpty(); });
            if (!waiting && countStatus(m_text->statusInProgress) == 0)
                endOfRun();
            return;
        }
    });
    return aborted;
}

void ConversionRun::abortRunning()
{
    for (int i = 0; i < m_state.slotCount; ++i) {
        SlotState &slot = m_state.slots.at(static_cast<size_t>(i));
        if (slot.job < 1)
            continue;
        EncodeJob &job = m_jobs.at(static_cast<size_t>(slot.job.value() - 1));
        if (job[EncodeJob::Status] != m_text->statusInProgress)
            continue;
        if (m_context.processes.hasEnded(slot.handle)) {
            // Its codec ended before the stop: a finished target, recorded as any other.
            guarded([&] { complete(slot, i); });
            continue;
        }
        killJob(slot, i, job, m_text->statusKilled);
    }
}

void ConversionRun::killJob(SlotState &slot, int slotIndex, EncodeJob &job, const QString &status)
{
    m_context.processes.kill(slot.handle);
    m_context.files.remove(
        jobPaths(m_context.list.currentFolder, job[EncodeJob::Name], m_context.parameters.targetExtension).target);
    job[EncodeJob::Status] = status;
    job[EncodeJob::Time] = durationText(elapsedSeconds(nowSeconds(), slot.start));
    ++m_ended;
    job.bold = true;
    m_display.indicators.at(static_cast<size_t>(slotIndex)) = Activity::Idle;
}

} // namespace kv
