#include <gtest/gtest.h>

#include <csignal>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QLabel>
#include <QToolButton>
#include <QLineEdit>
#include <QComboBox>
#include <QHeaderView>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "engine/conversionrun.h"
#include "gui/guiplatform.h"
#include "platform/posix/posixclock.h"
#include "platform/posix/posixfolders.h"
#include "platform/posix/posixprocesses.h"
#include "support/qtprinters.h"
#include "windowrig.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

namespace {

// Every codec entry is this script. It logs its name and arguments, then acts by the source's
// name: fail*, crash*, empty*, hang*, flood* and slow* misbehave as they say, others write 4 KB.
// Each ends by itself, a hang after 30 s.
// Codecs start with no environment, so the log's path is written into the script.
const char codecScript[] = R"(#!/bin/sh
PATH=/usr/bin:/bin
line=$(basename "$0"); for a in "$@"; do line="$line [$a]"; done
echo "$line" >> '%1'
eval "src=\${$(($# - 1))}"; eval "dst=\${$#}"
case $(basename "$src") in
fail*) echo "cannot read $src" >&2; exit 1 ;;
crash*) kill -SEGV $$ ;;
empty*) : > "$dst"; exit 0 ;;
hang*) head -c 3000 /dev/zero > "$dst"; exec sleep 30 ;;
flood*) head -c 3000000 /dev/zero | tr '\000' x >&2; echo; echo "last words" >&2; head -c 4096 /dev/zero > "$dst"; exit 2 ;;
slow*) sleep 0.6 ;;
esac
sleep 0.05
head -c 4096 /dev/zero > "$dst"
)";

// Free space that shrinks at every query, so a refreshed panel reads differently.
struct Folders : PosixFolders
{
    std::int64_t clusters = 100000;
    std::optional<FreeSpace> freeSpace(const QString &) override { return FreeSpace{clusters -= 1000, 8, 512}; }
};

struct Session : WindowRig
{
    QString music = dir.path() + u"/music/"_s, log = dir.path() + u"/codec.log"_s;
    Folders folders;
    GuiMessages messages;
    PosixProcesses processes;
    PosixClock clock;
    int beeps = 0;
    int processors = 2;

    // A program folder with the script as every codec, and a music folder with these files:
    // WAV names get a real 44100 Hz WAV, other kinds the fixture of their kind.
    explicit Session(const QStringList &names)
    {
        QDir().mkpath(music);
        installCodecs(program, QString::fromLatin1(codecScript).arg(log).toUtf8());
        const std::map<QString, QString> fixtures{{u"wav"_s, u"wav/stereo-16bit-44100.wav"_s},
                                                  {u"mp3"_s, u"mp3/vbr.mp3"_s},
                                                  {u"ogg"_s, u"ogg/q-nominal160.ogg"_s},
                                                  {u"mpc"_s, u"mpc/stereo-44100.mpc"_s}};
        for (const QString &name : names)
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/") + fixtures.at(name.right(3).toLower()), music + name);
    }
    ~Session()
    {
        // No test leaves a codec behind; the window and controller go before the parts they use.
        if (controller && controller->run())
            for (int row = 0; row < static_cast<int>(controller->run()->jobs().size()); ++row)
                controller->abortJob(row);
        window.reset();
        controller.reset();
    }

    void start()
    {
        Environment environment = WindowRig::environment(folders, messages);
        environment.processes = &processes;
        environment.clock = &clock;
        environment.beep = [this] { ++beeps; };
        environment.processorCount = [n = processors] { return n; };
        environment.wakeups = processes.wakeups();
        ASSERT_EQ(open(environment, music), StartEnd::Running);
    }

    // Make All, then a Make command: every listed file becomes a job.
    void makeAll(int make) const
    {
        toolbar(MakeAll)->trigger();
        toolbar(make)->trigger();
    }
    QTreeView *jobs() const { return w<QTreeView>(u"lstCode"_s); }
    QPushButton *stop() const { return w<QPushButton>(u"cmbEncode_0"_s); }
    QPushButton *close() const { return w<QPushButton>(u"cmbEncode_1"_s); }
    bool frameShown() const { return !w(u"frEncode"_s)->isHidden(); }
    QString finishedLine() const { return w<QLabel>(u"lblEncodeTime_2"_s)->text(); }

