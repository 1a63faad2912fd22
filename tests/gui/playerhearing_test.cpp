// The player of the window heard through a sound server of its own: the real codec entries play
// files of different pitches, and the recording of the server tells which file played when.
#include <chrono>
#include <cstdio>

#include <gtest/gtest.h>

#include <QToolButton>
#include <QTreeView>

#include "player/player.h"
#include "sound/soundrecorder.h"
#include "support/qtprinters.h"
#include "windowrig.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The window over a folder of tone files, with the codec entries the build made.
struct Hearing : ProcessRig
{
    QString music = dir.path() + u"/music/"_s;
    SoundRecorder recorder{{440, 660, 990, 1480}};

    // Files named so that the list's order is the order given: "1 tone.mp3", "2 tone.mp3", ...
    Hearing(const char *extension, std::initializer_list<int> pitches)
    {
        QDir().mkpath(music);
        QDir().mkpath(program + u"codec"_s);
        for (const QString &entry : QDir(QStringLiteral(KV_BIN_DIR "/codec")).entryList(QDir::Files))
            QFile::copy(QStringLiteral(KV_BIN_DIR "/codec/") + entry, program + u"codec/"_s + entry);
        const QString kind = QLatin1String(extension);
        int i = 1;
        for (const int pitch : pitches)
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/sound/tone-%1.%2").arg(pitch).arg(kind), music + u"%1 tone.%2"_s.arg(i++).arg(kind));
        EXPECT_EQ(open(environment(), music), StartEnd::Running);
        const int show[] = {ShowWav, ShowMp3, ShowOgg, ShowMpc};
        toolbar(show[QStringList{u"wav"_s, u"mp3"_s, u"ogg"_s, u"mpc"_s}.indexOf(kind)])->trigger();
    }

    // Presses a player button and gives the recording position of that moment.
    std::int64_t press(int button)
    {
        const std::int64_t at = recorder.samplePosition();
        w<QToolButton>(u"imPlay_%1"_s.arg(button))->click();
        return at;
    }
    // Selects the first row and presses Play.
    std::int64_t playFromTheTop()
    {
        auto *list = w<QTreeView>("lstMain");
        list->selectionModel()->setCurrentIndex(list->model()->index(0, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        return press(Player::Play);
    }
    // The files heard, one segment each: a sound cut off mid-block leaves a click of no pitch,
    // and a busy machine may drop a few blocks of a file; neither is a file of its own.
    std::vector<SoundSegment> filesHeard(std::int64_t from, std::int64_t to) const
    {
        std::vector<SoundSegment> out;
        for (const SoundSegment &s : sounds(recorder.timeline(from, to))) {
            if (s.pitch == SoundSegment::Other && s.end - s.start <= 0.05)
                continue;
            if (!out.empty() && out.back().pitch == s.pitch && s.start - out.back().end < 0.2)
                out.back().end = s.end;
            else
                out.push_back(s);
        }
        return out;
    }
    std::vector<int> pitchesHeard(std::int64_t from, std::int64_t to) const
    {
        std::vector<int> out;
        for (const SoundSegment &s : filesHeard(from, to))
            out.push_back(s.pitch);
        return out;
    }
    // The end of the first silence of half a second after `from`.
    std::optional<std::int64_t> waitForEnd(std::int64_t from) { return recorder.waitForSilence(from, 500ms, 10s); }
};

void report(const char *what, double ms) { std::printf("%-40s %5.0f ms\n", what, ms); }

} // namespace

// A list of three MP3 files played from the first: each file once, in list order, whole, with
// little silence between them; Play to the first sound within 300 ms.
TEST(PlayerHearing, RowsPlayInListOrderWithShortGaps)
{
    Hearing l("mp3", {440, 660, 990});
    ASSERT_EQ(l.recorder.error(), "");
    const std::int64_t pressed = l.playFromTheTop();
    const std::optional<std::int64_t> first = l.recorder.waitForSound(pressed, 3s);
    ASSERT_TRUE(first) << "nothing was heard";
    // After the first sound, silence that lasts means the list is over.
    const std::optional<std::int64_t> end = l.waitForEnd(*first + l.recorder.samplesIn(2500ms));
    ASSERT_TRUE(end);
    const std::vector<SoundSegment> heard = l.filesHeard(pressed, *end);
    ASSERT_EQ(l.pitchesHeard(pressed, *end), (std::vector<int>{440, 660, 990})) << ::testing::PrintToString(heard);
    for (const SoundSegment &s : heard)
        EXPECT_NEAR(s.end - s.start, 1.0, 0.06) << s;
    const double toSound = l.recorder.milliseconds(*first - pressed);
    EXPECT_LE(toSound, 300);
    report("Play to the first sound", toSound);
    for (size_t i = 1; i < heard.size(); ++i) {
        const double gap = 1000 * (heard[i].start - heard[i - 1].end);
        EXPECT_LE(gap, 300) << i;
        report("silence between two rows", gap);
    }
}

// Every kind plays through its own entry: Ogg Vorbis, Musepack (stream version 8) and WAV, two
// files each, in order.
TEST(PlayerHearing, EveryKindPlaysThroughItsEntry)
{
    const struct { const char *extension; int a, b; } kinds[] = {{"ogg", 660, 990}, {"mpc", 990, 1480}, {"wav", 1480, 440}};
    for (const auto &k : kinds) {
        SCOPED_TRACE(k.extension);
        Hearing l(k.extension, {k.a, k.b});
        ASSERT_EQ(l.recorder.error(), "");
        const std::int64_t pressed = l.playFromTheTop();
        const std::optional<std::int64_t> first = l.recorder.waitForSound(pressed, 3s);
        ASSERT_TRUE(first);
        const std::optional<std::int64_t> end = l.waitForEnd(*first + l.recorder.samplesIn(1500ms));
        ASSERT_TRUE(end);
        EXPECT_EQ(l.pitchesHeard(pressed, *end), (std::vector<int>{k.a, k.b}))
            << ::testing::PrintToString(l.recorder.timeline(pressed, *end)) << " pressed at " << l.recorder.seconds(pressed);
        report((std::string(k.extension) + ": Play to the first sound").c_str(), l.recorder.milliseconds(*first - pressed));
    }
}
