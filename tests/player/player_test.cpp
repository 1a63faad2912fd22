#include <gtest/gtest.h>

#include <map>
#include <set>

#include "browser/filelist.h"
#include "platform/clock.h"
#include "player/player.h"
#include "support/qtprinters.h"

using namespace kv;
using namespace Qt::StringLiterals;

namespace {

// A player over a list in /m/; a started process runs until the test ends it or the player kills it.
struct Rig : Clock, Processes
{
    double now = 36000;
    FileListState list{.pattern = u"*.mp3"_s, .currentFolder = u"/m/"_s};
    std::vector<std::pair<QString, ChildEnvironment>> started;
    std::set<ProcessHandle> running;
    std::vector<ProcessHandle> killed;
    std::vector<ProcessHandle> released; // ended ones only: a running process stays known
    std::set<ProcessHandle> zombies;     // ended by themselves and not yet asked about
    bool failStarts = false;
    int selected = -1;
    std::vector<int> selections, scrolls;
    Player player{PlayerContext{*this, *this, list, u"/opt/kv/"_s, [this] { return selected; }, {},
                                [this](int r) { selections.push_back(r); }, [this](int r) { scrolls.push_back(r); }}};

    explicit Rig(const QString &pattern, std::initializer_list<const char *> durations = {"0:00:03", "0:00:05", "0:00:02"})
    {
        list.pattern = pattern;
        int i = 0;
        for (const char *d : durations) {
            FileRow row;
            row.info[MediaInfo::Name] = u"%1.%2"_s.arg(QChar(u'a' + i++)).arg(pattern.mid(2));
            row.info[MediaInfo::Duration] = QLatin1String(d);
            list.rows.push_back(row);
        }
    }

    double secondsSinceMidnight() override { return now; }
    std::optional<ProcessHandle> start(const QString &commandLine, ChildEnvironment env) override
    {
        if (failStarts)
            return std::nullopt;
        started.emplace_back(commandLine, env);
        const auto h = static_cast<ProcessHandle>(started.size());
        running.insert(h);
        return h;
    }
    bool hasEnded(ProcessHandle h) override { return zombies.erase(h), !running.count(h); }
    void kill(ProcessHandle h) override
    {
        if (running.erase(h))
            killed.push_back(h);
    }
    std::optional<ProcessEnd> endOf(ProcessHandle) override { return std::nullopt; }
    void release(ProcessHandle h) override
    {
        if (h != 0 && !running.count(h))
            released.push_back(h);
    }
    int processorCount() override { return 1; }