    // Job rows as "name status", in list order.
    QStringList rows() const
    {
        QStringList out;
        const QAbstractItemModel *m = jobs()->model();
        for (int r = 0; r < m->rowCount(); ++r)
            out.append(m->index(r, 0).data().toString() + u' ' + m->index(r, 1).data().toString());
        return out;
    }
    QString cell(int row, int column, int role = Qt::DisplayRole) const
    {
        return jobs()->model()->index(row, column).data(role).toString();
    }
    bool bold(int row) const { return jobs()->model()->index(row, 0).data(Qt::FontRole).value<QFont>().bold(); }
    bool statusOf(int row, const QString &status) const { return cell(row, 1) == status; }
    void press(int row, Qt::Key key) const
    {
        jobs()->setFocus();
        jobs()->setCurrentIndex(jobs()->model()->index(row, 0));
        QTest::keyClick(jobs(), key);
    }

    void tick(const QString &name)
    {
        for (int r = 0; r < static_cast<int>(controller->fileList().rows.size()); ++r)
            if (controller->fileList().rows[static_cast<size_t>(r)].info[MediaInfo::Name] == name)
                controller->setRowChecked(r, true);
    }
    QStringList logged() const { return QString::fromUtf8(readAll(log)).split(u'\n', Qt::SkipEmptyParts); }
    // Waits with the event loop running, as the window does.
    static bool waitFor(const std::function<bool()> &done, int ms = 10000) { return QTest::qWaitFor(done, ms); }
    bool ended() const { return close()->isEnabled(); }
    // Every job has ended or was never started, and the run has recorded it.
    bool settled() const
    {
        const QStringList all = rows();
        return std::none_of(all.begin(), all.end(), [](const QString &r) { return r.endsWith(u' ') || r.endsWith(u"In Progress"_s); });
    }
};

} // namespace

TEST(ConversionFrame, EachMakeCommandRunsItsCodecWithItsCommandLine)
{
    const struct { std::vector<int> shows; int make; const char *file; const char *target; const char *line; } cases[] = {
        {{ShowWav}, MakeMp3, "a.wav", "a.mp3", "lame [--preset] [extreme] [--silent] [--priority]"},
        {{ShowWav}, MakeOgg, "a.wav", "a.ogg", "oggenc2 [--quiet] [--quality] [6]"},
        {{ShowWav}, MakeMpc, "a.wav", "a.mpc", "mppenc [--overwrite] [--silent] [--insane]"},
        {{ShowMp3}, MakeWav, "a.mp3", "a.wav", "lame [--decode]"},
        {{ShowOgg}, MakeWav, "a.ogg", "a.wav", "oggdec"},
        {{ShowMpc}, MakeWav, "a.mpc", "a.wav", "mppdec"},
        // The decoder follows the Show filter pressed last.
        {{ShowMp3, ShowMpc, ShowOgg}, MakeWav, "a.ogg", "a.wav", "oggdec"},
        // Show Wav disables Make Wav: nothing starts.
        {{ShowMp3, ShowWav}, MakeWav, "a.wav", nullptr, nullptr},
    };
    for (const auto &k : cases) {
        SCOPED_TRACE(k.line ? k.line : "disabled");
        Session s({QLatin1String(k.file)});
        s.start();
        for (const int show : k.shows)
            s.toolbar(show)->trigger();
        s.tick(QLatin1String(k.file));
        s.toolbar(k.make)->trigger();
        if (k.target == nullptr) {
            EXPECT_FALSE(s.frameShown());
            EXPECT_TRUE(s.logged().isEmpty());
            continue;
        }
        ASSERT_TRUE(s.frameShown());
        ASSERT_TRUE(s.waitFor([&] { return s.ended(); }));
        const QString expected = QLatin1String(k.line) + u" ["_s + s.music + QLatin1String(k.file) + u"] ["_s + s.music
                                 + QLatin1String(k.target) + u']';
        EXPECT_EQ(s.logged(), QStringList{expected});
        EXPECT_EQ(s.rows(), QStringList{QLatin1String(k.file) + u" Done"_s});
        EXPECT_EQ(s.cell(0, EncodeJob::TargetSize), u"4 KB"_s);
        EXPECT_EQ(s.finishedLine(), u"Finished 1 of 1"_s);
        EXPECT_EQ(s.beeps, 1);
        EXPECT_FALSE(s.stop()->isEnabled());
    }
}

