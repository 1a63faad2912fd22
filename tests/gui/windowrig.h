#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

#include <QtTest>
#include <QtWidgets>

#include "app/maincontroller.h"
#include "engine/conversionrun.h"
#include "gui/guiplatform.h"
#include "gui/mainwindow.h"
#include "platform/posix/posixclock.h"
#include "platform/posix/posixfiles.h"
#include "platform/posix/posixfolders.h"
#include "platform/posix/posixinstancelock.h"
#include "platform/posix/posixprocesses.h"
#include "platform/volumes.h"
#include "support/bytefiles.h"
#include "support/qtprinters.h"

namespace kv::test {

// A view's rows as the model's signals announce them (headers first, a bold cell marked "*"): now() unless one went unannounced.
struct ModelMirror : QObject
{
    QAbstractItemModel *model;
    std::vector<QStringList> rows = now();

    explicit ModelMirror(QAbstractItemModel *m) : model(m)
    {
        connect(model, &QAbstractItemModel::modelReset, this, [this] { rows = now(); }); // the models' only row change
        connect(model, &QAbstractItemModel::headerDataChanged, this, [this] { rows.at(0) = now().front(); });
        connect(model, &QAbstractItemModel::dataChanged, this, [this](const QModelIndex &from, const QModelIndex &to) {
            for (int r = from.row(); r <= to.row(); ++r)
                for (int c = from.column(); c <= to.column(); ++c)
                    rows.at(static_cast<size_t>(r) + 1)[c] = cell(r, c);
        });
    }
    QString cell(int r, int c) const
    {
        const QModelIndex i = r < 0 ? QModelIndex() : model->index(r, c);
        const QVariant text = r < 0 ? model->headerData(c, Qt::Horizontal) : i.data();
        return text.toString() + (i.data(Qt::FontRole).value<QFont>().bold() ? QStringLiteral("*") : QString());
    }
    std::vector<QStringList> now() const
    {
        std::vector<QStringList> all(static_cast<size_t>(model->rowCount()) + 1);
        for (int r = -1; r < model->rowCount(); ++r)
            for (int c = 0; c < model->columnCount(); ++c)
                all[static_cast<size_t>(r + 1)].append(cell(r, c));
        return all;
    }
};

// A frame's command buttons keep to its right edge, side by side at their own width, as a dialog's do.
inline bool atRightEdge(const QList<QWidget *> &buttons)
{
    int edge = buttons.front()->parentWidget()->contentsRect().right();
    for (auto b = buttons.rbegin(); b != buttons.rend(); edge = (*b)->geometry().left(), ++b)
        if (edge - (*b)->geometry().right() > 24 || (*b)->width() > (*b)->sizeHint().width())
            return false;
    return true;
}

inline void installCodecs(const QString &program, const QByteArray &script)
{
    QDir().mkpath(program + QStringLiteral("codec"));
    for (const char *codec : {"lame", "madplay", "mppenc", "mppdec", "oggenc2", "oggdec"}) {
        const QString entry = program + QStringLiteral("codec/") + QLatin1String(codec);
        write(entry, script);
        QFile::setPermissions(entry, QFile::permissions(entry) | QFile::ExeOwner);
    }
}

struct Recorder : Messages
{
    QStringList shown;
    void information(const QString &t) override { shown.append(QStringLiteral("i ") + t); }
    void critical(const QString &t) override { shown.append(QStringLiteral("c ") + t); }
};

struct OneDrive : Volumes
{
    std::vector<Volume> drives; // the temporary folder, plus those plugged in during a test: the tree never wanders
    std::vector<Volume> mounted() override { return drives; }
};

// Real folders: a free space shrinking at each query, folders refused (the tests run as any user), names swapped in.
struct ShrinkingFolders : PosixFolders
{
    std::int64_t clusters = 100000;
    std::int64_t shrink = 1000;
    std::set<QString> refused;
    std::map<QString, QStringList> swapped;
    std::optional<FreeSpace> freeSpace(const QString &) override { return FreeSpace{clusters -= shrink, 8, 512}; }
    bool refuses(const QString &f) const { return refused.count(QDir::cleanPath(f)) != 0; }
    std::optional<QStringList> listFiles(const QString &f, const QString &p) override
    {
        std::optional<QStringList> names = refuses(f) ? std::nullopt : PosixFolders::listFiles(f, p);
        if (names)
            *names += swapped[QDir::cleanPath(f)];
        return names;
    }
    std::optional<FolderListing> listFolder(const QString &f) override
    {
        return refuses(f) ? std::nullopt : PosixFolders::listFolder(f);
    }
};

// The window of a controller started in a program folder there, with real processes; it and the window, last, go first.
struct ProcessRig
{
    QTemporaryDir dir;
    const QString program = dir.path() + QStringLiteral("/prog/");
    PosixFiles files;
    OneDrive drive;
    GuiBusyCursor busy;
    ShrinkingFolders folders;
    Recorder messages;
    PosixProcesses processes;
    PosixClock clock;
    std::unique_ptr<PosixInstanceLock> lock;
    std::unique_ptr<MainController> controller;
    std::unique_ptr<MainWindow> window;
    ProcessRig() { drive.drives = {Volume{dir.path(), QStringLiteral("ext4")}}; }
    // No test leaves a codec behind.
    ~ProcessRig()
    {
        if (controller && controller->run())
            for (int row = 0; row < static_cast<int>(controller->run()->jobs().size()); ++row)
                controller->abortJob(row);
    }

