#include <algorithm>
#include <csignal>

#include <unistd.h>

#include "player/player.h"
#include "support/recorded.h"
#include "windowrig.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

namespace {

// Every codec entry is this script. It logs its process id, name, option and file, then acts by
// the file's name: fail* fails at once, long* plays for 20 s, family* starts a child of its own
// and waits for it, others play for 0.4 s.
const char playerScript[] = R"(#!/bin/sh
PATH=/usr/bin:/bin
eval "file=\${$#}"
echo "$$ $(basename "$0") [$1] [$file]" >> '%1'
case $(basename "$file") in
fail*) exit 1 ;;
long*) sleep 20 ;;
family*) sleep 20 & echo "$! child" >> '%1'; wait ;;
*) sleep 0.4 ;;
esac
)";

// The process a line of the log names is alive, and not merely waiting to be reaped.
bool alive(const QString &logLine)
{
    const QByteArray stat = readAll(u"/proc/%1/stat"_s.arg(logLine.section(u' ', 0, 0)));
    return stat.contains(')') && !stat.sliced(stat.lastIndexOf(')')).startsWith(") Z");
}

// The window open on rows of the MP3 fixture (one second) or, for names ending in .wav, the WAV
// one, with the script as every entry.
struct Session : ProcessRig
{
    QString music = dir.path() + u"/music/"_s, log = dir.path() + u"/player.log"_s;

    explicit Session(const QList<QByteArray> &names)
    {
        QDir().mkpath(music);
        installCodecs(program, QString::fromLatin1(playerScript).arg(log).toUtf8());
        for (const QByteArray &name : names)
            writeFile(QFile::encodeName(music) + name,
                      readAll(name.endsWith(".wav") ? KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"_L1 : KV_TEST_DATA_DIR "/mp3/mono.mp3"_L1));
        EXPECT_EQ(open(environment(), music), StartEnd::Running);
    }

    QTreeView *list() const { return w<QTreeView>("lstMain"); }
    void click(int button) const { w<QToolButton>(u"imPlay_%1"_s.arg(button))->click(); }
    // The player as the user sees it.
    QString look() const
    {
        QStringList bold, selected;
        for (int r = 0; r < list()->model()->rowCount(); ++r) {
            if (list()->model()->index(r, 0).data(Qt::FontRole).value<QFont>().bold())
                bold.append(QString::number(r));
            if (list()->selectionModel()->isRowSelected(r))
                selected.append(QString::number(r));
        }
        return u"%1 | bold %2 | selected %3 | timer %4"_s.arg(w<QLabel>("lblPlay")->text(), bold.join(u','), selected.join(u','),
                                                              w<QTimer>("tmrPlay")->isActive() ? u"on"_s : u"off"_s);
    }
    void select(int row) const { list()->setCurrentIndex(list()->model()->index(row, 0)); }
    QStringList logLines() const { return QString::fromUtf8(readAll(log)).split(u'\n', Qt::SkipEmptyParts); }
    // The names of the files the entries were started on.
    QStringList played() const { return logLines().filter(music).replaceInStrings(QRegularExpression(u".*/|]$"_s), QString()); }
    // Gone within a second: a killed process may take a moment to be scheduled and die.
    bool goneSoon(const QStringList &which) const { return waitFor([&] { return std::ranges::none_of(which, alive); }, 1000); }
    bool waitPlayed(int count) const { return waitFor([&] { return played().size() >= count; }); }
};

} // namespace

// Play from the selected row of a list longer than the window: each row plays in turn, bold and
// selected, its title shown, brought into view with the one after it, started by the end of the
// decoder before it (failing ones too), not at the timer's next tick; awkward names reach the
// decoder byte for byte, and one like markup is shown, and read out, as it stands; then the player
// is idle with its timer off. A decoder that cannot start says so and stops there.
TEST(PlayerFrame, RowsPlayInTurnFromTheSelectedOneWhateverTheirNames)
{
    // Sorted after the sixty rows whose names start with two blanks.
    const QByteArray awkward[] = {"fail1.mp3", "fail2.mp3", "<b>bold.mp3", "-lead.mp3", "two  blanks.mp3", "say \"hi\" it's.mp3",
                                  "\xcf\xf0\xe8\xe2\xe5\xf2.mp3", " blank first.mp3"};
    QList<QByteArray> names{std::begin(awkward), std::end(awkward)};
    for (int i = 0; i < 60; ++i)
        names.append("  r" + QByteArray::number(i).rightJustified(2, '0') + ".mp3");
    Session s(names);
    s.toolbar(ShowMp3)->trigger();
    // Each row whose look changes is announced to the view, which repaints it.
    const ModelMirror seen(s.list()->model());
    s.select(56);
    EXPECT_EQ(s.look(), u" | bold  | selected 56 | timer off"_s) << "an idle player has no timer running";
    s.list()->scrollToTop();
    // Scrolled to its far right too: a row brought into view shows its name.
    s.list()->header()->resizeSection(1, 2000);
    s.list()->horizontalScrollBar()->setValue(s.list()->horizontalScrollBar()->maximum());
    auto inView = [&](int row) { return s.list()->viewport()->rect().contains(s.list()->visualRect(s.list()->model()->index(row, 0))); };
    ASSERT_FALSE(inView(56));
    s.click(Player::Play);
    ASSERT_TRUE(s.waitPlayed(1));
    const int tick = s.w<QTimer>("tmrPlay")->interval();
    s.w<QTimer>("tmrPlay")->setInterval(600000); // no tick until the spoilt entry's turn
    for (int row = 56; row < 60; ++row) {
        ASSERT_TRUE(s.waitFor([&] { return s.look().contains(u"bold %1 "_s.arg(row)); }, 3000)) << row;
        EXPECT_EQ(s.look(), u"  r%1.mp3 (0:00:01) | bold %1 | selected %1 | timer on"_s.arg(row));
        EXPECT_TRUE(inView(row) && inView(row + 1)) << row;
        EXPECT_EQ(seen.rows, seen.now());
    }
    ASSERT_TRUE(s.waitFor([&] { return s.look().startsWith(u"<b>bold.mp3"_s); }));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(s.w("lblPlay"))->text(QAccessible::Name), s.w<QLabel>("lblPlay")->text());
    ASSERT_TRUE(s.waitFor([&] { return s.played().size() == 12 && s.look().endsWith(u"timer off"_s); }));
    EXPECT_EQ(s.look() + u" | "_s + s.w<QLabel>("lblPlayTime")->text(), u" | bold  | selected 67 | timer off | 0:00:00"_s);
    EXPECT_EQ(seen.rows, seen.now());
    EXPECT_EQ(s.played().mid(0, 4), QStringList({u"  r56.mp3"_s, u"  r57.mp3"_s, u"  r58.mp3"_s, u"  r59.mp3"_s}));
    // The log holds the MP3 entry and the bytes it got; the list sorts them its own way.
    for (const QByteArray &name : awkward)
        EXPECT_TRUE(readAll(s.log).contains(" madplay [-Q] [" + QFile::encodeName(s.music) + name + "]\n")) << name.toStdString();

