#include <gtest/gtest.h>

#include <map>
#include <set>

#include "browser/filelist.h"
#include "engine/conversionrun.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "support/qtprinters.h"
#include "ui/uitext.h"

using namespace kv;
using namespace Qt::StringLiterals;

namespace {

const UiText &text = englishTexts();

// A run in the folder /m/ whose clock, files (sizes only) and codec processes are the rig's own.
// Processes run until the test ends them; a launch fails while failLaunches is set, and always
// for any environment but the empty one codecs get.
struct Rig : Clock, Files, Processes
{
    double now = 36000;
    std::map<QString, std::int64_t> sizes;
    std::set<QString> readOnly;        // refuse deletion
    std::set<QString> trashed;
    std::map<ProcessHandle, ProcessEnd> ends; // of ended processes that did not simply succeed
    std::vector<QString> commandLines; // of successful launches
    std::set<ProcessHandle> running;
    std::set<ProcessHandle> released; // ended ones only: a running process stays known
    bool failLaunches = false;
    RunParameters parameters{u"lame"_s, u"--preset extreme --silent --priority"_s, u".wav"_s, u".mp3"_s};
    FileListState list{.currentFolder = u"/m/"_s};
    int beeps = 0;
    int playerStops = 0;
    int sizeQueries = 0;
    ConversionRun run{ConversionContext{*this, *this, *this, parameters, list, u"/opt/kv/"_s, [this] { ++beeps; },
                                        [this] { ++playerStops; }},
                      text};

    double secondsSinceMidnight() override { return now; }
    std::optional<std::int64_t> fileSize(const QString &path) override
    {
        ++sizeQueries;
        return sizes.count(path) ? std::optional(sizes.at(path)) : std::nullopt;
    }
    std::unique_ptr<ByteSource> open(const QString &) override { return nullptr; }
    RemoveResult remove(const QString &path) override
    {
        return readOnly.count(path) ? RemoveResult::AccessDenied : sizes.erase(path) ? RemoveResult::Removed : RemoveResult::OtherError;
    }
    RemoveResult moveToTrash(const QString &path) override
    {
        const RemoveResult result = remove(path);
        return result == RemoveResult::Removed && !trashed.insert(path).second ? RemoveResult::OtherError : result;
    }
    std::optional<QByteArray> readAll(const QString &) override { return std::nullopt; }
    bool writeAtStart(const QString &, const QByteArray &) override { return false; }
    std::optional<ProcessHandle> start(const QString &commandLine, ChildEnvironment env) override
    {
        if (failLaunches || env != ChildEnvironment::Empty)
            return std::nullopt;
        commandLines.push_back(commandLine);
        return *running.insert(static_cast<ProcessHandle>(commandLines.size())).first;
    }
    bool hasEnded(ProcessHandle h) override { return !running.count(h); }
    void kill(ProcessHandle h) override
    {
        if (running.erase(h))
            ends[h] = ProcessEnd{.signal = 9};
    }
    std::optional<ProcessEnd> endOf(ProcessHandle h) override
    {
        return running.count(h) || released.count(h) ? std::nullopt : std::optional(ends.count(h) ? ends.at(h) : ProcessEnd{});
    }
    void release(ProcessHandle h) override
    {
        if (h != 0 && !running.count(h))
            released.insert(h);
    }
    int processorCount() override { return 4; }
    // Processes started and not let go.
    size_t held() const { return commandLines.size() - released.size(); }

