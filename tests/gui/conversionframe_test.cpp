#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>

#include "support/qtprinters.h"
#include "support/signalhandled.h"
#include "windowrecord.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

namespace {

// Every codec is this script: it logs its arguments, then acts by the source's name (held* waits
// for its target's ".go" file; flood* ends with one write of over 6 KB; quiet* closes its error
// output early). Each ends by itself, a hang or a held one after 30 s. Codecs start with no
// environment, hence the log's path.
const char codecScript[] = R"(#!/bin/sh
PATH=/usr/bin:/bin
line=$(basename "$0"); for a in "$@"; do line="$line [$a]"; done
echo "$line" >> '%1'
eval "src=\${$(($# - 1))}"; eval "dst=\${$#}"
case $(basename "$src") in
fail*) echo "cannot read $src" >&2; exit 1 ;;
crash*) seq 8 >&2; kill -SEGV $$ ;;
empty*) : > "$dst"; exit 0 ;;
hang*) head -c 3000 /dev/zero > "$dst"; exec sleep 30 ;;
flood*) { head -c 8000000 /dev/zero | tr '\000' x; echo; } >&2; t=$(mktemp); { head -c 6000 /dev/zero | tr '\000' y; echo; seq 1 20; echo "$(seq -s '' 90) last words"; } > "$t"
  sleep 0.2; cat "$t" >&2; rm -f "$t"; head -c 4096 /dev/zero > "$dst"; exit 2 ;;
trickle*) n=$(seq -s '' 40); for i in $(seq 60); do echo "line $i $n" >&2; sleep 0.01; done; head -c 4096 /dev/zero > "$dst"; exit 3 ;;
slow*) sleep 0.6 ;;
held*) head -c 3000 /dev/zero > "$dst"; i=0; while [ ! -e "$dst.go" ] && [ $i -lt 300 ]; do sleep 0.1; i=$((i + 1)); done ;;
quiet*) exec 2>&-; sleep 0.3 ;;
esac
sleep 0.05
head -c 4096 /dev/zero > "$dst"
)";

// The window open on a music folder of the named files (each a fixture of its kind; low* an
// 8000 Hz one), every codec the script.
struct Session : ProcessRig
{
    QString music = dir.path() + u"/music/"_s, log = dir.path() + u"/codec.log"_s;
    int beeps = 0;