TEST(ConversionFrame, MakeAllConvertsEveryListedFileOtherwiseOnlyTheTickedOnes)
{
    const struct { bool all; QStringList ticked; QStringList jobs; } cases[] = {
        {false, {u"b.wav"_s}, {u"b.wav"_s}},
        {false, {u"a.wav"_s, u"c.wav"_s}, {u"a.wav"_s, u"c.wav"_s}},
        {true, {u"b.wav"_s}, {u"a.wav"_s, u"b.wav"_s, u"c.wav"_s}},
        {true, {}, {u"a.wav"_s, u"b.wav"_s, u"c.wav"_s}},
        {false, {}, {}}, // nothing ticked: nothing happens
    };
    for (const auto &k : cases) {
        SCOPED_TRACE(k.jobs.join(u' ').toStdString());
        Session s({u"a.wav"_s, u"b.wav"_s, u"c.wav"_s});
        s.start();
        for (const QString &name : k.ticked)
            s.tick(name);
        if (k.all)
            s.toolbar(MakeAll)->trigger();
        s.toolbar(MakeMp3)->trigger();
        EXPECT_EQ(s.frameShown(), !k.jobs.isEmpty());
        EXPECT_EQ(s.jobs()->model()->rowCount(), k.jobs.size());
        for (int r = 0; r < k.jobs.size(); ++r)
            EXPECT_EQ(s.cell(r, 0), k.jobs[r]);
        EXPECT_TRUE(k.jobs.isEmpty() || s.waitFor([&] { return s.ended(); }));
        // The bar and the time remaining show from the first job done, when the jobs outnumber
        // the two slots.
        EXPECT_EQ(!s.w(u"pbEncode"_s)->isHidden(), k.jobs.size() > 2);
        EXPECT_EQ(!s.w(u"lblEncodeTime_1"_s)->isHidden(), k.jobs.size() > 2);
        // A run estimated under half a second still has a bar to fill, not a busy indicator.
        EXPECT_GE(s.w<QProgressBar>(u"pbEncode"_s)->maximum(), 1);
    }
}

// Drags the right border of a column's caption by dx pixels, as a user widening it does, and
// gives how much wider the column became.
int widenedByDragging(QTreeView *view, int column, int dx)
{
    QHeaderView *header = view->header();
    const int before = header->sectionSize(column);
    const QPoint border(header->sectionViewportPosition(column) + before - 1, header->height() / 2);
    QTest::mousePress(header->viewport(), Qt::LeftButton, {}, border);
    QTest::mouseMove(header->viewport(), border + QPoint(dx, 0));
    QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, border + QPoint(dx, 0));
    return header->sectionSize(column) - before;
}

// The number columns of the file list and of the job list are sized to their texts, and a user
// who wants them wider drags their border; the name column takes what is left.
TEST(ConversionFrame, NumberColumnsOfBothListsWidenWhenTheirBorderIsDragged)
{
    Session s({u"a.wav"_s, u"b.wav"_s, u"c.wav"_s});
    s.start();
    s.makeAll(MakeMp3);
    ASSERT_TRUE(s.waitFor([&] { return s.ended(); }));
    for (QTreeView *view : {s.w<QTreeView>(u"lstMain"_s), s.jobs()})
        for (int column = 1; column < view->model()->columnCount(); ++column)
            EXPECT_EQ(widenedByDragging(view, column, 30), 30) << view->objectName().toStdString() << " " << column;
}