    void addFile(const QString &name, std::int64_t bytes, const char *sampling = "44100", bool checked = true)
    {
        FileRow row{.checked = checked};
        row.info[MediaInfo::Name] = name;
        row.info[MediaInfo::Sampling] = QLatin1String(sampling);
        list.rows.push_back(row);
        sizes[list.currentFolder + name] = bytes;
    }
    // A run over f01.wav, f02.wav, ... on so many processors, its first tick done.
    void begin(int count, int processors, std::int64_t bytes = 10240)
    {
        for (int i = 1; i <= count; ++i)
            addFile(u"f%1.wav"_s.arg(i, 2, 10, QLatin1Char('0')), bytes);
        ASSERT_TRUE(run.PrepareJobs(true, 3, processors));
        run.tick();
    }
    QString target(int row) const { return u"/m/f%1.mp3"_s.arg(row, 2, 10, QLatin1Char('0')); }
    // The codec of a running job writes its target and exits.
    void finish(int row, std::int64_t targetBytes, ProcessEnd end = {})
    {
        sizes[target(row)] = targetBytes;
        for (const SlotState &s : run.state().slots)
            if (s.job == row && running.erase(s.handle))
                ends[s.handle] = end;
    }
    // A job's status by its first letter, '-' while waiting; bold rows in lower case.
    QString statuses() const
    {
        QString s;
        for (const EncodeJob &j : run.jobs()) {
            const QChar c = j[EncodeJob::Status].isEmpty() ? QLatin1Char('-') : j[EncodeJob::Status].front();
            s += j.bold ? c.toLower() : c;
        }
        return s;
    }
    // The finished line, the frame's switches that are on and a word for each beep.
    QString frame() const
    {
        const RunDisplay &d = run.display();
        QStringList on(d.labels[2].isEmpty() ? 0 : 1, d.labels[2] + QLatin1Char(':'));
        for (const auto &[set, name] : {std::pair{d.frameVisible, "frame"}, {d.barVisible, "bar"}, {d.remainingVisible, "remaining"},
                                        {d.stopEnabled, "stop"}, {d.closeEnabled, "close"}, {d.timerEnabled, "timer"}})
            if (set)
                on.append(QLatin1String(name));
        return (on + QStringList(beeps, u"beep"_s)).join(QLatin1Char(' '));
    }
    const QString &label(int i) const { return run.display().labels.at(static_cast<size_t>(i)); }
};

} // namespace

// A long run keeps no record of a codec once its job is recorded, so a session converting
// thousands of files does not grow; a failing codec's end is read before its record goes.
TEST(ConversionRun, EndedCodecsAreLetGoOnceTheirJobsAreRecorded)
{
    Rig rig;
    rig.begin(10, 4);
    EXPECT_EQ(rig.frame(), u"Finished 0 of 10: frame stop timer"_s);
    const ProcessEnd warned{.exitCode = 2, .errorTail = "warning\n"};
    for (const int row : {2, 1, 3, 4, 5, 6, 7, 8, 9, 10}) {
        rig.now += 1;
        rig.finish(row, 2048, row == 7 ? warned : ProcessEnd{});
        rig.run.tick();
        EXPECT_LE(rig.held(), 4u) << row;
        if (row == 2) { // that slot, and only it, takes the fifth file; the remaining time shows
            EXPECT_EQ(rig.run.jobs()[1].columns,
                      (std::array{u"f02.wav"_s, text.statusDone, u"10 KB"_s, u"2 KB"_s, u"20"_s, u"0:00:01"_s}));
            EXPECT_EQ(rig.statuses(), u"IDIII-----"_s);
            EXPECT_EQ(rig.run.state().slots[1].job, 5);
            EXPECT_EQ(rig.run.display().selectedRow, 1);
            EXPECT_EQ(rig.frame(), u"Finished 1 of 10: frame bar remaining stop timer"_s);
        }
    }
    EXPECT_EQ(rig.statuses(), u"DDDDDDDDDD"_s);
    EXPECT_EQ(rig.label(1), u"0:00:00"_s);
    EXPECT_EQ(rig.run.display().barValue, rig.run.display().barMax);
    EXPECT_EQ(rig.frame(), u"Finished 10 of 10: frame bar remaining close beep"_s);
    EXPECT_EQ(rig.run.jobs()[6].codecFailure, warned);
    EXPECT_EQ(rig.held(), 4u); // the slots' last codecs, until the next run
    rig.run.close();
    ASSERT_TRUE(rig.run.PrepareJobs(true, 3, 4));
    EXPECT_EQ(rig.held(), 0u);
}