    explicit Session(const QString &names, int processors = 2, Clock *clockShown = nullptr)
    {
        QDir().mkpath(music);
        installCodecs(program, QString::fromLatin1(codecScript).arg(log).toUtf8());
        const std::map<QString, QString> fixtures{{u"wav"_s, u"wav/stereo-16bit-44100.wav"_s}, {u"mp3"_s, u"mp3/vbr.mp3"_s},
                                                  {u"ogg"_s, u"ogg/q-nominal160.ogg"_s}, {u"mpc"_s, u"mpc/stereo-44100.mpc"_s}};
        for (const QString &name : names.split(u' ', Qt::SkipEmptyParts))
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/")
                            + (name.startsWith(u"low"_s) ? u"wav/mono-8bit-8000.wav"_s : fixtures.at(name.right(3).toLower())),
                        music + name);
        Environment e = environment();
        e.beep = [this] { ++beeps; };
        e.processorCount = [processors] { return processors; };
        if (clockShown)
            e.clock = clockShown;
        EXPECT_EQ(open(e, music), StartEnd::Running);
    }
    // Make All, then a Make command: every listed file becomes a job.
    void makeAll(int make) const { toolbar(MakeAll)->trigger(), toolbar(make)->trigger(); }
    QTreeView *jobs() const { return w<QTreeView>("lstCode"); }
    QPushButton *stop() const { return w<QPushButton>("cmbEncode_0"); }
    QPushButton *close() const { return w<QPushButton>("cmbEncode_1"); }
    template <typename Name> bool shown(const Name &name) const { return !w(name)->isHidden(); }
    QString cell(int row, int column, int role = Qt::DisplayRole) const { return jobs()->model()->index(row, column).data(role).toString(); }
    // Job rows as "name status" ("*" bold, "!" with a warning), in list order.
    QString rows() const
    {
        QStringList all;
        for (int r = 0; r < jobs()->model()->rowCount(); ++r)
            all.append((jobs()->model()->index(r, 0).data(Qt::FontRole).value<QFont>().bold() ? u"*"_s : QString()) + cell(r, 0)
                       + u' ' + cell(r, 1) + (jobs()->model()->index(r, 0).data(Qt::DecorationRole).isValid() ? u"!"_s : QString()));
        return all.join(u'|');
    }
    // The frame in a line: the rows, the activity of each slot shown, the controls that show or
    // can be pressed, and the finished count.
    QString state() const
    {
        QStringList slots, on;
        for (int i = 0; i < 8; ++i)
            if (shown(u"imProc_%1"_s.arg(i)))
                slots.append(w(u"imProc_%1"_s.arg(i))->property("activity").toString());
        for (const auto &[name, word, pressed] : {std::tuple{"cmbEncode_0", "stop", true}, {"cmbEncode_1", "close", true}, {"pbEncode", "bar", false},
                                                  {"lblEncodeTime_1", "remaining", false}, {"txtDetails", "details", false}})
            if (pressed ? w(name)->isEnabled() : shown(name))
                on.append(QLatin1String(word));
        return QStringList{rows(), slots.join(u' '), on.join(u' '), w<QLabel>("lblEncodeTime_2")->text()}.join(u" / ");
    }
    void press(int row, Qt::Key key) const
    {
        jobs()->setFocus();
        jobs()->setCurrentIndex(jobs()->model()->index(row, 0));
        QTest::keyClick(jobs(), key);
    }
    // Ticks (or clears) a row of the file list as its check box does.
    void tick(const QString &name, bool on = true) const
    {
        QAbstractItemModel *list = w<QTreeView>("lstMain")->model();
        for (int r = 0; r < list->rowCount(); ++r)
            if (list->index(r, 0).data().toString() == name)
                list->setData(list->index(r, 0), on ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    }
    QStringList logged() const { return QString::fromUtf8(readAll(log)).split(u'\n', Qt::SkipEmptyParts); }
    bool waitForEnd() const { return waitFor([this] { return close()->isEnabled(); }); }
    // The frame after a step of a test, with the beeps so far, for the test's record.
    QStringList record;
    void step(const QString &what)
    {
        record.append(what + u": "_s + (shown("frEncode") ? state() : u"(no frame)"_s) + u" / %1 beeps"_s.arg(beeps));
    }
};

} // namespace

// Each Make command runs its codec on the ticked file with its command line; the record holds
// the frame each run leaves and the lines its codec logged. The last two type their own line,
// the box still focused; with Show Wav pressed last, Make Wav is off and nothing starts.
TEST(ConversionFrame, EachMakeCommandRunsItsCodecWithItsCommandLine)
{
    const struct { int show; int make; const char *file, *mode = nullptr, *box, *typed; } cases[] = {
        {ShowWav, MakeMp3, "a.wav"},
        {ShowWav, MakeOgg, "a.wav"},
        {ShowWav, MakeMpc, "a.wav"},
        {ShowMp3, MakeWav, "m.mp3"},
        {ShowOgg, MakeWav, "o.ogg"},
        {ShowMpc, MakeWav, "c.mpc"},
        {ShowOgg, MakeWav, "o.ogg"}, // the Show pressed last counts
        {ShowWav, MakeWav, "a.wav"},
        {ShowWav, MakeOgg, "a.wav", "cmbModeOgg", "txtCmdOgg", "-q 3"},
        {ShowWav, MakeMpc, "a.wav", "cmbModeMpc", "txtCmdMpc", "--radio"},
    };
    Session s(u"a.wav m.mp3 o.ogg c.mpc"_s);
    const ModelMirror jobsSeen(s.jobs()->model());
    qsizetype codecRuns = 0;
    for (const auto &k : cases) {
        s.toolbar(k.show)->trigger();
        s.tick(QLatin1String(k.file));
        QString what = s.toolbar(k.show)->text() + u", "_s;
        if (k.mode) {
            s.tab(k.make == MakeOgg ? 1 : 2);
            s.choose(k.mode, 2);
            auto *box = s.w<QLineEdit>(k.box);
            box->clear();
            box->setFocus();
            QTest::keyClicks(box, QLatin1String(k.typed));
            what += QLatin1String(k.typed) + u" typed, "_s;
        }
        s.toolbar(k.make)->trigger();
        if (s.shown("frEncode")) {
            EXPECT_TRUE(s.waitForEnd());
            EXPECT_EQ(s.cell(0, EncodeJob::TargetSize), u"4 KB"_s);
        }
        s.step(what + s.toolbar(k.make)->text());
        for (const QString &line : s.logged().mid(codecRuns))
            s.record.append(u"  "_s + line);
        codecRuns = s.logged().size();
        EXPECT_EQ(jobsSeen.rows, jobsSeen.now()) << "each change of a row is announced to the view";
        if (k.make == MakeMp3) {
            QStringList frame;
            describeWidgets(s.w("frEncode"), frame);
            // The clock's readings, and the bar that measures time, are all that differ from run to run.
            frame.replaceInStrings(QRegularExpression(u"\\b\\d+:\\d\\d:\\d\\d\\b"_s), u"h:mm:ss"_s);
            frame.replaceInStrings(QRegularExpression(u"range=\"[^\"]*\""_s), u"range=(seconds)"_s);
            expectAsRecorded(u"window-conversion"_s, frame, s.dir.path());
        }
        s.close()->click();
    }
    expectAsRecorded(u"window-make-commands"_s, s.record, s.dir.path());
}