TEST(ConversionFrame, StopBreaksTheWaitingAtOnceAndTheRunningFinish)
{
    Session s({u"slow1.wav"_s, u"slow2.wav"_s, u"slow3.wav"_s, u"slow4.wav"_s, u"slow5.wav"_s});
    s.start();
    QAbstractItemModelTester tester(s.jobs()->model(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    s.makeAll(MakeMp3);
    // The slots fill as the command is given, not a timer's tick later.
    EXPECT_EQ(s.rows().mid(0, 3).join(u'|'), u"slow1.wav In Progress|slow2.wav In Progress|slow3.wav "_s);
    ASSERT_TRUE(s.waitFor([&] { return s.statusOf(1, u"In Progress"_s); }));
    // Two slots: two pictures, both running.
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(!s.w(u"imProc_%1"_s.arg(i))->isHidden(), i < 2) << i;
    EXPECT_EQ(s.w<QLabel>(u"imProc_0"_s)->property("activity").toString(), u"running"_s);
    // Nothing done yet: no estimate, so neither the bar nor the time remaining shows.
    EXPECT_TRUE(s.w(u"pbEncode"_s)->isHidden());
    EXPECT_TRUE(s.w(u"lblEncodeTime_1"_s)->isHidden());
    s.stop()->click();
    EXPECT_EQ(s.rows().join(u'|'), u"slow1.wav In Progress|slow2.wav In Progress|slow3.wav Break|slow4.wav Break|slow5.wav Break"_s);
    EXPECT_TRUE(s.bold(2));
    EXPECT_FALSE(s.bold(0));
    EXPECT_FALSE(s.stop()->isEnabled());
    EXPECT_FALSE(s.close()->isEnabled());
    ASSERT_TRUE(s.waitFor([&] { return s.ended(); }));
    EXPECT_EQ(s.rows().mid(0, 2).join(u'|'), u"slow1.wav Done|slow2.wav Done"_s);
    EXPECT_EQ(s.finishedLine(), u"Finished 2 of 5"_s);
    // Stopped, the run counts only its two running jobs, no more than its slots: still no bar.
    EXPECT_TRUE(s.w(u"pbEncode"_s)->isHidden());
    EXPECT_EQ(s.logged().size(), 2);
    EXPECT_EQ(s.beeps, 1);
    // Both slots show their idle picture once the run is over.
    for (const char *slot : {"imProc_0", "imProc_1"}) {
        EXPECT_FALSE(s.w(QLatin1String(slot))->isHidden()) << slot;
        EXPECT_EQ(s.w<QLabel>(QLatin1String(slot))->property("activity").toString(), u"idle"_s) << slot;
    }
}

// Eight processors: eight slots, each with its picture, running while its codec runs and idle
// once the run is over.
TEST(ConversionFrame, EachOfEightSlotsShowsItsOwnActivity)
{
    QStringList names;
    for (int i = 1; i <= 9; ++i)
        names.append(u"slow%1.wav"_s.arg(i));
    Session s(names);
    s.processors = 8;
    s.start();
    s.makeAll(MakeMp3);
    auto activity = [&](int slot) { return s.w<QLabel>(u"imProc_%1"_s.arg(slot))->property("activity").toString(); };
    ASSERT_TRUE(s.waitFor([&] { return activity(7) == u"running"_s; }));
    for (int slot = 0; slot < 8; ++slot) {
        EXPECT_FALSE(s.w(u"imProc_%1"_s.arg(slot))->isHidden()) << slot;
        EXPECT_EQ(activity(slot), u"running"_s) << slot;
    }
    ASSERT_TRUE(s.waitFor([&] { return s.ended(); }));
    for (int slot = 0; slot < 8; ++slot)
        EXPECT_EQ(activity(slot), u"idle"_s) << slot;
}

// The language switched during a run: the rows go on in the new language and the run still
// ends, with its finished line in that language.
TEST(ConversionFrame, ALanguageSwitchDuringARunKeepsItGoingToItsEnd)
{
    Session s({u"slow1.wav"_s, u"slow2.wav"_s, u"slow3.wav"_s});
    s.start();
    s.makeAll(MakeMp3);
    ASSERT_TRUE(s.waitFor([&] { return s.statusOf(0, u"In Progress"_s); }));
    s.w<QToolButton>(u"stbMain_7"_s)->click();
    EXPECT_TRUE(s.statusOf(0, u"Кодируется"_s));
    ASSERT_TRUE(s.waitFor([&] { return s.ended(); }));
    EXPECT_EQ(s.rows().join(u'|'), u"slow1.wav Готово|slow2.wav Готово|slow3.wav Готово"_s);
    EXPECT_EQ(s.cell(0, EncodeJob::TargetSize), u"4 КБ"_s);
    EXPECT_EQ(s.beeps, 1);
}

// What is typed in the MP3 command-line box is what the encoder gets.
TEST(ConversionFrame, TheTypedMp3CommandLineReachesTheEncoder)
{
    Session s({u"a.wav"_s});
    s.start();
    auto *mode = s.w<QComboBox>(u"cmbMode"_s);
    mode->setCurrentIndex(3);
    Q_EMIT mode->activated(3);
    auto *line = s.w<QLineEdit>(u"txtCmd"_s);
    ASSERT_TRUE(line->isVisible());
    line->clear();
    line->setFocus();
    QTest::keyClicks(line, u"-b 96 -q 2"_s);
    s.tick(u"a.wav"_s);
    s.toolbar(MakeMp3)->trigger();
    ASSERT_TRUE(s.waitFor([&] { return s.ended(); }));
    ASSERT_EQ(s.logged().size(), 1);
    EXPECT_TRUE(s.logged()[0].startsWith(u"lame [-b] [96] [-q] [2] "_s)) << s.logged()[0].toStdString();
}

TEST(ConversionFrame, CloseIsRefusedWhileTheFrameShowsAndCloseRefreshesTheFreeSpace)
{
    Session s({u"slow1.wav"_s, u"slow2.wav"_s, u"slow3.wav"_s});
    s.start();
    s.makeAll(MakeMp3);
    EXPECT_FALSE(s.window->close()); // during the run
    ASSERT_TRUE(s.waitFor([&] { return s.ended(); }));
    // The last completed row is the current one, in view.
    EXPECT_EQ(s.jobs()->currentIndex().row(), 2);
    EXPECT_FALSE(s.window->close()); // after it, until Close
    // A second Make while the results show starts nothing.
    s.toolbar(MakeOgg)->trigger();
    EXPECT_EQ(s.logged().size(), 3);

    const QString freeBefore = s.controller->ui().status.panel(2);
    s.close()->click();
    EXPECT_NE(s.controller->ui().status.panel(2), freeBefore);
    EXPECT_FALSE(s.frameShown());
    EXPECT_TRUE(s.window->close());
}

// Codecs that fail in every way leave the window responsive, the sources as they were, and rows
// that tell why.
TEST(ConversionFrame, FailedJobsTellWhyInTheirTooltipAndTheDetailsPane)
{
    Session s({u"crash.wav"_s, u"empty.wav"_s, u"fail.wav"_s, u"flood.wav"_s, u"ok.wav"_s});
    const QByteArray source = readAll(s.music + u"fail.wav"_s);
    s.start();
    s.makeAll(MakeMp3);
    // Error rows keep a run ticking for ever, as they always have; the rows are what counts.
    ASSERT_TRUE(s.waitFor([&] { return s.settled(); }));
    EXPECT_EQ(s.rows().join(u'|'), u"crash.wav Error|empty.wav Error|fail.wav Error|flood.wav Done|ok.wav Done"_s);
    const struct { int row; QString contains; bool warning; } tips[] = {
        {0, u"signal 11"_s, false},
        {1, u"empty target"_s, false},
        {2, u"exit status 1\ncannot read "_s + s.music + u"fail.wav"_s, false},
        {3, u"exit status 2"_s, true},
        {4, QString(), false},
    };
    for (const auto &t : tips) {
        const QString tip = s.cell(t.row, 0, Qt::ToolTipRole);
        EXPECT_TRUE(t.contains.isEmpty() ? tip.isEmpty() : tip.contains(t.contains)) << t.row << ' ' << tip.left(200).toStdString();
        EXPECT_EQ(s.jobs()->model()->index(t.row, 0).data(Qt::DecorationRole).isValid(), t.warning) << t.row;
    }
    // Megabytes of error output leave only their end.
    EXPECT_TRUE(s.cell(3, 0, Qt::ToolTipRole).endsWith(u"last words"_s));
    for (const QString &line : s.cell(3, 0, Qt::ToolTipRole).split(u'\n'))
        EXPECT_LE(line.size(), 161);

    auto *pane = s.w<QPlainTextEdit>(u"txtDetails"_s);
    EXPECT_TRUE(pane->isHidden());
    s.press(2, Qt::Key_Return);
    EXPECT_FALSE(pane->isHidden());
    EXPECT_EQ(pane->toPlainText(), u"fail.wav: Error\nno target written\nexit status 1\ncannot read "_s + s.music + u"fail.wav"_s);
    // A row that did not fail closes the pane.
    s.press(4, Qt::Key_Return);
    EXPECT_TRUE(pane->isHidden());
    EXPECT_EQ(readAll(s.music + u"fail.wav"_s), source);
}

TEST(ConversionFrame, AbortThisJobKillsAHungCodecAndEndsTheRun)
{
    Session s({u"hang.wav"_s, u"ok.wav"_s});
    s.start();
    s.makeAll(MakeMp3);
    ASSERT_TRUE(s.waitFor([&] { return s.statusOf(1, u"Done"_s) && QFile::exists(s.music + u"hang.mp3"_s); }));
    EXPECT_TRUE(s.statusOf(0, u"In Progress"_s));
    EXPECT_FALSE(s.close()->isEnabled());

    // The running row's context menu offers the abort; a finished row's offers nothing.
    const auto menuAt = [&](int row) {
        QStringList offered;
        QTimer::singleShot(50, [&] {
            if (QWidget *popup = QApplication::activePopupWidget()) {
                for (QAction *a : popup->actions())
                    offered.append(a->text());
                popup->close();
            }
        });
        const QPoint at = s.jobs()->visualRect(s.jobs()->model()->index(row, 0)).center();
        Q_EMIT s.jobs()->customContextMenuRequested(at);
        QTest::qWait(100);
        return offered;
    };
    EXPECT_EQ(menuAt(0), QStringList{u"Abort this job"_s});
    EXPECT_EQ(menuAt(1), QStringList());

    // Delete on a row that is not running does nothing.
    s.press(1, Qt::Key_Delete);
    EXPECT_TRUE(s.statusOf(0, u"In Progress"_s));

    s.press(0, Qt::Key_Delete);
    EXPECT_TRUE(s.statusOf(0, u"Error"_s));
    EXPECT_TRUE(s.bold(0));
    EXPECT_TRUE(s.cell(0, 0, Qt::ToolTipRole).startsWith(u"aborted\nsignal 9"_s));
    EXPECT_FALSE(QFile::exists(s.music + u"hang.mp3"_s));
    EXPECT_TRUE(QFile::exists(s.music + u"hang.wav"_s));
    EXPECT_TRUE(s.close()->isEnabled());
    EXPECT_EQ(s.beeps, 1);
}

TEST(ConversionFrame, AListedFolderRemovedDuringARunGivesErrorRows)
{
    Session s({u"slow1.wav"_s, u"slow2.wav"_s, u"slow3.wav"_s, u"slow4.wav"_s});
    s.start();
    s.makeAll(MakeMp3);
    ASSERT_TRUE(s.waitFor([&] { return s.statusOf(0, u"In Progress"_s); }));
    QDir(s.music).removeRecursively();
    ASSERT_TRUE(s.waitFor([&] { return s.settled(); }));
    EXPECT_EQ(s.rows().join(u'|'), u"slow1.wav Error|slow2.wav Error|slow3.wav Error|slow4.wav Error"_s);
}

// x.wav and x.WAV would both make x.mp3: the later one is left out, and the pane says so.
TEST(ConversionFrame, SourcesLeftOutForASharedTargetAreShownInThePane)
{
    Session s({u"x.wav"_s, u"x.WAV"_s});
    s.start();
    s.makeAll(MakeMp3);
    ASSERT_EQ(s.jobs()->model()->rowCount(), 1);
    auto *pane = s.w<QPlainTextEdit>(u"txtDetails"_s);
    EXPECT_FALSE(pane->isHidden());
    const QString kept = s.cell(0, 0);
    const QString left = kept == u"x.wav"_s ? u"x.WAV"_s : u"x.wav"_s;
    EXPECT_EQ(pane->toPlainText(), u"%1 left out: its target x.mp3 is made from %2 in this run"_s.arg(left, kept));
    EXPECT_TRUE(s.waitFor([&] { return s.ended(); }));
}

// SIGTERM, SIGHUP and SIGINT end the session even during a run: the running codec is killed and
// its unfinished target deleted, a finished target stays, and the settings are saved.
TEST(SessionEnd, ASignalKillsTheRunningCodecsKeepsFinishedTargetsAndSaves)
{
    Session s({u"hang.wav"_s, u"ok.wav"_s});
    s.start();
    int ended = 0;
    watchSessionEnd(s.window.get(), [&](int sig) {
        s.controller->endSession();
        ended = sig;
    });
    s.makeAll(MakeMp3);
    ASSERT_TRUE(s.waitFor([&] { return s.statusOf(1, u"Done"_s) && QFile::exists(s.music + u"hang.mp3"_s); }));
    ASSERT_FALSE(QFile::exists(s.controller->configPath()));
    ::raise(SIGHUP);
    ASSERT_TRUE(s.waitFor([&] { return ended == SIGHUP; }));
    EXPECT_EQ(s.rows().join(u'|'), u"hang.wav Killed|ok.wav Done"_s);
    EXPECT_FALSE(QFile::exists(s.music + u"hang.mp3"_s));
    EXPECT_TRUE(QFile::exists(s.music + u"ok.mp3"_s));
    EXPECT_TRUE(QFile::exists(s.music + u"hang.wav"_s));
    EXPECT_EQ(QFileInfo(s.controller->configPath()).size(), 10310);
}

// The program itself: each of the three signals saves the settings and ends it with 128 + the
// signal, once it is up.
TEST(SessionEnd, TheWindowExitsWith128PlusTheSignal)
{
    for (const int sig : {SIGTERM, SIGHUP, SIGINT}) {
        SCOPED_TRACE(sig);
        QTemporaryDir dir;
        const QString program = dir.path() + u"/prog/"_s;
        installCodecs(program, "#!/bin/sh\n");
        ASSERT_TRUE(QFile::copy(QStringLiteral(KV_BIN_DIR "/kestrelvane"), program + u"kestrelvane"_s));
        QProcess window;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        window.setProcessEnvironment(env);
        window.start(program + u"kestrelvane"_s, {dir.path()});
        ASSERT_TRUE(window.waitForStarted());
        // Up means its handler of the signal is in place: before that the signal simply kills.
        const auto handles = [&] {
            QFile status(u"/proc/%1/status"_s.arg(window.processId()));
            status.open(QIODevice::ReadOnly);
            for (const QByteArray &line : status.readAll().split('\n'))
                if (line.startsWith("SigCgt:"))
                    return (line.mid(7).trimmed().toULongLong(nullptr, 16) >> (sig - 1) & 1) != 0;
            return false;
        };
        ASSERT_TRUE(QTest::qWaitFor(handles, 30000));
        ::kill(static_cast<pid_t>(window.processId()), sig);
        ASSERT_TRUE(window.waitForFinished(20000));
        EXPECT_EQ(window.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(window.exitCode(), 128 + sig);
        EXPECT_EQ(QFileInfo(program + u"kestrvan.cfg"_s).size(), 10310);
    }
}