// Ctrl-C, a job finishes, Ctrl-C again: only what still runs is killed and loses its target.
TEST(ConversionRun, HardStopKillsOnlyTheRunningAndKeepsFinishedTargets)
{
    Rig rig;
    rig.begin(5, 3);
    rig.run.stop();
    rig.finish(1, 2048);
    rig.run.tick();
    rig.finish(2, 2048); // ended, but no tick has recorded it yet
    rig.sizes[rig.target(3)] = 1000;
    rig.run.abortRunning();
    EXPECT_EQ(rig.statuses(), u"DDkbb"_s);
    EXPECT_EQ(rig.run.jobs()[2][EncodeJob::Status], text.statusKilled);
    EXPECT_FALSE(rig.run.jobs()[2][EncodeJob::Time].isEmpty());
    EXPECT_TRUE(rig.sizes.count(rig.target(1)));
    EXPECT_TRUE(rig.sizes.count(rig.target(2)));
    EXPECT_FALSE(rig.sizes.count(rig.target(3)));
    EXPECT_TRUE(rig.running.empty());
    EXPECT_TRUE(rig.run.idle());
    EXPECT_FALSE(rig.run.jobs()[2].codecFailure); // killed by the stop, not failed
}

// The size still decides the status; the codec's failure is kept beside it. A target under
// 512 bytes rounds to 0 KB: an error whose slot shows running, and the run never ends.
TEST(ConversionRun, FailingCodecsAreRecordedWithTheirJobs)
{
    Rig rig;
    rig.begin(5, 5);
    const ProcessEnd diskFull{.exitCode = 1, .errorTail = "Error writing mp3 output\n"};
    const ProcessEnd crash{.signal = 11};
    rig.finish(1, 12 * 1024, diskFull);
    rig.finish(2, 0, crash);
    rig.finish(3, 300);
    rig.finish(4, 512);
    rig.finish(5, 513);
    rig.run.tick();
    EXPECT_EQ(rig.statuses(), u"DeeeD"_s);
    EXPECT_EQ(rig.run.jobs()[1].reason, u"empty target"_s);
    EXPECT_EQ(rig.run.jobs()[2].reason, u"target of 300 bytes, under 1 KB"_s);
    EXPECT_EQ(rig.run.jobs()[4].reason, QString());
    EXPECT_EQ(rig.run.jobs()[0].codecFailure, diskFull);
    EXPECT_EQ(rig.run.jobs()[1].codecFailure, crash);
    EXPECT_FALSE(rig.run.jobs()[4].codecFailure);
    EXPECT_EQ(rig.run.display().indicators[2], Activity::Running);
    EXPECT_EQ(rig.run.display().indicators[4], Activity::Idle);
    rig.run.stop();
    for (int i = 0; i < 5; ++i)
        rig.run.tick();
    EXPECT_EQ(rig.frame(), u"Finished 2 of 5: frame timer"_s); // no remaining time: no more jobs than slots
    EXPECT_TRUE(rig.run.idle());
}

// Jobs end out of list order, one of them in error: each finished job counts once, at its own size
// and percentage, and a running one by its target so far scaled by R.
TEST(ConversionRun, EstimateCountsEachFinishedJobOnceWhateverOrderJobsEndIn)
{
    Rig rig;
    rig.begin(5, 2, 10240); // 50 KB in all
    auto step = [&](int row, std::int64_t bytes, int runningRow, std::int64_t runningBytes) {
        rig.now += 10;
        rig.sizes[rig.target(runningRow)] = runningBytes;
        rig.finish(row, bytes);
        rig.run.tick();
        return rig.run.display().barMax;
    };
    // Job 2 done at 10 %, job 1 has 1 KB: 10 + 10 of 50 KB after 10 s.
    EXPECT_DOUBLE_EQ(step(2, 1024, 1, 1024), 25);
    // Job 1 fails; job 3 has 2 KB, so 20 KB at R = 10: 10 + 20 of 50 after 20 s.
    EXPECT_DOUBLE_EQ(step(1, 300, 3, 2048), 50.0 / 30 * 20);
    // Job 3 done at 20 %, R = 30; job 4 has 3 KB: 20 + 10 of 50 after 30 s. Job 2's target has
    // gone since: a finished job counts with the sizes it ended with.
    rig.sizes.erase(rig.target(2));
    EXPECT_DOUBLE_EQ(step(3, 2048, 4, 3072), 50);
    rig.run.tick();
    EXPECT_EQ(rig.run.display().barValue, 30);
    EXPECT_EQ(rig.label(0), u"0:00:30"_s);
    EXPECT_EQ(rig.label(1), u"0:00:20"_s);
    // Job 5 ends before job 4: 30 KB done, R = 40; job 4's 6 KB stand for 15: 45 of 50 after 40 s.
    EXPECT_DOUBLE_EQ(step(5, 1024, 4, 6144), 50.0 / 45 * 40);
    EXPECT_EQ(rig.label(2), u"Finished 3 of 5"_s);
    rig.now += 10;
    rig.finish(4, 2048);
    rig.run.tick();
    EXPECT_DOUBLE_EQ(rig.run.display().barMax, 62.5); // the failed job never counts: 40 of 50 after 50 s
    EXPECT_EQ(rig.statuses(), u"eDDDD"_s);
    EXPECT_EQ(rig.frame(), u"Finished 4 of 5: frame bar remaining stop timer"_s);
}