// Stop breaks the waiting jobs at once and lets the running ones finish. The next run has its
// language switched midway, at a large font: its rows go on in the new language to its end. The
// record holds the frame after each step.
TEST(ConversionFrame, StopBreaksTheWaitingAndALanguageSwitchKeepsTheNextRunGoing)
{
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPixelSize(24);
    QApplication::setFont(large);
    const auto restore = qScopeGuard([&] { QApplication::setFont(usual); });
    Session s(u"slow1.wav slow2.wav slow3.wav slow4.wav slow5.wav slow6.mp3 slow7.mp3"_s);
    // The slots fill as the command is given, not a timer's tick later. Nothing done yet, then
    // no more jobs counted than slots: no estimate, so neither the bar nor the time remaining.
    s.makeAll(MakeMp3);
    s.step(u"Make All, Make Mp3"_s);
    s.stop()->click();
    s.step(u"Stop"_s);
    EXPECT_EQ(cutTexts(s.jobs()), QStringList());
    ASSERT_TRUE(s.waitForEnd());
    s.step(u"the running jobs ended"_s);
    EXPECT_EQ(s.logged().size(), 2);
    // Made again: only the new run's jobs are listed, and the last run's Stop does not end this
    // one early. The window may not close during it.
    s.close()->click();
    s.toolbar(ShowMp3)->trigger();
    s.toolbar(MakeWav)->trigger();
    EXPECT_FALSE(s.window->close());
    const ModelMirror jobsSeen(s.jobs()->model()), filesSeen(s.w<QTreeView>("lstMain")->model());
    s.w<QToolButton>("stbMain_7")->click();
    s.step(u"Close, Show Mp3, Make Wav, Russian"_s);
    EXPECT_EQ(cutTexts(s.jobs()), QStringList());
    EXPECT_EQ(filesSeen.rows, filesSeen.now());
    EXPECT_EQ(jobsSeen.rows, jobsSeen.now());
    ASSERT_TRUE(s.waitForEnd());
    // More jobs than slots: the bar shows once one is done, with a range to fill even for a run
    // estimated under half a second. The last completed row is the current one.
    s.step(u"the run ended"_s);
    EXPECT_EQ(s.cell(0, EncodeJob::TargetSize), u"4 КБ"_s);
    EXPECT_TRUE(atRightEdge({s.stop(), s.close()}));
    EXPECT_GE(s.w<QProgressBar>("pbEncode")->maximum(), 1);
    EXPECT_EQ(s.jobs()->currentIndex().row(), 1);
    // A second Make while the results show starts nothing, and the window may not close until
    // Close, which refreshes the free space.
    EXPECT_FALSE(s.window->close());
    s.toolbar(MakeWav)->trigger();
    EXPECT_EQ(s.logged().size(), 4);
    const QString freeBefore = s.w<QLabel>("stbMain_2")->text();
    s.close()->click();
    s.step(u"Make Wav, Close"_s);
    EXPECT_NE(s.w<QLabel>("stbMain_2")->text(), freeBefore);
    EXPECT_TRUE(s.window->close());
    expectAsRecorded(u"window-stop-and-language"_s, s.record);
}

