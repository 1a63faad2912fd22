#include <gtest/gtest.h>

#include <algorithm>

#include "browser/filelist.h"
#include "engine/conversionrun.h"
#include "enginefakes.h"
#include "support/qtprinters.h"
#include "ui/uitext.h"

using namespace kv;
using namespace kv::test;

namespace {

const QString mp3Options = QStringLiteral("--preset extreme --silent --priority");

// A job list over fake files, clock and processes in the folder /m/.
struct Rig
{
    FakeClock clock;
    FakeFiles files;
    FakeProcesses processes;
    RunParameters parameters{QStringLiteral("lame"), mp3Options, QStringLiteral(".wav"), QStringLiteral(".mp3")};
    FileListState list;
    int beeps = 0;
    int playerStops = 0;
    const UiText &text = englishTexts();
    ConversionRun run{ConversionContext{clock, processes, files, parameters, list, QStringLiteral("/opt/kv/"),
                                        [this] { ++beeps; }, [this] { ++playerStops; }},
                      englishTexts()};

    Rig() { list.currentFolder = QStringLiteral("/m/"); }

    void addFile(const QString &name, std::int64_t bytes, const QString &sampling = QStringLiteral("44100"),
                 bool checked = true)
    {
        FileRow row;
        row.info[MediaInfo::Name] = name;
        row.info[MediaInfo::Sampling] = sampling;
        row.checked = checked;
        list.rows.push_back(row);
        files.sizes[list.currentFolder + name] = bytes;
    }
    void addFiles(int count, std::int64_t bytes = 10240)
    {
        for (int i = 1; i <= count; ++i)
            addFile(QStringLiteral("f%1.wav").arg(i, 2, 10, QLatin1Char('0')), bytes);
    }
    QString target(int row) const
    {
        const QString name = run.jobs().at(static_cast<size_t>(row - 1))[EncodeJob::Name];
        return list.currentFolder + name.left(name.size() - 4) + parameters.targetExtension;
    }
    ProcessHandle handleOf(int row) const
    {
        for (const SlotState &s : run.state().slots)
            if (s.job == row)
                return s.handle;
        return -1;
    }
    // The codec of a running job writes its target and exits.
    void finish(int row, std::int64_t targetBytes)
    {
        files.sizes[target(row)] = targetBytes;
        processes.finish(handleOf(row));
    }
    const QString &status(int row) const { return run.jobs().at(static_cast<size_t>(row - 1))[EncodeJob::Status]; }
    QStringList statuses() const
    {
        QStringList s;
        for (const EncodeJob &j : run.jobs())
            s.append(j[EncodeJob::Status]);
        return s;
    }
    int running() const { return static_cast<int>(processes.running.size()); }
};

QStringList repeat(const QString &s, int n)
{
    QStringList l;
    for (int i = 0; i < n; ++i)
        l.append(s);
    return l;
}

} // namespace

TEST(ConversionRun, FourSlotsRunTenJobsAndEndWithOneBeep)
{
    Rig rig;
    rig.addFiles(10);
    ASSERT_TRUE(rig.run.PrepareJobs(true, 3, 4));
    EXPECT_EQ(rig.playerStops, 1);
    EXPECT_EQ(rig.run.state().slotCount, 4);
    EXPECT_EQ(rig.run.display().labels[2], QStringLiteral("Finished 0 of 10"));
    EXPECT_EQ(rig.run.display().indicators[3], Activity::Idle);
    EXPECT_EQ(rig.run.display().indicators[4], Activity::Hidden);
    EXPECT_TRUE(rig.run.display().timerEnabled && rig.run.display().stopEnabled && !rig.run.display().closeEnabled);

    rig.run.tick();
    EXPECT_EQ(rig.statuses(), repeat(rig.text.statusInProgress, 4) + repeat(QString(), 6));
    EXPECT_EQ(rig.processes.commandLines.front(),
              QStringLiteral(R"("/opt/kv/codec/lame" --preset extreme --silent --priority "/m/f01.wav" "/m/f01.mp3")"));
    EXPECT_EQ(rig.run.display().indicators[0], Activity::Running);

    // The second slot's job ends first: that slot, and only it, takes the fifth file.
    rig.clock.now += 1;
    rig.finish(2, 2048);
    rig.run.tick();
    const EncodeJob &second = rig.run.jobs()[1];
    EXPECT_EQ(second.columns, (std::array<QString, 6>{QStringLiteral("f02.wav"), rig.text.statusDone,
                                                      QStringLiteral("10 KB"), QStringLiteral("2 KB"),
                                                      QStringLiteral("20"), QStringLiteral("0:00:01")}));
    EXPECT_EQ(rig.run.state().slots[1].job, 5);
    EXPECT_EQ(rig.status(5), rig.text.statusInProgress);
    EXPECT_EQ(rig.run.display().labels[2], QStringLiteral("Finished 1 of 10"));
    EXPECT_EQ(rig.run.display().selectedRow, 1);

    while (rig.running() > 0) {
        EXPECT_LE(rig.running(), 4);
        rig.clock.now += 1;
        for (int row = 1; row <= 10; ++row)
            if (rig.status(row) == rig.text.statusInProgress)
                rig.finish(row, 2048);
        rig.run.tick();
    }
    EXPECT_EQ(rig.processes.commandLines.size(), 10u);
    EXPECT_EQ(rig.statuses(), repeat(rig.text.statusDone, 10));
    EXPECT_EQ(rig.run.display().labels[2], QStringLiteral("Finished 10 of 10"));
    EXPECT_EQ(rig.run.display().labels[1], QStringLiteral("0:00:00"));
    EXPECT_EQ(rig.beeps, 1);
    EXPECT_FALSE(rig.run.display().timerEnabled);
    EXPECT_TRUE(rig.run.display().closeEnabled && !rig.run.display().stopEnabled);
    EXPECT_EQ(rig.run.display().barValue, rig.run.display().barMax);
    EXPECT_TRUE(rig.run.idle());
}