// Each completion's estimate needs every finished job's sizes. The file system is asked for them
// once per job, so a run of many small files costs the same per file as a run of a few; asking
// again at every completion made the CLI spend minutes on 10,000 files. A run that fails after
// its first file (a full disk) must not sum every source again at each failure either.
TEST(ConversionRun, SizeQueriesGrowLinearlyWithTheJobCount)
{
    const int jobs = 2000;
    const int slots = 2;
    for (const bool failing : {false, true}) {
        Rig rig;
        rig.begin(jobs, slots, 4454);
        while (!rig.running.empty()) {
            rig.now += 0.02;
            for (const SlotState &s : rig.run.state().slots)
                if (s.job >= 1 && rig.running.count(s.handle))
                    rig.finish(s.job.value(), failing && s.job > 1 ? 0 : 2243);
            rig.run.tick();
        }
        EXPECT_EQ(rig.label(2), failing ? u"Finished 1 of 2000"_s : u"Finished 2000 of 2000"_s);
        EXPECT_EQ(rig.statuses().count(QLatin1Char(failing ? 'e' : 'D')), failing ? jobs - 1 : jobs);
        // Per job: its source when listed, its old target before the launch, its target and source
        // at its end; per completion: the targets of the jobs still running; once: every source
        // for the total.
        EXPECT_LE(rig.sizeQueries, jobs * 4 + jobs * (slots - 1) + jobs) << (failing ? "failing" : "succeeding");
    }
}

TEST(ConversionRun, ExistingTargetsGoToTheTrashReadOnlyOnesMarkedAndFailedLaunchesMoveTheSlotOn)
{
    Rig rig;
    rig.sizes[u"/m/f01.mp3"_s] = 99;
    rig.sizes[u"/m/f04.mp3"_s] = 99;
    rig.readOnly.insert(u"/m/f04.mp3"_s);
    rig.begin(4, 2);
    EXPECT_FALSE(rig.sizes.count(u"/m/f01.mp3"_s));
    EXPECT_EQ(rig.trashed, std::set<QString>{u"/m/f01.mp3"_s});
    const ProcessHandle first = rig.run.state().slots[0].handle;
    rig.finish(1, 2048);
    rig.failLaunches = true;
    rig.run.tick();
    EXPECT_EQ(rig.statuses(), u"DIR-"_s);
    EXPECT_EQ(rig.run.state().slots[0].job, 3);
    EXPECT_EQ(rig.run.state().slots[0].handle, first); // ended, so the next tick offers the next job

    rig.failLaunches = false;
    rig.run.tick();
    EXPECT_EQ(rig.statuses(), u"DIRi"_s); // a read-only target is marked bold but launched anyway
    rig.finish(2, 2048);
    rig.finish(4, 2048);
    rig.run.tick();
    rig.run.tick();
    // "Read only" keeps the run from its end.
    EXPECT_EQ(rig.frame(), u"Finished 3 of 4: frame bar remaining stop timer"_s);
}

