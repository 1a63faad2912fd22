// The player of the window heard through a sound server of its own: the real codec entries play
// files of different pitches, and the recording of the server tells which file played when.
#include <algorithm>
#include <cstdio>

#include "player/player.h"
#include "sound/soundrecorder.h"
#include "windowrig.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

// Each kind plays through its own entry (Musepack of stream version 8), its rows once each, in
// list order, whole. MP3, whose rows are timed by their decoder's end, also has to keep Play to
// the first sound and the silence between two rows within 300 ms.
TEST(PlayerHearing, EveryKindPlaysItsRowsInListOrder)
{
    const struct { QString kind; std::vector<int> pitches; } kinds[] = {
        {u"mp3"_s, {440, 660, 990}}, {u"ogg"_s, {660, 990}}, {u"mpc"_s, {990, 1480}}, {u"wav"_s, {1480, 440}}};
    for (const auto &k : kinds) {
        SCOPED_TRACE(k.kind.toStdString());
        ProcessRig l;
        SoundRecorder recorder({440, 660, 990, 1480}, (l.dir.path() + u"/sound.raw"_s).toStdString());
        ASSERT_EQ(recorder.error, "");
        // The codec entries the build made, and files named so that the list's order is theirs.
        const QString music = l.dir.path() + u"/music/"_s;
        QDir().mkpath(music);
        QDir().mkpath(l.program);
        QFile::link(QStringLiteral(KV_BIN_DIR "/codec"), l.program + u"codec"_s);
        for (size_t i = 0; i < k.pitches.size(); ++i)
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/sound/tone-%1.%2").arg(k.pitches[i]).arg(k.kind),
                        music + u"%1 tone.%2"_s.arg(i + 1).arg(k.kind));
        ASSERT_EQ(l.open(l.environment(), music), StartEnd::Running);
        l.toolbar(ShowWav + int(QStringList{u"wav"_s, u"mp3"_s, u"ogg"_s, u"mpc"_s}.indexOf(k.kind)))->trigger();

        l.w<QTreeView>("lstMain")->setCurrentIndex(l.w<QTreeView>("lstMain")->model()->index(0, 0));
        const double pressed = recorder.now();
        l.w<QToolButton>(u"imPlay_%1"_s.arg(Player::Play))->click();
        // Half a second of silence after a sound that began once all but the last row must have
        // played ends the list.
        std::vector<SoundSegment> heard;
        EXPECT_TRUE(l.waitFor([&] {
            heard = recorder.sounds(pressed);
            return !heard.empty() && heard.back().start > heard[0].start + double(k.pitches.size()) - 1.5
                   && recorder.now() > heard.back().end + 0.5;
        }, 15000));
        std::vector<int> pitches;
        std::ranges::transform(heard, std::back_inserter(pitches), &SoundSegment::pitch);
        ASSERT_EQ(pitches, k.pitches) << ::testing::PrintToString(heard) << " pressed at " << pressed << " s";
        const double toSound = 1000 * (heard[0].start - pressed);
        const QString what = k.kind == u"mp3"_s ? u"Play to the first sound"_s : k.kind + u": Play to the first sound"_s;
        std::printf("%-40s %5.0f ms\n", what.toUtf8().constData(), toSound);
        if (k.kind != u"mp3"_s)
            continue;
        EXPECT_LE(toSound, 300);
        EXPECT_NEAR(heard[0].end - heard[0].start, 1.0, 0.06) << heard[0];
        for (size_t i = 1; i < heard.size(); ++i) {
            EXPECT_NEAR(heard[i].end - heard[i].start, 1.0, 0.06) << heard[i];
            const double gap = 1000 * (heard[i].start - heard[i - 1].end);
            EXPECT_LE(gap, 300) << i;
            std::printf("%-40s %5.0f ms\n", "silence between two rows", gap);
        }
    }
}