TEST(ConversionRun, StopBreaksTheWaitingAndLetsTheRunningFinish)
{
    Rig rig;
    rig.addFiles(10);
    rig.run.PrepareJobs(true, 3, 4);
    rig.run.tick();
    rig.run.stop();
    EXPECT_EQ(rig.statuses(), repeat(rig.text.statusInProgress, 4) + repeat(rig.text.statusBreak, 6));
    EXPECT_TRUE(rig.run.jobs()[9].bold);
    EXPECT_FALSE(rig.run.jobs()[3].bold);
    EXPECT_EQ(rig.run.state().jobCount, 4);
    EXPECT_FALSE(rig.run.display().stopEnabled);
    EXPECT_TRUE(rig.processes.killed.empty());

    for (int row = 1; row <= 3; ++row)
        rig.finish(row, 2048);
    rig.run.tick();
    EXPECT_TRUE(rig.run.display().timerEnabled);
    EXPECT_EQ(rig.beeps, 0);
    rig.finish(4, 2048);
    rig.run.tick();
    EXPECT_FALSE(rig.run.display().timerEnabled);
    EXPECT_EQ(rig.beeps, 1);
    EXPECT_EQ(rig.run.display().labels[2], QStringLiteral("Finished 4 of 10"));
    EXPECT_EQ(rig.processes.commandLines.size(), 4u);
}

TEST(ConversionRun, TargetsRoundingToZeroKbAreErrorsAndTheRunNeverEnds)
{
    Rig rig;
    rig.addFiles(4);
    rig.run.PrepareJobs(true, 3, 4);
    rig.run.tick();
    const std::int64_t targets[] = {300, 512, 513, 600};
    for (int row = 1; row <= 4; ++row)
        rig.finish(row, targets[row - 1]);
    rig.run.tick();
    EXPECT_EQ(rig.statuses(), (QStringList{rig.text.statusError, rig.text.statusError, rig.text.statusDone,
                                           rig.text.statusDone}));
    EXPECT_TRUE(rig.run.jobs()[0].bold);
    EXPECT_EQ(rig.run.jobs()[0][EncodeJob::TargetSize], QString());
    EXPECT_EQ(rig.run.jobs()[2][EncodeJob::TargetSize], QStringLiteral("1 KB"));
    // An error leaves its slot's indicator running; a success shows idle.
    EXPECT_EQ(rig.run.display().indicators[0], Activity::Running);
    EXPECT_EQ(rig.run.display().indicators[2], Activity::Idle);

    // Neither end test is reached: not by the completions, not by a later Stop.
    rig.run.stop();
    for (int i = 0; i < 5; ++i)
        rig.run.tick();
    EXPECT_TRUE(rig.run.display().timerEnabled);
    EXPECT_FALSE(rig.run.display().closeEnabled);
    EXPECT_EQ(rig.beeps, 0);
    EXPECT_EQ(rig.run.display().labels[2], QStringLiteral("Finished 2 of 4"));
    EXPECT_TRUE(rig.run.idle());
}