    // What every start needs; a test adds the rest before open().
    Environment environment()
    {
        window.reset();
        controller.reset();
        lock = std::make_unique<PosixInstanceLock>(program);
        return Environment{files, folders, drive, *lock, messages, busy, headerReaders(files), [] { return 2; },
                           {}, &processes, &clock, {}, processes.wakeups()};
    }
    StartEnd open(const Environment &environment, const QString &folder, bool programFolderWritable = true)
    {
        controller = std::make_unique<MainController>(environment);
        const StartEnd end = controller->Main(
            StartOptions{program, dir.path() + QStringLiteral("/config"), programFolderWritable, folder, QLocale::c()});
        if (end == StartEnd::Running) {
            window = std::make_unique<MainWindow>(*controller);
            window->placeWindow();
            window->show();
        }
        return end;
    }

    template <typename T = QWidget> T *w(QAnyStringView name) const
    {
        T *found = window->findChild<T *>(name.toString());
        EXPECT_NE(found, nullptr) << name.toString().toStdString();
        return found;
    }
    QAction *toolbar(int position) const { return w<QAction>(QStringLiteral("tbMain_%1").arg(position)); }
    void tab(int i) const { w<QTabBar>("TabOpt")->setCurrentIndex(i); }
    // An entry of a list chosen as a user chooses it: shown, then acted on.
    void choose(const char *combo, int i) const
    {
        auto *c = w<QComboBox>(combo);
        c->setCurrentIndex(i);
        Q_EMIT c->activated(i);
    }
    // Lets the event loop run free, as the program does: a wait sleeping between polls would hide a wake-up that spins it.
    static bool waitFor(const std::function<bool()> &done, int ms = 10000)
    {
        QEventLoop loop;
        QTimer check;
        QObject::connect(&check, &QTimer::timeout, &loop, [&] {
            if (done())
                loop.quit();
        });
        check.start(5);
        QTimer::singleShot(ms, &loop, &QEventLoop::quit);
        loop.exec();
        return done();
    }
};

// The captions and values, past a view's first column, that their column is too narrow to show whole.
inline QStringList cutTexts(const QTreeView *view)
{
    QStringList cut;
    const QAbstractItemModel *m = view->model();
    const QFontMetrics cells(view->font());
    const int margins = 2 * (view->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, view) + 1);
    for (int c = 1; c < m->columnCount(); ++c) {
        const QString caption = m->headerData(c, Qt::Horizontal).toString();
        if (view->header()->fontMetrics().horizontalAdvance(caption) > view->columnWidth(c))
            cut.append(caption);
        for (int r = 0; r < m->rowCount(); ++r)
            if (const QString text = m->index(r, c).data().toString(); cells.horizontalAdvance(text) + margins > view->columnWidth(c))
                cut.append(text);
    }
    return cut;
}

} // namespace kv::test
