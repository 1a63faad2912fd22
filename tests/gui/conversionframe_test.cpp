#include <csignal>

#include <sys/resource.h>

#include "support/signalhandled.h"
#include "windowrecord.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

namespace {

// Every codec is this script: it logs its arguments and acts by the source's name, ending by itself
// within 30 s. Codecs start with no environment, hence the log's path.
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

// The window open on a music folder of the named files (fixtures of their kind, low* at 8000 Hz).
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
    // The frame in a line: rows, shown slots' activity, controls shown or enabled, finished count.
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
    // Ticks (or clears) the named rows of the file list as their check boxes do.
    void tick(const QString &names, bool on = true) const
    {
        QAbstractItemModel *list = w<QTreeView>("lstMain")->model();
        for (int r = 0; r < list->rowCount(); ++r)
            if (names.split(u' ').contains(list->index(r, 0).data().toString()))
                list->setData(list->index(r, 0), on ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    }
    QStringList logged() const { return QString::fromUtf8(readAll(log)).split(u'\n', Qt::SkipEmptyParts); }
    bool waitForEnd() const { return waitFor([this] { return close()->isEnabled(); }); }
    // The frame after a step of a test, with the beeps so far, for the test's record.
    QStringList record;
    void step(const QString &what)
    {
        const QString idle = w<QTimer>("tmrEncode")->isActive() ? u"(no frame, ticking)"_s : u"(no frame)"_s;
        record.append(what + u": "_s + (shown("frEncode") ? state() : idle) + u" / %1 beeps"_s.arg(beeps));
    }
};

} // namespace

// Each Make command runs its codec on the ticked files with its command line, the last three a line
// typed in its box; with Show Wav pressed last, Make Wav is off. x.wav and x.WAV would both make
// x.mp3: the pane tells of the one left out, until the next run. A make that leaves out all starts
// nothing: Musepack, or a constant MP3 rate over 160 kbps, at 8000 Hz. The record ends with the codecs' log.
TEST(ConversionFrame, EachMakeCommandRunsItsCodecWithItsCommandLine)
{
    const struct { int show, make; const char *file; int cbr = 0, tab = 0; const char *typed = nullptr, *inserted; } cases[] = {
        {ShowWav, MakeMp3, "x.wav x.WAV"}, // first: the pane is told of sources left out by a window's first run too
        {ShowWav, MakeMp3, "none"},
        {ShowWav, MakeMp3, "a.wav"},
        {ShowWav, MakeOgg, "a.wav"},
        {ShowWav, MakeMpc, "a.wav"},
        {ShowWav, MakeMpc, "low.wav"},
        {ShowMp3, MakeWav, "m.mp3"},
        {ShowOgg, MakeWav, "o.ogg"},
        {ShowMpc, MakeWav, "c.mpc"},
        {ShowOgg, MakeWav, "o.ogg"}, // the Show pressed last counts
        {ShowWav, MakeWav, "a.wav"},
        {ShowWav, MakeMp3, "low.wav", 3}, // 192 kbps
        {ShowWav, MakeMp3, "low.wav", 4}, // 160 kbps
        {ShowWav, MakeMp3, "a.wav", 0, 0, "-b 96 2", "-q "},
        {ShowWav, MakeOgg, "a.wav", 0, 1, "-q3", " "},
        {ShowWav, MakeMpc, "a.wav", 0, 2, "--rado", "i"},
    };
    Session s(u"a.wav b.wav m.mp3 o.ogg c.mpc x.wav x.WAV low.wav"_s);
    const ModelMirror jobsSeen(s.jobs()->model());
    for (const auto &k : cases) {
        s.toolbar(k.show)->trigger();
        s.tick(QLatin1String(k.file));
        QString what = u"%1, %2 ticked, "_s.arg(s.toolbar(k.show)->text(), QLatin1String(k.file));
        if (k.cbr) {
            s.choose("cmbMode", 2);
            s.choose("cmbCbr", k.cbr);
            what += s.w<QComboBox>("cmbCbr")->currentText() + u", "_s;
        }
        if (k.typed) {
            const QString kind = QStringList{QString(), u"Ogg"_s, u"Mpc"_s}.at(k.tab);
            s.tab(k.tab);
            s.choose(qPrintable(u"cmbMode"_s + kind), k.tab == 0 ? 3 : 2);
            auto *box = s.w<QLineEdit>(u"txtCmd"_s + kind);
            box->clear();
            box->setFocus();
            // Typed at the end, then in the middle: the cursor stays put, though another tab is visited.
            QTest::keyClicks(box, QLatin1String(k.typed));
            QTest::keyClick(box, Qt::Key_Left);
            QTest::keyClicks(box, QLatin1String(k.inserted));
            auto *tabs = s.w<QTabBar>("TabOpt");
            for (const int tab : {(k.tab + 1) % 3, k.tab})
                QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(tab).center());
            what += box->text() + u" typed, cursor at %1, "_s.arg(box->cursorPosition());
        }
        s.toolbar(k.make)->trigger();
        EXPECT_TRUE(!s.shown("frEncode") || s.waitForEnd());
        const QString target = s.shown("frEncode") ? u", target "_s + s.cell(0, EncodeJob::TargetSize) : QString();
        s.step(what + s.toolbar(k.make)->text() + target);
        if (s.shown("frEncode") && s.shown("txtDetails"))
            s.record.append(s.w<QPlainTextEdit>("txtDetails")->toPlainText());
        EXPECT_EQ(jobsSeen.rows, jobsSeen.now()) << "each change of a row is announced to the view";
        if (&k == &cases[2]) {
            QStringList frame;
            describeWidgets(s.w("frEncode"), frame);
            // The clock's readings, and the bar that measures time, are all that differ from run to run.
            frame.replaceInStrings(QRegularExpression(u"\\b\\d+:\\d\\d:\\d\\d\\b"_s), u"h:mm:ss"_s);
            frame.replaceInStrings(QRegularExpression(u"range=\"[^\"]*\""_s), u"range=(seconds)"_s);
            expectAsRecorded(u"window-conversion"_s, frame, s.dir.path());
        }
        s.close()->click();
    }
    s.record += s.logged();
    expectAsRecorded(u"window-make-commands"_s, s.record, s.dir.path());
}

