// The players of the built codec folder, started as the program starts them, heard through the
// private sound server: each plays its own file whole, in turn, and a group kill silences it.
#include <chrono>
#include <cstdio>
#include <thread>

#include <gtest/gtest.h>
#include <poll.h>

#include "platform/posix/posixprocesses.h"
#include "sound/soundrecorder.h"

namespace kv::test {
namespace {

using namespace std::chrono_literals;

struct Player
{
    const char *name;
    QString program; // absolute path
    QString option;  // before the file
    int pitch;
    QString file;
    ChildEnvironment environment;
};

QString codec(const char *entry) { return QStringLiteral(KV_BIN_DIR "/codec/") + QLatin1String(entry); }
QString tone(int pitch, const char *extension)
{
    return QStringLiteral(KV_TEST_DATA_DIR "/sound/tone-%1.%2").arg(pitch).arg(QLatin1String(extension));
}

// Each plays a pitch of its own, so what is heard tells which one played. The codec entries get
// no environment at all; WAV goes to the system's player with the program's own.
const std::vector<Player> &players()
{
    static const std::vector<Player> all{
        {"madplay", codec("madplay"), QStringLiteral("-Q"), 440, tone(440, "mp3"), ChildEnvironment::Empty},
        {"oggdec", codec("oggdec"), QStringLiteral("-p"), 660, tone(660, "ogg"), ChildEnvironment::Empty},
        {"mppdec", codec("mppdec"), QStringLiteral("--silent"), 990, tone(990, "mpc"), ChildEnvironment::Empty},
        {"aplay", QStringLiteral("/usr/bin/aplay"), QStringLiteral("-q"), 1480, tone(1480, "wav"), ChildEnvironment::Inherited},
    };
    return all;
}

std::string playerName(const ::testing::TestParamInfo<Player> &info) { return info.param.name; }
void PrintTo(const Player &player, std::ostream *os) { *os << player.name; }

struct Playing : ::testing::Test
{
    SoundRecorder recorder{{440, 660, 990, 1480}};
    PosixProcesses processes;

    void SetUp() override { ASSERT_EQ(recorder.error(), "") << "no recording"; }

    ProcessHandle start(const Player &player)
    {
        const QString line = quoteArgument(player.program) + QLatin1Char(' ') + player.option + QLatin1Char(' ')
                             + quoteArgument(player.file);
        const std::optional<ProcessHandle> handle = processes.start(line, player.environment);
        EXPECT_TRUE(handle) << player.name;
        return handle.value_or(0);
    }

    // The recording position at which the process is seen to end, woken by its exit at once.
    std::optional<std::int64_t> waitForExit(ProcessHandle handle, std::chrono::milliseconds timeout)
    {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        for (;;) {
            PosixProcesses::clearExitEvents();
            if (processes.hasEnded(handle))
                return recorder.samplePosition();
            if (std::chrono::steady_clock::now() >= deadline)
                return std::nullopt;
            pollfd exits{PosixProcesses::exitEventDescriptor(), POLLIN, 0};
            ::poll(&exits, 1, 5);
        }
    }
};

TEST_F(Playing, EachPlayerPlaysItsWholeFileInTurn)
{
    struct Heard
    {
        std::int64_t started, ended;
    };
    std::vector<Heard> heard;
    for (const Player &player : players()) {
        const std::int64_t started = recorder.samplePosition();
        const ProcessHandle handle = start(player);
        const std::optional<std::int64_t> ended = waitForExit(handle, 10s);
        ASSERT_TRUE(ended) << player.name << " did not end";
        const std::optional<ProcessEnd> end = processes.endOf(handle);
        ASSERT_TRUE(end);
        EXPECT_FALSE(end->failed()) << player.name << ": " << end->errorTail.toStdString();
        heard.push_back({started, *ended});
    }
    ASSERT_TRUE(recorder.waitForPosition(heard.back().ended + recorder.samplesIn(100ms), 2s));

    const std::vector<SoundSegment> sounds = kv::test::sounds(recorder.timeline(heard.front().started, heard.back().ended));
    std::vector<int> pitches;
    for (const SoundSegment &s : sounds)
        pitches.push_back(s.pitch);
    ASSERT_EQ(pitches, (std::vector<int>{440, 660, 990, 1480})) << ::testing::PrintToString(sounds);

    const double block = recorder.listening().blockSeconds;
    for (std::size_t i = 0; i < players().size(); ++i) {
        const Player &player = players()[i];
        const SoundSegment &sound = sounds[i];
        // Each tone is a second long; a player that stops early or repeats is heard.
        EXPECT_NEAR(sound.end - sound.start, 1.0, 0.06) << player.name;
        // Heard while its process ran, not before it started or after it ended (segments end
        // on block boundaries).
        EXPECT_GE(sound.start + block, recorder.seconds(heard[i].started)) << player.name;
        EXPECT_LE(sound.end - block, recorder.seconds(heard[i].ended)) << player.name;

        const std::optional<std::int64_t> first = recorder.firstSoundAfter(heard[i].started);
        const std::optional<std::int64_t> last = recorder.lastSoundBefore(heard[i].ended);
        ASSERT_TRUE(first && last) << player.name;
        std::printf("%-8s start to sound %4.0f ms, sound %4.0f ms, end of sound to exit %4.0f ms\n", player.name,
                    recorder.milliseconds(*first - heard[i].started), recorder.milliseconds(*last - *first),
                    recorder.milliseconds(heard[i].ended - *last));
    }
}

struct Killing : Playing, ::testing::WithParamInterface<Player>
{
};

TEST_P(Killing, GroupKillSilencesThePlayerWithinATenthOfASecond)
{
    const Player &player = GetParam();
    const ProcessHandle handle = start(player);
    const std::optional<std::int64_t> sound = recorder.waitForSound(recorder.samplePosition(), 3s);
    ASSERT_TRUE(sound) << player.name << " was not heard";
    // Well inside the second the tone lasts.
    ASSERT_TRUE(recorder.waitForPosition(*sound + recorder.samplesIn(300ms), 2s));
    ASSERT_FALSE(processes.hasEnded(handle));

    const std::int64_t killed = recorder.samplePosition();
    processes.kill(handle);
    // Silent for longer than what was left of the tone: nothing of the pipeline plays on.
    const std::optional<std::int64_t> silent = recorder.waitForSilence(killed, 800ms, 3s);
    ASSERT_TRUE(silent) << player.name << " went on playing";
    EXPECT_LE(recorder.milliseconds(*silent - killed), 100.0) << player.name;
    std::printf("%-8s kill to silence %4.0f ms\n", player.name, recorder.milliseconds(*silent - killed));
}

INSTANTIATE_TEST_SUITE_P(Players, Killing, ::testing::ValuesIn(players()), playerName);

} // namespace
} // namespace kv::test