TEST(ConversionRun, RunningJobCountsItsTargetScaledByThePlainSumOfPercentages)
{
    Rig rig;
    rig.addFiles(5, 10000);
    rig.run.PrepareJobs(true, 3, 3);
    rig.run.tick();
    EXPECT_FALSE(rig.run.display().remainingVisible);
    rig.clock.now += 10;
    rig.finish(1, 1000); // 10 %
    rig.run.tick();
    EXPECT_TRUE(rig.run.display().remainingVisible && rig.run.display().barVisible);
    EXPECT_DOUBLE_EQ(rig.run.state().totalSourceKb, 50000 / 1024.0);

    // Two finished at 10 % each make R = 20, so the third's 1000 target bytes stand for 5000
    // source bytes: 25000 of 50000 bytes done after 30 s gives a 60 s estimate.
    rig.clock.now += 20;
    rig.files.sizes[rig.target(3)] = 1000;
    rig.finish(2, 1000);
    rig.run.tick();
    EXPECT_DOUBLE_EQ(rig.run.display().barMax, 60);
    rig.clock.now += 1;
    rig.run.tick();
    EXPECT_EQ(rig.run.display().barValue, 31);
    EXPECT_EQ(rig.run.display().labels[0], QStringLiteral("0:00:31"));
    EXPECT_EQ(rig.run.display().labels[1], QStringLiteral("0:00:29"));
}

TEST(ConversionRun, FailedLaunchIsReadOnlyAndTheSlotKeepsItsOldHandle)
{
    Rig rig;
    rig.addFiles(4);
    rig.run.PrepareJobs(true, 3, 2);
    rig.run.tick();
    const ProcessHandle first = rig.handleOf(1);
    rig.finish(1, 2048);
    rig.processes.failLaunches = true;
    rig.run.tick();
    EXPECT_EQ(rig.status(3), rig.text.statusReadOnly);
    EXPECT_FALSE(rig.run.jobs()[2].bold);
    EXPECT_EQ(rig.run.state().slots[0].job, 3);
    EXPECT_EQ(rig.run.state().slots[0].handle, first);

    rig.processes.failLaunches = false;
    rig.run.tick();
    EXPECT_EQ(rig.status(4), rig.text.statusInProgress);
    EXPECT_NE(rig.run.state().slots[0].handle, first);
    rig.finish(2, 2048);
    rig.finish(4, 2048);
    rig.run.tick();
    rig.run.tick();
    EXPECT_EQ(rig.run.display().labels[2], QStringLiteral("Finished 3 of 4"));
    EXPECT_TRUE(rig.run.display().timerEnabled); // a "Read only" job keeps the run from its end
}

TEST(ConversionRun, ExistingTargetIsDeletedOrMarkedReadOnlyAndLaunchedAnyway)
{
    Rig rig;
    rig.addFiles(2);
    rig.files.sizes[QStringLiteral("/m/f01.mp3")] = 99;
    rig.files.sizes[QStringLiteral("/m/f02.mp3")] = 99;
    rig.files.readOnly.insert(QStringLiteral("/m/f02.mp3"));
    rig.run.PrepareJobs(true, 3, 2);
    rig.run.tick();
    EXPECT_EQ(rig.files.removed, std::vector<QString>{QStringLiteral("/m/f01.mp3")});
    EXPECT_EQ(rig.statuses(), repeat(rig.text.statusInProgress, 2));
    EXPECT_FALSE(rig.run.jobs()[0].bold);
    EXPECT_TRUE(rig.run.jobs()[1].bold);
    EXPECT_EQ(rig.processes.commandLines.size(), 2u);
}

TEST(ConversionRun, DoubleQuoteInANameFailsToLaunch)
{
    Rig rig;
    rig.addFile(QStringLiteral("say \"hi\".wav"), 10240);
    rig.run.PrepareJobs(true, 3, 1);
    rig.run.tick();
    EXPECT_EQ(rig.status(1), rig.text.statusReadOnly);
    EXPECT_TRUE(rig.processes.commandLines.empty());
}

TEST(ConversionRun, ClockPassingMidnightKeepsCountingForward)
{
    {
        // Start and now share one precision: the same moment never looks like a day later.
        Rig sameMoment;
        sameMoment.addFiles(1);
        sameMoment.clock.now = 36000.123456789;
        sameMoment.run.PrepareJobs(true, 3, 1);
        sameMoment.run.tick();
        EXPECT_EQ(sameMoment.run.display().labels[0], QStringLiteral("0:00:00"));
    }
    Rig rig;
    rig.addFiles(1);
    rig.clock.now = 86395;
    rig.run.PrepareJobs(true, 3, 1);
    rig.clock.now = 86399;
    rig.run.tick();
    rig.clock.now = 5;
    rig.run.tick();
    EXPECT_EQ(rig.run.display().labels[0], QStringLiteral("0:00:10"));
    rig.clock.now = 7;
    rig.finish(1, 2048);
    rig.run.tick();
    EXPECT_EQ(rig.run.jobs()[0][EncodeJob::Time], QStringLiteral("0:00:08"));
}