// Stop breaks the waiting jobs at once and lets the running ones finish. The next run, at a large
// font, has its language switched midway: its rows go on in the new language to its end.
TEST(ConversionFrame, StopBreaksTheWaitingAndALanguageSwitchKeepsTheNextRunGoing)
{
    QFont large = QApplication::font();
    const auto restore = qScopeGuard([usual = large] { QApplication::setFont(usual); });
    large.setPixelSize(24);
    QApplication::setFont(large);
    Session s(u"slow1.wav slow2.wav slow3.wav slow4.wav slow5.wav slow6.mp3 slow7.mp3"_s);
    // The slots fill at the command, not a tick later; no estimate yet, so no bar or time remaining.
    s.makeAll(MakeMp3);
    s.step(u"Make All, Make Mp3"_s);
    s.w<QPushButton>("cmbEncode_0")->click();
    s.step(u"Stop"_s);
    EXPECT_EQ(cutTexts(s.jobs()), QStringList());
    ASSERT_TRUE(s.waitForEnd());
    s.step(u"the running jobs ended, codecs started: %1"_s.arg(s.logged().size()));
    // Only the new run's jobs are listed, the last run's Stop does not end it, and the window may not close.
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
    // The bar shows once one is done, with a range even for a run under half a second.
    s.step(u"the run ended, target %1, current row %2"_s.arg(s.cell(0, EncodeJob::TargetSize))
               .arg(s.jobs()->currentIndex().row()));
    EXPECT_TRUE(atRightEdge({s.w("cmbEncode_0"), s.close()}));
    EXPECT_GE(s.w<QProgressBar>("pbEncode")->maximum(), 1);
    // A second Make starts nothing; only Close, which refreshes the free space, lets the window close.
    EXPECT_FALSE(s.window->close());
    s.toolbar(MakeWav)->trigger();
    const QString freeBefore = s.w<QLabel>("stbMain_2")->text();
    s.close()->click();
    s.step(u"Make Wav, Close, codecs started: %1"_s.arg(s.logged().size()));
    EXPECT_NE(s.w<QLabel>("stbMain_2")->text(), freeBefore);
    EXPECT_TRUE(s.window->close());
    expectAsRecorded(u"window-stop-and-language"_s, s.record);
}