    // The start-up check refuses a codec folder like this, so the entry is spoilt afterwards.
    QFile::setPermissions(s.program + u"codec/madplay"_s, QFile::ReadOwner | QFile::WriteOwner);
    s.w<QTimer>("tmrPlay")->setInterval(tick);
    s.select(1);
    s.click(Player::Play);
    ASSERT_TRUE(s.waitFor([&] { return s.look().startsWith(u"PlayStart Failed |"_s); }));
    QTest::qWait(250);
    EXPECT_EQ(s.look(), u"PlayStart Failed | bold 1 | selected 1 | timer off"_s);
    // The temporary folder's own clean-up cannot name a file that is not UTF-8.
    ::unlink((QFile::encodeName(s.music) + awkward[6]).constData());
}

// The keys, the buttons and a screen reader's actions, which do what clicks do: a long row counts
// its time; Next and Previous move and end the decoder they leave; Stop ends the last one, children
// included; Enter or a double click plays a row, Play the topmost of several selected; a refill (Show
// Mp3 pressed again lists again and stays pressed) stops the player and rewinds it; so do the end of
// the session and closing the window. Make All counts every file, and Make Wav converts them all.
TEST(PlayerFrame, KeysButtonsAndActionsEndEveryProcessOfThePlayer)
{
    Session s({"family1.mp3", "long2.mp3", "long3.mp3", "w.wav"});
    EXPECT_EQ(s.w<QProgressBar>("pbPlay")->value(), 0) << "nothing played yet";
    const QString toggle = QAccessibleActionInterface::toggleAction(), press = QAccessibleActionInterface::pressAction();
    auto act = [&](const char *name, const QString &action) {
        QAccessibleActionInterface *a = QAccessible::queryAccessibleInterface(s.w(name))->actionInterface();
        ASSERT_TRUE(a && a->actionNames().contains(action)) << name;
        a->doAction(action);
    };
    // After a step: the player, the rows listed, Show Wav, Show Mp3, Make All and the files it counts.
    QStringList steps;
    auto step = [&](const char *what) {
        steps.append(u"%1: %2 || %3 rows, wav %4, mp3 %5, all %6, %7 selected"_s.arg(QLatin1String(what), s.look())
                         .arg(s.list()->model()->rowCount())
                         .arg(s.toolbar(ShowWav)->isChecked())
                         .arg(s.toolbar(ShowMp3)->isChecked())
                         .arg(s.toolbar(MakeAll)->isChecked())
                         .arg(s.w<QLabel>("lblInfo_3")->text()));
    };
    step("listed");
    act("tbMain_9", toggle);
    step("Show Mp3");
    s.select(0);
    QApplication::setActiveWindow(s.window.get());
    QTest::keyClick(s.window.get(), Qt::Key_F5);
    ASSERT_TRUE(s.waitFor([&] { return s.logLines().size() == 2; })) << "the decoder and its child";
    ASSERT_TRUE(s.waitFor([&] { return s.w<QLabel>("lblPlayTime")->text() == u"0:00:01"_s; }, 3000));
    EXPECT_GE(s.w<QProgressBar>("pbPlay")->value(), 1);

    const QStringList first = s.logLines();
    act("imPlay_3", press);
    ASSERT_TRUE(s.waitPlayed(2));
    EXPECT_TRUE(s.goneSoon(first)) << "the decoder left and its child are gone (they would play for 20 s)";
    step("Next");
    QTest::keyClick(s.window.get(), Qt::Key_F8);
    ASSERT_TRUE(s.waitPlayed(3));
    s.click(Player::Next);
    QTest::qWait(300);
    EXPECT_FALSE(std::ranges::none_of(s.logLines(), alive));
    step("F8, then Next on the last row");
    QTest::keyClick(s.window.get(), Qt::Key_F7);
    ASSERT_TRUE(s.waitPlayed(4));
    QTest::keyClick(s.window.get(), Qt::Key_F6);
    EXPECT_TRUE(s.goneSoon(s.logLines()));
    step("F7, F6");

    s.select(2);
    QTest::keyClick(s.list(), Qt::Key_Return);
    ASSERT_TRUE(s.waitPlayed(5));
    const QPoint at = s.list()->visualRect(s.list()->model()->index(1, 1)).center();
    QTest::mouseClick(s.list()->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(s.list()->viewport(), Qt::LeftButton, {}, at);
    ASSERT_TRUE(s.waitPlayed(6));
    step("Enter on row 2, double click on row 1");
    s.select(2);
    QTest::mouseClick(s.list()->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      s.list()->visualRect(s.list()->model()->index(0, 1)).center());
    s.click(Player::Play);
    ASSERT_TRUE(s.waitPlayed(7));
    act("tbMain_9", toggle);
    EXPECT_TRUE(s.goneSoon(s.logLines()));
    step("Show Mp3 again while a row plays");
    act("imPlay_3", press);
    ASSERT_TRUE(s.waitPlayed(8));
    // The end of the session, as a logout signals it.
    watchSessionEnd(s.window.get(), [&](int) { s.controller->endSession(); });
    ::raise(SIGTERM);
    EXPECT_TRUE(s.goneSoon(s.logLines()));
    act("imPlay_0", press);
    ASSERT_TRUE(s.waitPlayed(9));
    act("imPlay_1", press);
    ASSERT_TRUE(s.waitFor([&] { return std::ranges::none_of(s.logLines(), alive); }));
    s.click(Player::Play);
    ASSERT_TRUE(s.waitPlayed(10));
    s.window->close();
    EXPECT_TRUE(s.goneSoon(s.logLines()));
    steps.append(u"played "_s + s.played().join(u' '));

    // Shown again, the window makes files as before.
    s.window->show();
    for (int i = 0; i < 3; ++i) {
        act("tbMain_6", toggle);
        step("Make All");
    }
    act("tbMain_4", press); // Make Wav
    ASSERT_TRUE(s.waitFor([&] { return s.w("frEncode")->isVisible(); }));
    EXPECT_EQ(s.w<QTreeView>("lstCode")->model()->rowCount(), 3);
    ASSERT_TRUE(s.waitPlayed(11)) << "its codec, which the rig aborts, started";
    expectAsRecorded(u"window-player-keys"_s, steps);
}
