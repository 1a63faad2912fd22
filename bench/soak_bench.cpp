// The window's soak: in one process, every WAV of a folder converted to MP3 with 8 slots, then
// the MP3s decoded back to WAV (the WAVs they replace go to the trash), for several rounds, all
// driven through the toolbar and the conversion frame's buttons as a user drives them. After each
// round it reads the process's resident memory, its open descriptors, its children left over
// (zombies among them), and whether every target is whole: each MP3 listed by the window with a
// duration of 0:00:01, each WAV listed with 0:00:01 and back at its source's size.
// Goals: resident memory at the end of every later round within 5 MB of the first round's end
// (the first round is the warm-up), the descriptors of the start, no child, every target valid.
// Exit status 1 when a goal is missed.
// Usage: soak_bench WORK ROUNDS   (WORK holds prog/codec/ and wav/; its data/ becomes the
// XDG_DATA_HOME, so the replaced files go to a trash of the benchmark's own)

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <set>

#include <dirent.h>
#include <unistd.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>

#include "gui/mainwindow.h"
#include "media/mediainfo.h"

#include "benchwindow.h"

namespace {

using kv::bench::RealEnvironment;

constexpr double RssGoalMb = 5.0;
constexpr int Slots = 8;
constexpr int RunLimitMs = 30 * 60 * 1000; // a run that takes longer has stalled

long rssKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    return -1;
}

// What each open descriptor points at, so a descriptor left over can be named.
std::multiset<QByteArray> openDescriptors()
{
    std::multiset<QByteArray> out;
    DIR *dir = ::opendir("/proc/self/fd");
    if (dir == nullptr)
        return out;
    const int own = ::dirfd(dir);
    while (const dirent *e = ::readdir(dir)) {
        if (e->d_name[0] == '.' || std::atoi(e->d_name) == own)
            continue;
        char target[4096];
        const QByteArray link = QByteArray("/proc/self/fd/") + e->d_name;
        const ssize_t n = ::readlink(link.constData(), target, sizeof target);
        out.insert(n > 0 ? QByteArray(target, n) : QByteArray("?"));
    }
    ::closedir(dir);
    return out;
}

struct Children
{
    int all = 0;
    int zombies = 0;
};

// This process's children from /proc/*/stat: the state follows the command's closing parenthesis,
// then the parent's id.
Children children()
{
    Children c;
    const pid_t self = ::getpid();
    DIR *proc = ::opendir("/proc");
    if (proc == nullptr)
        return c;
    while (const dirent *e = ::readdir(proc)) {
        if (e->d_name[0] < '0' || e->d_name[0] > '9')
            continue;
        QFile stat(QStringLiteral("/proc/%1/stat").arg(QLatin1String(e->d_name)));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QByteArray line = stat.readAll();
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (fields.size() < 2 || fields[1].toInt() != self)
            continue;
        ++c.all;
        if (fields[0] == "Z")
            ++c.zombies;
    }
    ::closedir(proc);
    return c;
}

// Runs the event loop until `done`, calling `sample` every 20 ms; false after `limitMs`.
bool runUntil(const std::function<bool()> &done, int limitMs, const std::function<void()> &sample = {})
{
    QEventLoop loop;
    QElapsedTimer waited;
    waited.start();
    QTimer poll;
    poll.setInterval(20);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (sample)
            sample();
        if (done() || waited.elapsed() > limitMs)
            loop.quit();
    });
    poll.start();
    if (!done())
        loop.exec();
    return done();
}

void settle()
{
    runUntil([] { return false; }, 300);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

int filesIn(const QString &folder)
{
    return static_cast<int>(QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System).size());
}

class Soak
{
public:
    Soak(kv::MainWindow &window, const kv::MainController &controller, QString wavFolder)
        : m_window(window), m_controller(controller), m_folder(std::move(wavFolder))
    {
        m_close = window.findChild<QPushButton *>(QStringLiteral("cmbEncode_1"));
        m_stop = window.findChild<QPushButton *>(QStringLiteral("cmbEncode_0"));
        m_jobs = window.findChild<QTreeView *>(QStringLiteral("lstCode"));
        m_list = window.findChild<QTreeView *>(QStringLiteral("lstMain"));
    }