// Eight processors, ten jobs: the bar keeps its place as "Finished 9" becomes "Finished 10". The
// listed folder removed during a run gives every row an error.
TEST(ConversionFrame, EightSlotsShowTheirActivityAndTheBarKeepsItsPlace)
{
    // quiet9's error output ends long before it does: that end wakes the window once, not until its exit.
    Session s(u"slow1.wav slow2.wav slow3.wav slow4.wav slow5.wav slow6.wav slow7.wav slow8.wav quiet9.wav f10.wav"_s, 8);
    // Each codec's output and exit wake the window a few times; a wake-up left pending spins it.
    int wakeups = 0;
    for (QSocketNotifier *n : s.window->findChildren<QSocketNotifier *>())
        QObject::connect(n, &QSocketNotifier::activated, [&] { ++wakeups; });
    s.makeAll(MakeMp3);
    EXPECT_TRUE(s.waitFor([&] { return s.state().contains(u" /"_s + u" running"_s.repeated(8) + u" / "_s); }));
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

// One processor: hang2.wav waits behind a hung codec until the user aborts it; the record ends with
// the aborted row's tip, the folder and the codecs' log.
TEST(ConversionFrame, AbortThisJobKillsAHungCodecAndTheLastOneEndsTheRun)
{
    Session s(u"hang1.wav hang2.wav"_s, 1);
    s.makeAll(MakeMp3);
    const QString started = s.w<QLabel>("lblEncodeTime_0")->text();
    ASSERT_TRUE(s.waitFor([&] { return QFile::exists(s.music + u"hang1.mp3"_s); }));
    EXPECT_TRUE(s.waitFor([&] { return s.w<QLabel>("lblEncodeTime_0")->text() != started; }, 3000)) << "quiet codecs, yet the clock runs";
    // A right click asks the list for its menu, shown at the pointer.
    for (const int row : {1, 0}) {
        const QPoint at = s.jobs()->visualRect(s.jobs()->model()->index(row, 0)).center();
        QString menu = u" nothing"_s;
        QTimer::singleShot(50, [&] {
            if (QWidget *popup = QApplication::activePopupWidget()) {
                menu = popup->pos() == s.jobs()->viewport()->mapToGlobal(at) ? u" at the pointer:"_s : u" elsewhere:"_s;
                for (QAction *a : popup->actions())
                    menu += u' ' + a->text();
                popup->close();
            }
        });
        QContextMenuEvent click(QContextMenuEvent::Mouse, at, s.jobs()->viewport()->mapToGlobal(at));
        QApplication::sendEvent(s.jobs()->viewport(), &click);
        QTest::qWait(100);
        s.record.append(u"right click on row %1:"_s.arg(row) + menu);
    }
    QTest::qWait(300);
    EXPECT_EQ(s.jobs()->currentIndex().row(), 0) << "the run's ticks leave the row the user chose";
    s.press(1, Qt::Key_Delete);
    s.step(u"Delete on the waiting row"_s);
    s.press(0, Qt::Key_Delete);
    // The waiting job takes the freed processor; aborted in turn, it was the last, and the run ends.
    ASSERT_TRUE(s.waitFor([&] { return QFile::exists(s.music + u"hang2.mp3"_s) && s.state().contains(u" / running / "_s); }));
    s.step(u"Delete on the running row"_s);
    s.press(1, Qt::Key_Delete);
    s.step(u"Delete on the next one"_s);
    s.record += s.cell(0, 0, Qt::ToolTipRole).split(u'\n');
    s.record.append(QDir(s.music).entryList(QDir::Files).join(u' '));
    s.record += s.logged();
    expectAsRecorded(u"window-aborted-jobs"_s, s.record, s.dir.path());
    // Tab leads from the options to Close (Stop is off now) and on to the status bar's buttons.
    QStringList walk{u"cmdDefault"_s};
    s.w(walk.front())->setFocus();
    for (int i = 0; i < 2; ++i, walk.append(QApplication::focusWidget()->objectName()))
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(walk.join(u' '), u"cmdDefault cmbEncode_1 stbMain_7"_s);
}

// Codecs that fail in every way leave the sources as they were, and rows that tell why. SIGHUP
// and SIGTERM end the session: the hung codec killed, its target deleted, the settings saved.
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
    // The 8 MB of error output are taken as they come: read at the ticks, they would take 12 s.
    const QString rows = u"*crash.wav Error|*empty.wav Error|*fail.wav Error|flood.wav Done!|hang.wav In Progress|ok.wav Done|trickle.wav Done!"_s;
    ASSERT_TRUE(s.waitFor([&] { return s.rows() == rows; }, 5000)) << s.rows().toStdString();
    // Of a long error output: two first lines, a mark, the last seven of 4 KB, cut to 160 characters.
    for (int row = 0; row < 7; ++row)
        for (const QString &line : s.cell(row, 0, Qt::ToolTipRole).split(u'\n'))
            s.record.append(s.cell(row, 0) + u": "_s + line);
    s.press(2, Qt::Key_Return);
    s.record += s.w<QPlainTextEdit>("txtDetails")->toPlainText().split(u'\n');
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
    s.record.append(u"ended by signal %1 of %2, settings %3 bytes: "_s.arg(ended.front()).arg(ended.size())
                        .arg(QFileInfo(s.controller->configPath()).size()) + s.rows());
    s.record.append(QDir(s.music).entryList({u"hang.*"_s, u"ok.*"_s}, QDir::Files).join(u' '));
    expectAsRecorded(u"window-failed-jobs"_s, s.record, s.dir.path());
}