TEST(ConversionRun, RemainingTimeShowsAfterTheFirstDoneOnlyWithMoreJobsThanSlots)
{
    const struct
    {
        int jobs, processors;
        bool stopFirst, visible;
    } cases[] = {
        {4, 4, false, false},
        {5, 4, false, true},
        {5, 4, true, false}, // Stop lowered the job count to the four running
        {2, 1, false, true},
    };
    for (const auto &c : cases) {
        Rig rig;
        rig.addFiles(c.jobs);
        rig.run.PrepareJobs(true, 3, c.processors);
        rig.run.tick();
        if (c.stopFirst)
            rig.run.stop();
        EXPECT_FALSE(rig.run.display().remainingVisible);
        rig.finish(1, 2048);
        rig.run.tick();
        EXPECT_EQ(rig.run.display().remainingVisible, c.visible) << c.jobs << " " << c.processors;
        EXPECT_EQ(rig.run.display().barVisible, c.visible);
    }
}

TEST(PrepareJobs, SkipAndSelectionRulesSizesAndSlotCount)
{
    const QString cbr192 = QStringLiteral("--preset cbr 192 --silent --priority");
    const QString cbr160 = QStringLiteral("--preset cbr 160 --silent --priority");
    const QString wav = QStringLiteral(".wav");
    const struct
    {
        RunParameters parameters;
        int cbrIndex;
        bool allFiles;
        int processors;
        QStringList expected; // job names; empty: no run
        int slots;
    } cases[] = {
        {{QStringLiteral("mppenc"), QString(), wav, QStringLiteral(".mpc")}, 3, true, 8,
         {QStringLiteral("a44.wav"), QStringLiteral("d44.wav")}, 8},
        {{QStringLiteral("lame"), cbr192, wav, QStringLiteral(".mp3")}, 3, true, 2,
         {QStringLiteral("a44.wav"), QStringLiteral("b48.wav"), QStringLiteral("c32.wav"), QStringLiteral("d44.wav")}, 2},
        {{QStringLiteral("lame"), cbr160, wav, QStringLiteral(".mp3")}, 4, true, 2,
         {QStringLiteral("a44.wav"), QStringLiteral("b48.wav"), QStringLiteral("c32.wav"), QStringLiteral("d44.wav"),
          QStringLiteral("e22.wav")}, 2},
        {{QStringLiteral("lame"), mp3Options, wav, QStringLiteral(".mp3")}, 3, false, 3,
         {QStringLiteral("a44.wav"), QStringLiteral("e22.wav")}, 3},
        {{QStringLiteral("lame"), QStringLiteral("--decode"), QStringLiteral(".mp3"), wav}, 3, true, 8,
         {QStringLiteral("a44.wav"), QStringLiteral("b48.wav"), QStringLiteral("c32.wav"), QStringLiteral("d44.wav"),
          QStringLiteral("e22.wav")}, 1},
    };
    for (const auto &c : cases) {
        Rig rig;
        rig.parameters = c.parameters;
        rig.addFile(QStringLiteral("a44.wav"), 1536, QStringLiteral("44100"), true);
        rig.addFile(QStringLiteral("b48.wav"), 1536, QStringLiteral("48000"), false);
        rig.addFile(QStringLiteral("c32.wav"), 1536, QStringLiteral("32000"), false);
        rig.addFile(QStringLiteral("d44.wav"), 1536, QStringLiteral("44100"), false);
        rig.addFile(QStringLiteral("e22.wav"), 1536, QStringLiteral("22050"), true);
        rig.files.sizes.erase(QStringLiteral("/m/d44.wav"));
        EXPECT_TRUE(rig.run.PrepareJobs(c.allFiles, c.cbrIndex, c.processors));
        QStringList names;
        for (const EncodeJob &j : rig.run.jobs()) {
            names.append(j[EncodeJob::Name]);
            EXPECT_EQ(j[EncodeJob::SourceSize], j[EncodeJob::Name] == QLatin1String("d44.wav") ? QStringLiteral("0 KB")
                                                                                              : QStringLiteral("2 KB"));
        }
        EXPECT_EQ(names, c.expected) << c.parameters.options.toStdString();
        EXPECT_EQ(rig.run.state().slotCount, c.slots);
    }

    Rig none;
    none.addFile(QStringLiteral("a.wav"), 1536, QStringLiteral("44100"), false);
    EXPECT_FALSE(none.run.PrepareJobs(false, 3, 4));
    EXPECT_FALSE(none.run.display().frameVisible || none.run.display().timerEnabled);
    EXPECT_EQ(none.playerStops, 0);
}