// Eight processors and ten jobs: eight slots, each running while its codec runs; the bar shows
// once one is done and keeps its place as "Finished 9" becomes "Finished 10". Then the listed
// folder removed during a run gives every row an error.
TEST(ConversionFrame, EightSlotsShowTheirActivityAndTheBarKeepsItsPlace)
{
    // quiet9's error output ends long before it does: that end wakes the window once, not until its exit.
    Session s(u"slow1.wav slow2.wav slow3.wav slow4.wav slow5.wav slow6.wav slow7.wav slow8.wav quiet9.wav f10.wav"_s, 8);
    // Each codec's output and exit wake the window a few times; a wake-up left pending spins it.
    int wakeups = 0;
    for (QSocketNotifier *n : s.window->findChildren<QSocketNotifier *>())
        QObject::connect(n, &QSocketNotifier::activated, [&] { ++wakeups; });
    s.makeAll(MakeMp3);
    const auto slots = [&] { return s.state().section(u" / "_s, 1, 1); };
    ASSERT_TRUE(s.waitFor([&] { return slots().endsWith(u"running"_s); }));
    EXPECT_EQ(slots(), u"running running running running running running running running"_s);
    ASSERT_TRUE(s.waitFor([&] { return s.shown("pbEncode"); }));
    const QRect bar = s.w("pbEncode")->geometry();
    ASSERT_TRUE(s.waitForEnd());
    EXPECT_EQ(s.state().section(u" / "_s, 1), u"idle idle idle idle idle idle idle idle / close bar remaining / Finished 10 of 10"_s);
    EXPECT_EQ(s.w("pbEncode")->geometry(), bar);
    EXPECT_LE(wakeups, 10 * 4);
    // With the codecs gone, nothing wakes the window.
    const int atTheEnd = wakeups;
    s.waitFor([] { return false; }, 300);
    EXPECT_LE(wakeups - atTheEnd, 1);
    // A wider window widens the jobs' name column alone.
    auto *header = s.jobs()->header();
    const int list = s.jobs()->width(), name = header->sectionSize(0), last = header->sectionSize(header->count() - 1);
    s.window->resize(s.window->size() + QSize(300, 0));
    QApplication::processEvents();
    ASSERT_GT(s.jobs()->width(), list);
    EXPECT_EQ(header->sectionSize(0) - name, s.jobs()->width() - list);
    EXPECT_EQ(header->sectionSize(header->count() - 1), last);
    s.close()->click();
    s.toolbar(MakeMp3)->trigger();
    ASSERT_TRUE(s.waitFor([&] { return s.cell(0, 1) == u"In Progress"_s; }));
    QDir(s.music).removeRecursively();
    EXPECT_TRUE(s.waitFor([&] { return s.rows().count(u" Error"_s) == 10; })) << s.rows().toStdString();
}