// The time so far scaled by the share of the sources done (a running job's by its target's size)
// gives the time remaining; a clock that stands still for 10,000 s past midnight shows it to the second.
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
    const auto times = [&] {
        auto *bar = s.w<QProgressBar>("pbEncode");
        return s.w<QLabel>("lblEncodeTime_0")->text() + u' ' + s.w<QLabel>("lblEncodeTime_1")->text()
               + u" %1 of %2"_s.arg(bar->value()).arg(bar->maximum());
    };
    EXPECT_TRUE(s.waitFor([&] { return times() == u"2:46:40 0:44:38 10000 of 12678"_s; }, 3000)) << times().toStdString();
    // Outlasting its estimate, the bar stops there, full, until the end says how long the run took.
    clock.now = 19600;
    ASSERT_TRUE(s.waitFor([&] { return times() == u"5:33:20 0:00:00 12678 of 12678"_s; })) << times().toStdString();
    write(s.music + u"held.mp3.go"_s, "");
    ASSERT_TRUE(s.waitForEnd());
    EXPECT_EQ(times(), u"5:33:20 0:00:00 20000 of 20000"_s);
}

// The program started with one display or none: a misuse, no display, and each of three signals
// once up (the settings saved, status 128 + the signal); the record holds each start's end and output.
TEST(WindowProgram, TellsOfMisuseAndEndsWithItsStatus)
{
    QTemporaryDir dir;
    const QString program = dir.path() + u"/prog/"_s;
    installCodecs(program, "#!/bin/sh\n");
    ASSERT_TRUE(QFile::copy(QStringLiteral(KV_BIN_DIR "/kestrelvane"), program + u"kestrelvane"_s));
    const auto run = [&](const QString &display, const QStringList &command, int sig = 0) {
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            e.remove(QLatin1String(name));
        if (!display.isEmpty())
            e.insert(display.section(u'=', 0, 0), display.section(u'=', 1));
        e.insert(u"XDG_RUNTIME_DIR"_s, dir.path());
        QProcess window;
        window.setProcessEnvironment(e);
        // The display that is not there ends Qt's start with an abort: no core file for it.
        window.setChildProcessModifier([] {
            const rlimit none{0, 0};
            ::setrlimit(RLIMIT_CORE, &none);
        });
        QFile::remove(program + u"kestrvan.cfg"_s);
        window.start(command.front(), command.mid(1));
        // Not started, the process id is 0, and the signal would go to this test's own group.
        if (sig && window.waitForStarted() && QTest::qWaitFor([&] { return handlesSignal(window.processId(), sig); }, 30000))
            ::kill(static_cast<pid_t>(window.processId()), sig);
        window.waitForFinished(60000);
        QStringList lines{u"[%1] %2, signal %3: "_s.arg(display.isEmpty() ? u"no display"_s : display, command.join(u' ')).arg(sig)
                          + (window.exitStatus() == QProcess::NormalExit ? u"status %1"_s.arg(window.exitCode()) : u"crashed"_s)
                          + u", settings %1 bytes"_s.arg(QFileInfo(program + u"kestrvan.cfg"_s).size())};
        const QByteArray out = window.readAllStandardOutput(), err = window.readAllStandardError();
        for (const auto &[text, mark] : {std::pair{out, "out| "}, {err, "err| "}})
            for (const QString &line : QString::fromUtf8(text).split(u'\n').first(text.count('\n')))
                lines.append(QLatin1String(mark) + line);
        return lines;
    };
    const QString offscreen = u"QT_QPA_PLATFORM=offscreen"_s, kestrelvane = program + u"kestrelvane"_s;
    QStringList record;
    for (const int sig : {SIGTERM, SIGHUP, SIGINT})
        record += run(offscreen, {kestrelvane, dir.path()}, sig);
    record += run({}, {kestrelvane, u"--help"_s});
    record += run(offscreen, {kestrelvane, u"/a"_s, u"/b"_s});
    record += run({}, {kestrelvane, dir.path()});
    expectAsRecorded(u"window-program"_s, record, dir.path());
    // A Wayland display alone is one to try.
    const QStringList wayland = run(u"WAYLAND_DISPLAY=kv-none"_s, {kestrelvane, dir.path()});
    EXPECT_FALSE(wayland.join(u'\n').contains(u"no display"_s)) << wayland.join(u'\n').toStdString();
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
    // A display number of its own, so that test runs side by side do not race for the first free one.
    const QString first = QString::number(100 + QCoreApplication::applicationPid() % 800);
    const QStringList session = run({}, {u"xvfb-run"_s, u"-a"_s, u"-n"_s, first, u"sh"_s, dir.filePath(u"session"_s), kestrelvane,
                                         dir.path(), dir.filePath(u"errors"_s)});
    EXPECT_TRUE(session.contains(u"out| 3 messages, status 1"_s)) << session.join(u'\n').toStdString()
                                                                   << readAll(dir.filePath(u"errors"_s)).constData();
}
