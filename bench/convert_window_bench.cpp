// The window converting every WAV of a folder to MP3, as a user does it: Make All, Make Mp3, and
// the run driven by the window's own timer and wake-ups until Close is enabled. Prints the wall
// time, the CPU seconds of the codecs, and the longest gap between two ticks of tmrEncode (100 ms
// when the event thread never stalls), and the longest single event handled on the event thread
// (wall and that thread's CPU time: with more codecs than processors the wall time includes
// waiting for a processor), and the CPU seconds of the window's own process.
// Usage: convert_window_bench PROGRAM_FOLDER WAV_FOLDER SLOTS

#include <algorithm>
#include <cstdio>

#include <ctime>

#include <sys/resource.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>

#include "gui/mainwindow.h"

#include "benchwindow.h"

namespace {

using kv::bench::RealEnvironment;

double threadCpuSeconds()
{
    timespec t{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// Times every event the event thread handles at the outermost level.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;
    double longestWall = 0, longestCpu = 0;
    bool timing = false;
    QByteArray longestWhat; // the receiver and event type of the longest event, for stderr

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (!timing || m_depth > 0)
            return QApplication::notify(receiver, event);
        ++m_depth;
        QElapsedTimer wall;
        wall.start();
        const double cpu = threadCpuSeconds();
        const bool result = QApplication::notify(receiver, event);
        longestWall = std::max(longestWall, static_cast<double>(wall.nsecsElapsed()) / 1e6);
        const double spent = (threadCpuSeconds() - cpu) * 1e3;
        if (spent > longestCpu) {
            longestCpu = spent;
            longestWhat = QByteArray(receiver->metaObject()->className()) + ' ' + receiver->objectName().toUtf8() + " event "
                          + QByteArray::number(static_cast<int>(event->type()));
        }
        --m_depth;
        return result;
    }

private:
    int m_depth = 0;
};

double cpuSeconds(int who)
{
    rusage usage{};
    ::getrusage(who, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
           + static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    TimedApplication app(argc, argv);
    if (argc < 4) {
        std::fputs("usage: convert_window_bench PROGRAM_FOLDER WAV_FOLDER SLOTS\n", stderr);
        return 2;
    }
    const QString program = QString::fromLocal8Bit(argv[1]);
    const QString folder = QString::fromLocal8Bit(argv[2]);
    const int slots = std::clamp(QByteArray(argv[3]).toInt(), 1, 8);
    RealEnvironment real(program, QStringLiteral("/"), [slots] { return slots; });
    kv::MainController &c = real.controller;
    kv::StartOptions options{program, program + QStringLiteral("config"), true, folder, QLocale::system()};
    if (c.Main(options) != kv::StartEnd::Running)
        return 1;
    kv::MainWindow window(c);
    window.resize(1024, 700);
    window.show();

    auto *timer = window.findChild<QTimer *>(QStringLiteral("tmrEncode"));
    auto *close = window.findChild<QPushButton *>(QStringLiteral("cmbEncode_1"));
    QElapsedTimer wall;
    qint64 lastTick = -1;
    qint64 longestGap = 0;
    QObject::connect(timer, &QTimer::timeout, [&] {
        const qint64 now = wall.nsecsElapsed();
        if (lastTick >= 0)
            longestGap = std::max(longestGap, now - lastTick);
        lastTick = now;
    });
    int wakeups = 0, ticks = 0;
    for (QSocketNotifier *n : window.findChildren<QSocketNotifier *>())
        if (n->socket() == kv::PosixProcesses::exitEventDescriptor())
            QObject::connect(n, &QSocketNotifier::activated, [&] { ++wakeups; });
    QObject::connect(timer, &QTimer::timeout, [&] { ++ticks; });
    QTimer poll;
    poll.setInterval(5);
    QObject::connect(&poll, &QTimer::timeout, [&] {
        // Not quit(): that asks the window to close, which it refuses while the frame shows.
        if (close->isEnabled())
            QCoreApplication::exit(0);
    });

    // The window's first paint is start-up's, not the run's.
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 300)
        QApplication::processEvents(QEventLoop::AllEvents, 50);

    const double cpuBefore = cpuSeconds(RUSAGE_CHILDREN);
    const double ownBefore = cpuSeconds(RUSAGE_SELF);
    wall.start();
    app.timing = true;
    window.findChild<QAction *>(QStringLiteral("tbMain_6"))->trigger(); // Make All
    window.findChild<QAction *>(QStringLiteral("tbMain_1"))->trigger(); // Make Mp3
    poll.start();
    QApplication::exec();
    const double seconds = static_cast<double>(wall.nsecsElapsed()) / 1e9;
    std::printf("%.3f %.2f %.1f %.1f %.1f %.3f\n", seconds, cpuSeconds(RUSAGE_CHILDREN) - cpuBefore, static_cast<double>(longestGap) / 1e6,
                app.longestWall, app.longestCpu, cpuSeconds(RUSAGE_SELF) - ownBefore);
    std::fprintf(stderr, "longest event: %s; %d exit wake-ups, %d timer ticks\n", app.longestWhat.constData(), wakeups, ticks);
    return 0;
}