// What is typed in an encoder's command-line box is what the encoder gets, for the ticked files
// only; a second run's first job is the current row.
TEST(ConversionFrame, TheTypedCommandLinesReachTheirEncoders)
{
    Session s(u"a.wav b.wav c.wav"_s, 1);
    s.choose("cmbMode", 3);
    auto *line = s.w<QLineEdit>("txtCmd");
    ASSERT_TRUE(line->isVisible());
    line->clear();
    line->setFocus();
    // Typed at the end, then in the middle: the cursor stays where the user put it, though
    // another tab is visited meanwhile.
    QTest::keyClicks(line, u"-b 96 2"_s);
    QTest::keyClick(line, Qt::Key_Left);
    QTest::keyClicks(line, u"-q "_s);
    auto *tabs = s.w<QTabBar>("TabOpt");
    const int cursor = line->cursorPosition();
    for (const int tab : {1, 0})
        QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(tab).center());
    EXPECT_EQ(line->cursorPosition(), cursor);
    s.toolbar(MakeMp3)->trigger(); // nothing ticked: nothing happens
    EXPECT_FALSE(s.shown("frEncode"));
    s.tick(u"a.wav"_s);
    s.toolbar(MakeMp3)->trigger();
    ASSERT_TRUE(s.waitForEnd());
    s.close()->click();
    QTest::keyClick(line, Qt::Key_End);
    QTest::keyClicks(line, u" -m m"_s);
    s.tick(u"a.wav"_s, false);
    s.tick(u"b.wav"_s);
    s.tick(u"c.wav"_s);
    s.toolbar(MakeMp3)->trigger();
    EXPECT_EQ(s.jobs()->currentIndex().row(), 0);
    ASSERT_TRUE(s.waitForEnd());
    EXPECT_EQ(s.logged().mid(0, 2), QStringList({u"lame [-b] [96] [-q] [2] [--silent] [--priority] [%1a.wav] [%1a.mp3]"_s.arg(s.music),
                                                u"lame [-b] [96] [-q] [2] [-m] [m] [--silent] [--priority] [%1b.wav] [%1b.mp3]"_s.arg(s.music)}));
}

// Codecs that fail in every way leave the sources as they were, and rows that tell why. Then
// SIGHUP and SIGTERM end the session: the hung codec is killed and its unfinished target
// deleted, finished targets stay, and the settings are saved.
TEST(ConversionFrame, FailedJobsTellWhyAndASignalEndsTheSession)
{
    Session s(u"crash.wav empty.wav fail.wav flood.wav hang.wav ok.wav trickle.wav"_s, 3);
    const QByteArray source = readAll(s.music + u"fail.wav"_s);
    std::vector<int> ended;
    watchSessionEnd(s.window.get(), [&](int sig) {
        s.controller->endSession();
        ended.push_back(sig);
    });
    s.makeAll(MakeMp3);
    // The 8 MB of error output are taken as they come: read only at the timer's ticks, they
    // would hold their codec back for 12 s.
    const QString rows = u"*crash.wav Error|*empty.wav Error|*fail.wav Error|flood.wav Done!|hang.wav In Progress|ok.wav Done|trickle.wav Done!"_s;
    s.waitFor([&] { return s.rows() == rows; }, 5000);
    ASSERT_EQ(s.rows(), rows);
    // Each row's tip, a line each: of a long error output, the first two lines, a mark, and the
    // last seven of its last 4 KB, each cut to its last 160 characters.
    QStringList tips;
    for (int row = 0; row < 7; ++row)
        for (const QString &line : s.cell(row, 0, Qt::ToolTipRole).split(u'\n'))
            tips.append(s.cell(row, 0) + u": "_s + line);
    expectAsRecorded(u"window-failed-jobs"_s, tips, s.dir.path());
    auto *pane = s.w<QPlainTextEdit>("txtDetails");
    s.press(2, Qt::Key_Return);
    EXPECT_EQ(pane->toPlainText(), u"fail.wav: Error\nno target written\nexit status 1\ncannot read "_s + s.music + u"fail.wav"_s);
    QTest::qWait(1200);
    EXPECT_TRUE(s.shown("txtDetails")) << "the run's ticks leave the pane open";
    s.press(5, Qt::Key_Return); // a row that did not fail closes the pane
    EXPECT_FALSE(s.shown("txtDetails"));
    EXPECT_EQ(readAll(s.music + u"fail.wav"_s), source);
    // A logout may send more than one signal; the first ends the session, once.
    ASSERT_FALSE(QFile::exists(s.controller->configPath()));
    ::raise(SIGHUP);
    ::raise(SIGTERM);
    ASSERT_TRUE(s.waitFor([&] { return !ended.empty(); }));
    EXPECT_EQ(ended, std::vector<int>{SIGHUP});
    EXPECT_EQ(s.rows(), QString(rows).replace(u"hang.wav In Progress"_s, u"*hang.wav Killed"_s));
    EXPECT_FALSE(QFile::exists(s.music + u"hang.mp3"_s));
    EXPECT_TRUE(QFile::exists(s.music + u"ok.mp3"_s) && QFile::exists(s.music + u"hang.wav"_s));
    EXPECT_EQ(QFileInfo(s.controller->configPath()).size(), 10310);
}