    // The last process started ends by itself.
    void endLast()
    {
        running.erase(static_cast<ProcessHandle>(started.size()));
        zombies.insert(static_cast<ProcessHandle>(started.size()));
    }
    // Ticks of 100 ms for the given seconds, counted in tenths so no error adds up.
    void run(double seconds)
    {
        const double base = now;
        for (int i = 1; i <= static_cast<int>(seconds * 10 + 0.5); ++i) {
            now = base + i / 10.0;
            if (player.display().timerEnabled)
                player.tick();
        }
    }
    std::vector<int> boldRows() const
    {
        std::vector<int> rows;
        for (size_t i = 0; i < list.rows.size(); ++i)
            if (list.rows[i].bold)
                rows.push_back(static_cast<int>(i) + 1);
        return rows;
    }
    QString lastFile() const
    {
        const QString c = started.empty() ? QString() : started.back().first;
        return c.mid(c.lastIndexOf(u'/') + 1).chopped(1);
    }
    // Nothing plays: no timer, title, time, bar or bold row.
    bool cleared() const
    {
        const PlayerDisplay &d = player.display();
        return !d.timerEnabled && d.lblPlay.isEmpty() && d.lblPlayTime == u"0:00:00"_s && d.progressValue == 0 && boldRows().empty();
    }
};

// WAV rows go to the system's player at once and end by the clock against their listed duration;
// a new row cuts the last sound off.
TEST(Player, WavRowsEndByTheirListedDuration)
{
    Rig rig(u"*.wav"_s, {"0:00:02", "0:00:00", "0:00:01"});
    rig.selected = 0;
    rig.player.click(Player::Play);
    ASSERT_EQ(rig.started.size(), 1u);
    EXPECT_EQ(rig.started[0], std::make_pair(uR"("/usr/bin/aplay" -q "/m/a.wav")"_s, ChildEnvironment::Inherited));
    rig.endLast(); // the sound itself is shorter: silence until the listed time is up
    rig.run(1.4);
    EXPECT_EQ(rig.started.size(), 1u);
    EXPECT_TRUE(rig.zombies.empty()) << "the ended sound is reaped while the row's time runs on";
    rig.run(0.1); // 1.5 s rounds to 2: the bar is full
    ASSERT_EQ(rig.started.size(), 2u);
    EXPECT_EQ(rig.player.playRow(), 2);
    EXPECT_EQ(rig.player.display().progressMax, 1) << "a file of no seconds still has a bar of one";
    rig.run(0.5); // 0.5 rounds to 0, not yet the end
    EXPECT_EQ(rig.started.size(), 2u);
    rig.run(0.1);
    ASSERT_EQ(rig.started.size(), 3u);
    EXPECT_EQ(rig.killed, std::vector<ProcessHandle>{2}) << "the second sound still played and was cut off";
    EXPECT_EQ(rig.released, (std::vector<ProcessHandle>{1, 2}));
}

// The elapsed time of a row that plays across midnight goes on counting.
TEST(Player, ElapsedTimeCountsOnAcrossMidnight)
{
    Rig rig(u"*.mp3"_s, {"1:02:05"});
    rig.now = 86399.5;
    rig.selected = 0;
    rig.player.click(Player::Play);
    rig.run(0.1);
    ASSERT_EQ(rig.started.size(), 1u);
    EXPECT_EQ(rig.player.display().progressMax, 3725);
    for (int i = 0; i < 5; ++i) {
        rig.now = rig.now + 0.1 >= 86400 ? rig.now + 0.1 - 86400 : rig.now + 0.1;
        rig.player.tick();
    }
    EXPECT_EQ(rig.player.display().lblPlayTime, u"0:00:00"_s);
    rig.now = 3724.6;
    rig.player.tick();
    EXPECT_EQ(rig.player.display().lblPlayTime, u"1:02:05"_s);
    EXPECT_EQ(rig.player.display().progressValue, 3725);
}

// Previous and Next move by one row and do nothing at the ends of the list, nor when clicked again
// before the tick that starts the row; Stop ends the decoder and clears the display.
TEST(Player, PreviousNextAndStop)
{
    Rig rig(u"*.mpc"_s);
    rig.selected = 1;
    rig.player.click(Player::Play);
    rig.run(0.1);
    rig.player.click(Player::Next);
    EXPECT_EQ(rig.killed, std::vector<ProcessHandle>{1});
    EXPECT_TRUE(rig.boldRows().empty());
    rig.run(0.1);
    EXPECT_EQ(rig.player.playRow(), 3);
    const struct { int button, clicks; const char *file; size_t started; } steps[] = {
        {Player::Next, 1, "c.mpc", 2}, {Player::Previous, 2, "b.mpc", 3}, {Player::Previous, 2, "a.mpc", 4}, {Player::Previous, 1, "a.mpc", 4}};
    for (const auto &step : steps) {
        for (int i = 0; i < step.clicks; ++i)
            rig.player.click(step.button);
        rig.run(0.1);
        EXPECT_EQ(rig.lastFile(), QLatin1String(step.file));
        EXPECT_EQ(rig.started.size(), step.started);
    }
    EXPECT_EQ(rig.released, (std::vector<ProcessHandle>{1, 2, 3})) << "each decoder is let go once the next one starts";

    rig.run(1.2);
    rig.player.click(Player::Stop);
    EXPECT_EQ(rig.killed.back(), 4);
    EXPECT_TRUE(rig.cleared());
    rig.run(1);
    EXPECT_EQ(rig.started.size(), 4u);

    // WAV: Previous and Next start the row at once.
    Rig wav(u"*.wav"_s);
    wav.selected = 0;
    wav.player.click(Player::Play);
    wav.player.click(Player::Next);
    EXPECT_EQ(wav.lastFile(), u"b.wav"_s);
    wav.player.click(Player::Previous);
    EXPECT_EQ(wav.lastFile(), u"a.wav"_s);
    EXPECT_EQ(wav.killed, (std::vector<ProcessHandle>{1, 2}));
}

// Play with nothing selected, an empty list, a failed start and a duration the player cannot
// read each leave the player in its designed state.
TEST(Player, FailuresLeaveTheDesignedState)
{
    for (const char *pattern : {"*.mp3", "*.wav"}) {
        Rig rig{QLatin1String(pattern)};
        rig.player.click(Player::Play); // no row selected
        rig.run(0.3);
        EXPECT_TRUE(rig.started.empty()) << pattern;
        EXPECT_TRUE(rig.cleared()) << pattern;
    }

    Rig empty(u"*.mp3"_s, {});
    for (int button : {-1, 0, 1, 2, 3, 4})
        empty.player.click(button);
    EXPECT_FALSE(empty.player.display().timerEnabled);

    for (const char *pattern : {"*.mp3", "*.wav"}) {
        Rig rig{QLatin1String(pattern)};
        rig.failStarts = true;
        rig.selected = 1;
        rig.player.click(Player::Play);
        rig.run(0.3);
        EXPECT_EQ(rig.player.display().lblPlay, u"PlayStart Failed"_s) << pattern;
        EXPECT_FALSE(rig.player.display().timerEnabled) << pattern;
        EXPECT_EQ(rig.boldRows(), std::vector<int>{2}) << "the row stays bold";
        EXPECT_EQ(rig.selections, std::vector<int>{1});
    }

    // Without two colons the title shows and the file plays, but nothing counts or follows.
    for (const char *duration : {"3:41", "", "0:0x:01", "0:00:40000"}) {
        Rig rig(u"*.mp3"_s, {duration, "0:00:01"});
        rig.selected = 0;
        rig.player.click(Player::Play);
        rig.run(0.1);
        EXPECT_EQ(rig.started.size(), 1u) << duration;
        EXPECT_EQ(rig.player.display().lblPlay, u"a.mp3 ("_s + QLatin1String(duration) + u')');
        EXPECT_FALSE(rig.player.display().timerEnabled) << duration;
        EXPECT_TRUE(rig.running.count(1)) << "playback goes on";
    }
}

} // namespace