    void toolbar(int position) const
    {
        m_window.findChild<QAction *>(QStringLiteral("tbMain_%1").arg(position))->trigger();
    }
    bool makeAllPressed() const
    {
        return m_window.findChild<QAction *>(QStringLiteral("tbMain_%1").arg(kv::MakeAll))->isChecked();
    }

    struct RunResult
    {
        double seconds = 0;
        bool ended = false;
        int done = 0;
        int mostRunning = 0; // the most jobs shown "In Progress" at once
    };

    // A Make command over every listed file, to its end, then Close.
    RunResult run(int make)
    {
        RunResult r;
        QElapsedTimer wall;
        wall.start();
        toolbar(make);
        QElapsedTimer sampled;
        sampled.start();
        r.ended = runUntil([this] { return m_close->isEnabled(); }, RunLimitMs, [&] {
            if (sampled.elapsed() >= 100) {
                r.mostRunning = std::max(r.mostRunning, jobsWith(m_controller.text().statusInProgress));
                sampled.restart();
            }
        });
        r.seconds = static_cast<double>(wall.nsecsElapsed()) / 1e9;
        if (!r.ended) {
            // Waiting jobs break off and the running codecs finish by themselves.
            m_stop->click();
            runUntil([this] { return m_close->isEnabled(); }, 120000);
        }
        r.done = jobsWith(m_controller.text().statusDone);
        m_close->click();
        return r;
    }

    // The listed rows of the shown kind whose duration is one second and, for WAVs, whose file
    // has the size its source had; rows that are not targets of a source count as invalid.
    int validRows(const std::map<QString, qint64> &sources, const QString &extension, bool checkSize) const
    {
        const QAbstractItemModel *m = m_list->model();
        int valid = 0;
        for (int r = 0; r < m->rowCount(); ++r) {
            const QString name = m->index(r, kv::MediaInfo::Name).data().toString();
            const QString base = name.left(name.size() - extension.size());
            const auto source = sources.find(base);
            if (!name.endsWith(extension) || source == sources.end())
                continue;
            if (m->index(r, kv::MediaInfo::Duration).data().toString() != QLatin1String("0:00:01"))
                continue;
            if (checkSize && QFileInfo(m_folder + name).size() != source->second)
                continue;
            ++valid;
        }
        return valid;
    }
    int listedRows() const { return m_list->model()->rowCount(); }

private:
    int jobsWith(const QString &status) const
    {
        const QAbstractItemModel *m = m_jobs->model();
        int n = 0;
        for (int r = 0; r < m->rowCount(); ++r)
            if (m->index(r, 1).data().toString() == status)
                ++n;
        return n;
    }