// One processor: hang2.wav waits behind the first hung codec until the user aborts it.
TEST(ConversionFrame, AbortThisJobKillsAHungCodecAndTheLastOneEndsTheRun)
{
    Session s(u"hang1.wav hang2.wav"_s, 1);
    s.makeAll(MakeMp3);
    const QString started = s.w<QLabel>("lblEncodeTime_0")->text();
    ASSERT_TRUE(s.waitFor([&] { return QFile::exists(s.music + u"hang1.mp3"_s); }));
    EXPECT_TRUE(s.waitFor([&] { return s.w<QLabel>("lblEncodeTime_0")->text() != started; }, 3000)) << "quiet codecs, yet the clock runs";
    // A right click asks the list for its menu: the running row's offers the abort, where the
    // pointer is; a waiting row's offers nothing.
    const auto menuAt = [&](int row) {
        QStringList offered;
        const QPoint at = s.jobs()->visualRect(s.jobs()->model()->index(row, 0)).center();
        QTimer::singleShot(50, [&] {
            if (QWidget *popup = QApplication::activePopupWidget()) {
                for (QAction *a : popup->actions())
                    offered.append(a->text());
                EXPECT_EQ(popup->pos(), s.jobs()->viewport()->mapToGlobal(at));
                popup->close();
            }
        });
        QContextMenuEvent click(QContextMenuEvent::Mouse, at, s.jobs()->viewport()->mapToGlobal(at));
        QApplication::sendEvent(s.jobs()->viewport(), &click);
        QTest::qWait(100);
        return offered;
    };
    EXPECT_EQ(menuAt(1), QStringList());
    EXPECT_EQ(menuAt(0), QStringList{u"Abort this job"_s});
    QTest::qWait(300);
    EXPECT_EQ(s.jobs()->currentIndex().row(), 0) << "the run's ticks leave the row the user chose";
    s.press(1, Qt::Key_Delete); // not running: nothing
    EXPECT_EQ(s.rows(), u"hang1.wav In Progress|hang2.wav "_s);
    s.press(0, Qt::Key_Delete);
    EXPECT_TRUE(s.rows().startsWith(u"*hang1.wav Error|"_s));
    EXPECT_TRUE(s.cell(0, 0, Qt::ToolTipRole).startsWith(u"aborted\nsignal 9"_s));
    EXPECT_FALSE(QFile::exists(s.music + u"hang1.mp3"_s));
    EXPECT_TRUE(QFile::exists(s.music + u"hang1.wav"_s));
    // The waiting job takes the freed processor; aborted in turn, it was the last, and the run ends.
    ASSERT_TRUE(s.waitFor([&] { return QFile::exists(s.music + u"hang2.mp3"_s); }));
    EXPECT_FALSE(s.close()->isEnabled());
    s.press(1, Qt::Key_Delete);
    EXPECT_EQ(s.state(), u"*hang1.wav Error|*hang2.wav Error / idle / close / Finished 0 of 2"_s);
    EXPECT_EQ(s.beeps, 1);
    // Tab leads from the options to Close (Stop is off now) and on to the status bar's buttons.
    QStringList walk{u"cmdDefault"_s};
    s.w(walk.front())->setFocus();
    for (int i = 0; i < 2; ++i, walk.append(QApplication::focusWidget()->objectName()))
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(walk.join(u' '), u"cmdDefault cmbEncode_1 stbMain_7"_s);
}

