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
// Processes run until the test ends them; a launch fails for any environment but the empty one
// codecs get.
struct Rig : Clock, Files, Processes
{
    double now = 36000;
    std::map<QString, std::int64_t> sizes;
    std::map<ProcessHandle, ProcessEnd> ends; // of ended processes that did not simply succeed
    std::vector<QString> commandLines; // of successful launches
    std::set<ProcessHandle> running;
    std::set<ProcessHandle> released; // ended ones only: a running process stays known
    RunParameters parameters{u"lame"_s, u"--preset extreme --silent --priority"_s, u".wav"_s, u".mp3"_s};
    FileListState list{.currentFolder = u"/m/"_s};
    int sizeQueries = 0;
    ConversionRun run{ConversionContext{*this, *this, *this, parameters, list, u"/opt/kv/"_s, [] {}, [] {}},
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
        return sizes.erase(path) ? RemoveResult::Removed : RemoveResult::OtherError;
    }
    RemoveResult moveToTrash(const QString &path) override { return remove(path); }
    std::optional<QByteArray> readAll(const QString &) override { return std::nullopt; }
    bool writeAtStart(const QString &, const QByteArray &) override { return false; }
    std::optional<ProcessHandle> start(const QString &commandLine, ChildEnvironment env) override
    {
        if (env != ChildEnvironment::Empty)
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

    void addFile(const QString &name, std::int64_t bytes)
    {
        FileRow row{.checked = true};
        row.info[MediaInfo::Name] = name;
        row.info[MediaInfo::Sampling] = u"44100"_s;
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
    const QString &label(int i) const { return run.display().labels.at(static_cast<size_t>(i)); }
};

} // namespace

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