TEST(ConversionRun, ClockPassingMidnightKeepsCountingForward)
{
    Rig rig;
    rig.now = 86395.123456789;
    rig.begin(1, 1);
    // Start and now share one precision: the same moment never looks like a day later.
    EXPECT_EQ(rig.label(0), u"0:00:00"_s);
    rig.now = 5;
    rig.run.tick();
    EXPECT_EQ(rig.label(0), u"0:00:10"_s);
    rig.now = 7;
    rig.finish(1, 2048);
    rig.run.tick();
    EXPECT_EQ(rig.run.jobs()[0][EncodeJob::Time], u"0:00:12"_s);
}

TEST(PrepareJobs, SkipAndSelectionRulesSizesAndSlotCount)
{
    // expected: the job names' first letters.
    const struct { RunParameters parameters; int cbrIndex; bool allFiles; int processors; const char *expected; int slots; } cases[] = {
        {{u"mppenc"_s, QString(), u".wav"_s, u".mpc"_s}, 3, true, 8, "ad", 8},
        {{u"lame"_s, u"--preset cbr 192 --silent --priority"_s, u".wav"_s, u".mp3"_s}, 3, true, 2, "abcd", 2},
        {{u"lame"_s, u"--preset cbr 160 --silent --priority"_s, u".wav"_s, u".mp3"_s}, 4, true, 2, "abcde", 2},
        {{u"lame"_s, u"--preset extreme --silent --priority"_s, u".wav"_s, u".mp3"_s}, 3, false, 3, "ae", 3},
        {{u"lame"_s, u"--decode"_s, u".mp3"_s, u".wav"_s}, 3, true, 8, "abcde", 1},
    };
    for (const auto &c : cases) {
        Rig rig;
        rig.parameters = c.parameters;
        for (const auto &[name, rate, checked] : {std::tuple{"a44.wav", "44100", true}, {"b48.wav", "48000", false},
                                                  {"c32.wav", "32000", false}, {"d44.wav", "44100", false}, {"e22.wav", "22050", true}})
            rig.addFile(QLatin1String(name), 1536, rate, checked);
        rig.sizes.erase(u"/m/d44.wav"_s);
        EXPECT_TRUE(rig.run.PrepareJobs(c.allFiles, c.cbrIndex, c.processors));
        QString names;
        for (const EncodeJob &j : rig.run.jobs()) {
            names += j[EncodeJob::Name].front();
            EXPECT_EQ(j[EncodeJob::SourceSize], names.endsWith(QLatin1Char('d')) ? u"0 KB"_s : u"2 KB"_s);
        }
        EXPECT_EQ(names, QLatin1String(c.expected)) << c.parameters.options.toStdString();
        EXPECT_EQ(rig.run.state().slotCount, c.slots);
        for (int i = 0; i < RunState::SlotLimit; ++i)
            EXPECT_EQ(rig.run.display().indicators.at(size_t(i)), i < c.slots ? Activity::Idle : Activity::Hidden);
        EXPECT_EQ(rig.frame(), u"Finished 0 of %1: frame stop timer"_s.arg(names.size()));
        EXPECT_EQ(rig.playerStops, 1);
    }
}

// Relabelled mid-run, every status, size and the finished line read as in a run that was in the
// new language from the start.
TEST(ConversionRun, LanguageSwitchedDuringARunReadsAsARunStartedInIt)
{
    auto play = [](Rig &rig) {
        rig.begin(7, 2);
        rig.finish(1, 2048);
        rig.finish(2, 0);
        rig.failLaunches = true;
        rig.run.tick();
        rig.failLaunches = false;
        rig.run.tick();
        rig.run.stop();
        rig.run.abortRunning();
    };
    Rig russian;
    russian.run.setText(russianTexts());
    play(russian);

    Rig rig;
    UiText shown = text;
    rig.run.setText(shown);
    play(rig);
    ASSERT_EQ(rig.statuses(), u"DeRRkkb"_s); // every word a job can end with
    const UiText before = shown;
    shown = russianTexts();
    rig.run.relabel(before);
    EXPECT_EQ(rig.run.jobs(), russian.run.jobs());
    EXPECT_EQ(rig.label(2), russian.label(2));
}
