#pragma once

#include <array>
#include <functional>
#include <vector>

#include <QString>

#include "common/checked.h"
#include "engine/encodejob.h"
#include "engine/runparameters.h"
#include "platform/processes.h"

namespace kv {

class Clock;
class Files;
struct FileListState;
struct UiText;

// The picture of one slot's activity indicator.
enum class Activity { Hidden, Idle, Running };

struct SlotState
{
    Int16 job = 0;             // 1-based row, 0 = none
    ProcessHandle handle = 0;  // 0 = none
    float start = 0;           // seconds since midnight, single precision like the clock it copies
};

struct RunState
{
    static constexpr int SlotLimit = 8;
    std::array<SlotState, SlotLimit> slots;
    Int16 jobCount = 0;
    Int16 slotCount = 0;
    Byte stopFlag = 0;
    double totalSourceKb = 0;
    float runStart = 0;
};

// What the conversion frame shows. labels: 0 elapsed, 1 remaining, 2 the finished line.
struct RunDisplay
{
    bool frameVisible = false;
    bool barVisible = false;
    bool remainingVisible = false;
    bool stopEnabled = false;
    bool closeEnabled = false;
    bool timerEnabled = false;
    double barMax = 100; // the bar's own default until the first estimate
    double barValue = 0;
    std::array<QString, 3> labels;
    std::array<Activity, RunState::SlotLimit> indicators{};
    int selectedRow = -1; // 0-based, the job last completed
};

// A listed file a run leaves out because an earlier job of the run writes the same target
// (x.wav and x.WAV both make x.mp3).
struct LeftOutSource
{
    QString name;
    QString target;
    QString sameTargetAs; // the name of the job that keeps the target
    bool operator==(const LeftOutSource &) const = default;
};

// What a run needs from outside. The parameters and the file list are the window's live state:
// a launch reads them as they are at that moment.
struct ConversionContext
{
    Clock &clock;
    Processes &processes;
    Files &files;
    const RunParameters &parameters;
    const FileListState &list;
    QString programFolder;             // ends in "/"
    std::function<void()> beep;        // end of a run
    std::function<void()> stopPlayer;  // before a run starts
};

// The job list and the timer-driven scheduler that runs it. No thread: the owner calls tick()
// every 100 ms while display().timerEnabled, and also whenever a child process ended.
class ConversionRun
{
public:
    ConversionRun(ConversionContext context, const UiText &text);

    // The interface language; status words are compared in it.
    void setText(const UiText &text) { m_text = &text; }
    // The language changed from `before` to the current text: the rows' status words, size units
    // and the finished line are written again in it, so the run still recognises its own rows.
    void relabel(const UiText &before);

    // Builds the job list from the file list and starts the run. allFiles: the Make All toggle;
    // cbrIndex: the selected entry of the MP3 CBR list. Returns whether a run was started.
    bool PrepareJobs(bool allFiles, int cbrIndex, int processorCount);
    // tmrEncode's work: clock, progress bar, then a RunSlot for every slot whose process ended.
    void tick();
    // One scheduler step for slot 1 to 8: record its job's end, start the next waiting job.
    void RunSlot(int slot);
    // The Stop button: waiting jobs become "Break", running ones finish.
    void stop();
    // The Close button's part of the frame.
    void close();

    // True when no job waits and no slot's process runs (the command line ends there).
    bool idle();
    // True while any slot's codec process runs.
    bool anyRunning();
    // The hard stop: records the jobs whose codec already ended, then kills the codecs still
    // running, deletes the targets they were writing and marks their jobs "Killed". A finished
    // target is never touched.
    void abortRunning();

    // "Abort this job": kills the codec of a running row (0-based) with its process group, deletes
    // the target it was writing and ends the job "Error" with the reason "aborted". When nothing
    // waits or runs any more the run ends, so a hung codec cannot hold the window open. Returns
    // whether the row was running.
    bool abortJob(int row);

    const std::vector<EncodeJob> &jobs() const { return m_jobs; }
    // Jobs whose codec has ended, however: done, failed or killed.
    size_t endedJobs() const { return m_ended; }
    // The sources the last PrepareJobs left out, in list order.
    const std::vector<LeftOutSource> &leftOut() const { return m_leftOut; }
    const RunState &state() const { return m_state; }
    const RunDisplay &display() const { return m_display; }

private:
    void runSlot(int slot);
    void complete(SlotState &slot, int slotIndex);
    void launchNext(SlotState &slot);
    // Kills the slot's codec, deletes the target it was writing and ends its job with status.
    void killJob(SlotState &slot, int slotIndex, EncodeJob &job, const QString &status);
    void endOfRun();
    int countStatus(const QString &status) const;
    double nowSeconds();

    // The sizes of a finished job's source and target when it ended, by row. Every completion's
    // estimate needs them; asking the file system again made a run quadratic in its job count.
    struct FinishedBytes
    {
        double source = 0;
        double target = 0;
    };

    // The estimate's share of the rows that ended for good, from the top of the list down to the
    // first one still running: summed in list order as a walk of the whole list sums them, so a
    // completion walks only the rows below and every figure stays the same.
    struct Settled
    {
        size_t rows = 0;
        Int16 done = 0;
        double processedKb = 0;
        double ratioSum = 0;
    };
    // Adds the row's share when it is "Done".
    void count(Settled &sums, size_t row) const;

    ConversionContext m_context;
    const UiText *m_text;
    std::vector<EncodeJob> m_jobs;
    std::vector<FinishedBytes> m_finished;
    Settled m_settled;
    // Jobs start in list order: the rows above this one have been launched, the rest wait or
    // were broken off.
    size_t m_launched = 0;
    size_t m_ended = 0;
    std::vector<LeftOutSource> m_leftOut;
    RunState m_state;
    RunDisplay m_display;
};

} // namespace kv