// The time remaining is the run's time so far scaled by the share of the sources done: finished
// jobs count whole, a running one by its target's size. A clock that stands still for 10,000 s,
// past midnight, makes the share show to the second.
TEST(ConversionFrame, TheTimeRemainingFollowsTheFinishedAndTheRunningJobs)
{
    struct StoppedClock : Clock
    {
        double now = 86000; // 23:53:20
        double secondsSinceMidnight() override { return now; }
    } clock;
    Session s(u"held.wav slow1.wav slow2.wav"_s, 2, &clock);
    s.makeAll(MakeMp3);
    clock.now = 9600;
    // held writes 3,000 bytes and waits; each slow one's end sets a new estimate, the last 12,678 s.
    ASSERT_TRUE(s.waitFor([&] { return s.cell(2, 1) == u"Done"_s; }, 5000));
    auto *remaining = s.w<QLabel>("lblEncodeTime_1");
    s.waitFor([&] { return remaining->text() == u"0:44:38"_s; }, 3000); // at the next tick
    EXPECT_EQ(remaining->text(), u"0:44:38"_s);
    EXPECT_EQ(s.w<QLabel>("lblEncodeTime_0")->text(), u"2:46:40"_s);
    // Outlasting its estimate, the bar stops there, full, until the end says how long the run took.
    auto *bar = s.w<QProgressBar>("pbEncode");
    clock.now = 19600;
    ASSERT_TRUE(s.waitFor([&] { return remaining->text() == u"0:00:00"_s; }));
    EXPECT_EQ(bar->value(), bar->maximum());
    write(s.music + u"held.mp3.go"_s, "");
    ASSERT_TRUE(s.waitForEnd());
    EXPECT_EQ(bar->maximum(), 20000);
    EXPECT_EQ(bar->value(), 20000);
}

// x.wav and x.WAV would both make x.mp3: the later one is left out, and the pane says so; the
// next run's pane does not tell of it. A make that leaves every source out starts nothing: a
// Musepack make of an 8000 Hz source, or an MP3 one above a constant 160 kbps, which the
// encoder refuses below 32 kHz.
TEST(ConversionFrame, SourcesLeftOutAreShownInThePaneAndAllLeftOutStartNothing)
{
    Session s(u"x.wav x.WAV"_s);
    s.makeAll(MakeMp3);
    ASSERT_EQ(s.jobs()->model()->rowCount(), 1);
    const QString kept = s.cell(0, 0), left = kept == u"x.wav"_s ? u"x.WAV"_s : u"x.wav"_s;
    EXPECT_TRUE(s.shown("txtDetails"));
    EXPECT_EQ(s.w<QPlainTextEdit>("txtDetails")->toPlainText(), u"%1 left out: its target x.mp3 is made from %2 in this run"_s.arg(left, kept));
    EXPECT_TRUE(s.waitForEnd());
    s.close()->click();
    s.toolbar(MakeAll)->trigger();
    s.tick(kept);
    s.toolbar(MakeOgg)->trigger();
    EXPECT_FALSE(s.shown("txtDetails"));
    EXPECT_TRUE(s.waitForEnd());
    Session low(u"low.wav"_s);
    low.makeAll(MakeMpc);
    EXPECT_EQ(low.jobs()->model()->rowCount(), 0);
    EXPECT_FALSE(low.window->findChild<QTimer *>(u"tmrEncode"_s)->isActive());
    low.choose("cmbMode", 2);
    for (const int entry : {3, 4}) { // 192 and 160 kbps
        low.choose("cmbCbr", entry);
        low.toolbar(MakeMp3)->trigger();
        EXPECT_EQ(low.jobs()->model()->rowCount(), entry == 3 ? 0 : 1) << entry;
    }
    ASSERT_TRUE(low.waitForEnd());
}