    kv::MainWindow &m_window;
    const kv::MainController &m_controller;
    QString m_folder;
    QPushButton *m_close = nullptr;
    QPushButton *m_stop = nullptr;
    QTreeView *m_jobs = nullptr;
    QTreeView *m_list = nullptr;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::fputs("usage: soak_bench WORK ROUNDS\n", stderr);
        return 2;
    }
    const QString work = QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath();
    const int rounds = std::max(1, QByteArray(argv[2]).toInt());
    // The trash of the benchmark's own, on the workload's device, so the home trash takes the files.
    const QString trash = work + QStringLiteral("/data/Trash");
    QDir().mkpath(work + QStringLiteral("/data"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(work + QStringLiteral("/data")));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    const QString program = work + QStringLiteral("/prog/");
    const QString folder = work + QStringLiteral("/wav/");
    std::map<QString, qint64> sources; // base name -> the WAV's size
    for (const QFileInfo &f : QDir(folder).entryInfoList({QStringLiteral("*.wav")}, QDir::Files))
        sources[f.completeBaseName()] = f.size();
    const int count = static_cast<int>(sources.size());

    // Eight slots whatever the machine has: more codecs than processors is the harder case.
    RealEnvironment real(program, work, [] { return Slots; });
    kv::MainController &controller = real.controller;
    if (controller.Main(kv::StartOptions{program, work + QStringLiteral("/config"), true, folder, QLocale::c()})
        != kv::StartEnd::Running)
        return 2;
    kv::MainWindow window(controller);
    window.resize(1024, 700);
    window.show();
    Soak soak(window, controller, folder);
    soak.toolbar(kv::ShowWav);
    if (!soak.makeAllPressed())
        soak.toolbar(kv::MakeAll);
    settle();

    const long startRss = rssKb();
    const std::multiset<QByteArray> startFds = openDescriptors();
    std::printf("%d one-second WAVs, %d slots, %d rounds; at the start: RSS %.1f MB, %zu descriptors\n", count,
                controller.processorCount(), rounds, static_cast<double>(startRss) / 1024.0, startFds.size());
    std::printf("round  encode s  most busy  decode s  trashed  RSS MB  vs round 1  fds  children  zombies  "
                "MP3s valid  WAVs valid\n");
    std::fflush(stdout);

    bool ok = count > 0;
    long firstRss = 0;
    for (int round = 1; round <= rounds; ++round) {
        soak.toolbar(kv::ShowWav);
        const Soak::RunResult encode = soak.run(kv::MakeMp3);
        soak.toolbar(kv::ShowMp3);
        const int mp3Rows = soak.listedRows();
        const int mp3Valid = soak.validRows(sources, QStringLiteral(".mp3"), false);
        const Soak::RunResult decode = soak.run(kv::MakeWav);
        soak.toolbar(kv::ShowWav);
        const int wavRows = soak.listedRows();
        const int wavValid = soak.validRows(sources, QStringLiteral(".wav"), true);

        // Round 1 replaces the WAVs only; later rounds the MP3s as well.
        const int trashed = filesIn(trash + QStringLiteral("/files"));
        const int trashExpected = round == 1 ? count : 2 * count;
        QDir(trash).removeRecursively();

        settle();
        const long rss = rssKb();
        if (round == 1)
            firstRss = rss;
        const std::multiset<QByteArray> fds = openDescriptors();
        const Children left = children();
        const double growthMb = static_cast<double>(rss - firstRss) / 1024.0;
        std::printf("%5d  %8.1f  %9d  %8.1f  %7d  %6.1f  %+10.1f  %3zu  %8d  %7d  %5d/%d  %5d/%d\n", round, encode.seconds,
                    encode.mostRunning, decode.seconds, trashed, static_cast<double>(rss) / 1024.0, growthMb, fds.size(),
                    left.all, left.zombies, mp3Valid, mp3Rows, wavValid, wavRows);
        std::fflush(stdout);

        const auto fail = [&ok](const char *what) {
            std::printf("  missed: %s\n", what);
            ok = false;
        };
        if (!encode.ended || !decode.ended)
            fail("a run did not end");
        if (encode.done != count || decode.done != count)
            fail("a job did not finish Done");
        // Sampled every 100 ms: a run of a few files may end between two samples.
        if (count >= 100 && encode.mostRunning != Slots)
            fail("the encoders did not fill every slot");
        if (mp3Rows != count || mp3Valid != count || wavRows != count || wavValid != count)
            fail("a target is missing or invalid");
        if (trashed != trashExpected)
            fail("the replaced files did not all reach the benchmark's trash");
        if (growthMb > RssGoalMb || growthMb < -RssGoalMb)
            fail("resident memory moved more than 5 MB from round 1's end");
        if (fds != startFds) {
            fail("descriptors differ from the start's");
            std::multiset<QByteArray> extra;
            std::set_difference(fds.begin(), fds.end(), startFds.begin(), startFds.end(), std::inserter(extra, extra.end()));
            for (const QByteArray &d : extra)
                std::printf("    left open: %s\n", d.constData());
        }
        if (left.all != 0)
            fail("a child of the window is left (zombie or running)");
    }
    std::printf("%s\n", ok ? "every goal met" : "a goal was missed");
    return ok ? 0 : 1;
}