// The program itself, started with one display or none: a second folder is a misuse (status 2),
// no display ends it with status 1, each told on standard error before any window; a Wayland
// display alone is one to try. Once up, each of three signals saves the settings and ends it
// with 128 + the signal.
TEST(WindowProgram, TellsOfMisuseAndEndsWithItsStatus)
{
    QTemporaryDir dir;
    const QString program = dir.path() + u"/prog/"_s;
    installCodecs(program, "#!/bin/sh\n");
    ASSERT_TRUE(QFile::copy(QStringLiteral(KV_BIN_DIR "/kestrelvane"), program + u"kestrelvane"_s));
    const auto start = [&](QProcess &window, const char *display, const QStringList &args) {
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            e.remove(QLatin1String(name));
        if (display)
            e.insert(QString::fromLatin1(display).section(u'=', 0, 0), QString::fromLatin1(display).section(u'=', 1));
        e.insert(u"XDG_RUNTIME_DIR"_s, dir.path());
        window.setProcessEnvironment(e);
        // The display that is not there ends Qt's start with an abort: no core file for it.
        window.setChildProcessModifier([] {
            const rlimit none{0, 0};
            ::setrlimit(RLIMIT_CORE, &none);
        });
        window.start(program + u"kestrelvane"_s, args);
    };
    for (const int sig : {SIGTERM, SIGHUP, SIGINT}) {
        QFile::remove(program + u"kestrvan.cfg"_s);
        QProcess window;
        start(window, "QT_QPA_PLATFORM=offscreen", {dir.path()});
        ASSERT_TRUE(window.waitForStarted()); // else the forked test, with its handlers, answers
        ASSERT_TRUE(QTest::qWaitFor([&] { return handlesSignal(window.processId(), sig); }, 30000)) << sig;
        ::kill(static_cast<pid_t>(window.processId()), sig);
        ASSERT_TRUE(window.waitForFinished(20000)) << sig;
        EXPECT_EQ(window.exitStatus(), QProcess::NormalExit) << sig;
        EXPECT_EQ(window.exitCode(), 128 + sig);
        EXPECT_EQ(QFileInfo(program + u"kestrvan.cfg"_s).size(), 10310) << sig;
    }
    const struct { QStringList args; const char *display; int status; const char *error; } cases[] = {
        {{u"/a"_s, u"/b"_s}, "QT_QPA_PLATFORM=offscreen", 2, "kestrelvane: only one FOLDER can be opened\nusage: kestrelvane [FOLDER]\n"},
        {{dir.path()}, nullptr, 1, "kestrelvane: no display to open the window on; kestrelvane-cli lists and converts without one\n"},
        {{dir.path()}, "WAYLAND_DISPLAY=kv-none", -1, nullptr},
    };
    QProcess help; // needs no display
    start(help, nullptr, {u"--help"_s});
    ASSERT_TRUE(help.waitForFinished(20000));
    EXPECT_EQ(help.exitCode(), 0);
    expectAsRecorded(u"window-help"_s, QString::fromUtf8(help.readAllStandardOutput()).split(u'\n'));
    for (const auto &c : cases) {
        QProcess window;
        start(window, c.display, c.args);
        ASSERT_TRUE(window.waitForFinished(20000)) << c.display;
        const QString error = QString::fromUtf8(window.readAllStandardError());
        if (c.error)
            EXPECT_EQ(std::pair(window.exitCode(), error), std::pair(c.status, QString::fromUtf8(c.error))) << c.display;
        else
            EXPECT_FALSE(error.contains(u"no display"_s)) << error.toStdString();
    }
    // On a real display, a start that missing codecs end shows each message until the user
    // presses Enter on it, then ends with status 1. Without lame, the Ogg decoder's check fails too.
    QFile::remove(program + u"codec/lame"_s);
    QFile::remove(program + u"codec/madplay"_s);
    write(dir.filePath(u"session"_s), R"(
timeout 30 "$1" "$2" 2>"$3" & pid=$!; n=0
while kill -0 $pid 2>/dev/null; do
    id=$(xdotool search --onlyvisible --name '^Kestrelvane$' | head -n 1)
    if [ -n "$id" ]; then
        xdotool windowfocus --sync "$id" key Return; n=$((n + 1))
        while xdotool search --onlyvisible --name '^Kestrelvane$' | grep -qx "$id" && kill -0 $pid; do sleep 0.1; done
    fi
    sleep 0.1
done
wait $pid; echo "$n messages, status $?"
)");
    QProcess session;
    QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
    e.remove(u"QT_QPA_PLATFORM"_s);
    session.setProcessEnvironment(e);
    // A display number of its own, so that test runs side by side do not race for the first free one.
    const QString first = QString::number(100 + QCoreApplication::applicationPid() % 800);
    session.start(u"xvfb-run"_s, {u"-a"_s, u"-n"_s, first, u"sh"_s, dir.filePath(u"session"_s), program + u"kestrelvane"_s, dir.path(),
                                  dir.filePath(u"errors"_s)});
    ASSERT_TRUE(session.waitForFinished(60000));
    EXPECT_EQ(QString::fromUtf8(session.readAllStandardOutput()), u"3 messages, status 1\n"_s)
        << readAll(dir.filePath(u"errors"_s)).constData() << session.readAllStandardError().constData();
}
