#include <sys/stat.h>

#include "platform/nativenames.h"
#include "settings/configrecord.h"
#include "support/fifoguard.h"
#include "windowrecord.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

namespace {

// A program folder with its codec entries and a music tree beside it, on one "drive".
struct Session : ProcessRig
{
    QString music = dir.path() + u"/music"_s;
    QString cfg = program + u"kestrvan.cfg"_s;
    QStringList opened; // documents handed to the desktop
    // The tree's pictures as read once, then again at each change announced to the view.
    std::map<QPersistentModelIndex, QString> told;

    Session()
    {
        installCodecs(program, "#!/bin/sh\n");
        for (const char *f : {"rock/old", "jazz", ".hidden", "empty"})
            QDir().mkpath(at(f));
        for (const char *f : {"vbr.mp3", "mono.mp3"})
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mp3/") + QLatin1String(f), at("rock/") + QLatin1String(f));
        write(at("jazz/notes.txt"), "x");
        QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mp3/mono.mp3"), at("rock/notes.txt")); // no list shows it
        write(at("rock/old/a.mpc"), "x");
        for (const char *f : {"rock/big1.wav", "rock/big2.wav"}) {
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"), at(f));
            QFile(at(f)).resize(20 << 20); // sparse, big enough for the forecasts to differ per setting
        }
    }
    StartEnd start(const QString &folder = {}, bool programFolderWritable = true)
    {
        Environment environment = ProcessRig::environment();
        environment.openDocument = [this](const QString &document) { opened.append(document); };
        const StartEnd end = open(environment, folder, programFolderWritable);
        told.clear();
        const auto announced = [this](const QModelIndex &from, const QModelIndex &to) {
            for (int r = from.row(); r <= to.row(); ++r)
                told[from.siblingAtRow(r)] = picture(from.siblingAtRow(r).data(Qt::DecorationRole).value<QIcon>());
        };
        if (window)
            QObject::connect(tree()->model(), &QAbstractItemModel::dataChanged, window.get(), announced);
        return end;
    }

    QString at(const char *below) const { return music + u'/' + QString::fromUtf8(below); }
    QTreeView *tree() const { return w<QTreeView>("tvMain"); }
    QAbstractItemModel *list() const { return w<QTreeView>("lstMain")->model(); }
    QToolButton *language() const { return w<QToolButton>("stbMain_7"); }
    QModelIndex node(const QString &path) const // found by its tip: the whole path
    {
        QAbstractItemModel *m = tree()->model();
        return m->match(m->index(0, 0), Qt::ToolTipRole, path, 1, Qt::MatchExactly | Qt::MatchRecursive).value(0);
    }
    // Each node's name and picture, "+" where it can open, an open one's nodes in braces, ">" at the current one.
    QString shownTree(const QModelIndex &parent = {})
    {
        QStringList nodes;
        for (int r = 0; r < tree()->model()->rowCount(parent); ++r) {
            const QModelIndex i = tree()->model()->index(r, 0, parent);
            const QString &seen = told.try_emplace(i, picture(i.data(Qt::DecorationRole).value<QIcon>())).first->second;
            QString node = (tree()->currentIndex() == i ? u">"_s : QString()) + i.data().toString() + u'[' + seen + u']';
            if (tree()->isExpanded(i))
                node += u'{' + shownTree(i) + u'}';
            else if (i.model()->hasChildren(i))
                node += u'+';
            nodes.append(node);
        }
        return nodes.join(u' ');
    }
    static QString picture(const QIcon &icon)
    {
        for (const char *name :
             {"drive-fixed", "drive-removable", "folder", "folder-open", "folder-audio", "folder-audio-open", "kestrelvane"})
            if (!icon.isNull() && icon.pixmap(16).toImage() == QIcon(u":/icons/%1.svg"_s.arg(QLatin1String(name))).pixmap(16).toImage())
                return QLatin1String(name);
        return u"?"_s;
    }
    void click(const QModelIndex &index) const
    {
        tree()->scrollTo(index);
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, tree()->visualRect(index).center());
    }
    // What the window shows, a line per part; the free space, which the machine decides, left out.
    QStringList shown()
    {
        auto *drives = w<QComboBox>("drvMain");
        auto *grid = qobject_cast<QGridLayout *>(w("frInfo")->layout());
        const auto text = [](QLayoutItem *item) { return item->widget()->property("text").toString(); };
        auto *tabs = w<QTabBar>("TabOpt");
        QStringList drive, rows, tools, stats, panels, options{tabs->tabText(tabs->currentIndex())};
        for (int i = 0; i < drives->count(); ++i)
            drive.append((i == drives->currentIndex() ? u"*"_s : QString()) + drives->itemText(i));
        for (int r = 0; r < list()->rowCount(); ++r) {
            const QModelIndex i = list()->index(r, 0);
            rows.append((i.data(Qt::CheckStateRole) == Qt::Checked ? u"+"_s : QString()) + i.data().toString());
        }
        for (int p : {MakeMp3, MakeOgg, MakeMpc, MakeWav, MakeAll, ShowWav, ShowMp3, ShowOgg, ShowMpc}) {
            const QAction *a = toolbar(p);
            tools.append(a->text() + (a->isChecked() ? u"*"_s : QString()) + (a->isEnabled() ? QString() : u" (off)"_s));
        }
        for (int r = 0; grid->itemAtPosition(r, 0) != nullptr; ++r)
            stats.append(text(grid->itemAtPosition(r, 0)) + u' ' + text(grid->itemAtPosition(r, 1)));
        for (const char *panel : {"stbMain_1", "stbMain_3", "stbMain_4", "stbMain_5", "stbMain_6", "stbMain_7", "stbMain_8"})
            panels.append(w(panel)->property("text").toString().trimmed());
        // The option controls in view with their values, captions left out.
        for (QWidget *c : w("frOptions")->findChildren<QWidget *>())
            for (const char *value : {"currentText", "value", "text"})
                if (c->isVisible() && c->property(value).isValid() && !(qobject_cast<QLabel *>(c) && qobject_cast<QLabel *>(c)->buddy())) {
                    options.append(c->objectName() + u'=' + c->property(value).toString());
                    break;
                }
        return {u"drives: "_s + drive.join(u' '), u"tree: "_s + shownTree(), (u"rows: "_s + rows.join(u' ')).trimmed(),
                u"toolbar: "_s + tools.join(u" | "_s), u"statistics: "_s + stats.join(u" | "_s),
                u"status: "_s + panels.join(u" | "_s), u"options: "_s + options.join(u" | "_s),
                u"messages: "_s + messages.shown.join(u" / "_s),
                u"pointer: "_s + (QApplication::overrideCursor() ? u"busy"_s : u"normal"_s)};
    }
    QStringList record; // each step, then the lines of what it changed in shown()
    std::map<QString, QString> last;
    void step(const QString &what, const std::function<void()> &act = {})
    {
        if (act)
            act();
        record.append(what + u':');
        for (const QString &line : shown())
            if (QString &before = last[line.section(u':', 0, 0)]; before != line)
                record.append(u"  "_s + (before = line));
    }
};

} // namespace

// What the tree shows and lists through clicks, keys, folds, folders unreadable or gone, and drives plugged and pulled.
TEST(WindowTree, ClicksKeysFoldsAndDrivesListTheFolderReached)
{
    Session s;
    // Started at a folder gone since: the deepest one left is listed, with its drive's free space.
    ASSERT_EQ(s.start(s.at("jazz/gone")), StartEnd::Running);
    EXPECT_EQ(s.controller->fileList().currentFolder, s.at("jazz/"));
    EXPECT_NE(s.w<QLabel>("stbMain_2")->text(), u"Free Disk Space: 0 MB  "_s);
    EXPECT_EQ(Session::picture(s.window->windowIcon()), u"kestrelvane"_s) << "the icon the desktop entry names";
    s.step(u"started at jazz/gone: dot-folders left out, sub-folders listed one level ahead"_s, [&] { s.tree()->setFocus(); });
    s.step(u"arrow down"_s, [&] { QTest::keyClick(s.tree(), Qt::Key_Down); });
    s.step(u"arrow up"_s, [&] { QTest::keyClick(s.tree(), Qt::Key_Up); });
    const QModelIndex music = s.node(s.music), rock = s.node(s.at("rock"));
    s.step(u"music clicked"_s, [&] { s.click(music); });
    s.step(u"rock clicked"_s, [&] { s.click(rock); });
    s.step(u"music clicked: rock shows its closed picture again"_s, [&] { s.click(music); });
    s.step(u"rock clicked, Show Mp3"_s, [&] { s.click(rock), s.toolbar(ShowMp3)->trigger(); });
    s.step(u"rock opened"_s, [&] { s.tree()->expand(rock); });
    // Folding the folder shown reads it again; a click on it then does not, so a tick stays.
    s.step(u"added.mp3 made, rock folded"_s, [&] {
        QFile::copy(s.at("rock/mono.mp3"), s.at("rock/added.mp3"));
        s.tree()->collapse(rock);
    });
    s.step(u"added.mp3 removed, rock opened and folded, the first row ticked, rock clicked"_s, [&] {
        QFile::remove(s.at("rock/added.mp3"));
        s.tree()->expand(rock), s.tree()->collapse(rock);
        s.list()->setData(s.list()->index(0, 0), Qt::Checked, Qt::CheckStateRole);
        s.click(rock);
    });
    s.step(u"jazz refused, music folded and opened, rock clicked, jazz clicked: the list stays"_s, [&] {
        s.folders.refused.insert(s.at("jazz"));
        s.tree()->collapse(music), s.tree()->expand(music);
        s.click(s.node(s.at("rock"))), s.click(s.node(s.at("jazz")));
    });
    s.step(u"rock clicked and removed, Show Mp3, rock opened: the rows stay"_s, [&] {
        s.click(s.node(s.at("rock")));
        QDir(s.at("rock")).removeRecursively();
        s.toolbar(ShowMp3)->trigger();
        s.tree()->expand(s.node(s.at("rock")));
    });
    s.step(u"the drive shown chosen again: nothing changes"_s, [&] { s.choose("drvMain", 0); });

    // The drive list is read again when it opens.
    auto *drives = s.w<QComboBox>("drvMain");
    const auto openDrives = [&] { drives->showPopup(), drives->hidePopup(); };
    const QString stick = s.dir.path() + u"/stick"_s;
    s.drive.drives.push_back(Volume{stick, u"vfat"_s});
    s.step(u"a stick plugged, the drive list opened"_s, openDrives);
    s.step(u"the stick chosen before it is ready"_s, [&] { Q_EMIT drives->activated(1); });
    s.step(u"the stick ready, Show Wav, the stick chosen, the drive list opened"_s, [&] {
        QDir().mkpath(stick + u"/album/cd1"_s);
        QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"), stick + u"/album/a.wav"_s);
        s.toolbar(ShowWav)->trigger();
        Q_EMIT drives->activated(1);
        openDrives();
    });
    const QModelIndex album = s.node(stick + u"/album"_s);
    s.step(u"album clicked"_s, [&] { s.click(album); });
    s.step(u"the stick pulled, album opened, Show Wav: no folders, the rows stay"_s, [&] {
        QDir(stick).removeRecursively();
        s.drive.drives.pop_back();
        s.tree()->expand(album);
        s.toolbar(ShowWav)->trigger();
    });
    s.step(u"the drive list opened, the first drive chosen"_s, [&] { openDrives(), Q_EMIT drives->activated(0); });
    // The program's own drive unreadable when chosen: told once, with nothing else to fall back on.
    s.step(u"the stick back and chosen, then the first drive chosen while it cannot be read"_s, [&] {
        QDir().mkpath(stick);
        s.drive.drives.push_back(Volume{stick, u"vfat"_s});
        openDrives(), Q_EMIT drives->activated(1);
        s.folders.refused.insert(QDir::cleanPath(s.dir.path()));
        openDrives(), Q_EMIT drives->activated(0);
    });
    expectAsRecorded(u"window-tree"_s, s.record, s.dir.path());
}

// The Show and Make commands' enabling, the statistics following ticks and options, the language, Help and the keys.
TEST(WindowCommands, ShowEnablingStatisticsLanguageHelpAndKeys)
{
    Session s;
    ASSERT_EQ(s.start(s.at("rock")), StartEnd::Running);
    s.step(u"started at rock"_s);
    for (const int show : {ShowMp3, ShowOgg, ShowMpc, ShowMp3, ShowWav})
        s.step(s.toolbar(show)->text(), [&] { s.toolbar(show)->trigger(); });
    s.step(u"the second row ticked"_s, [&] { s.list()->setData(s.list()->index(1, 0), Qt::Checked, Qt::CheckStateRole); });
    s.step(u"Make All"_s, [&] { s.toolbar(MakeAll)->trigger(); });
    s.step(u"MP3 at a constant bitrate"_s, [&] { s.choose("cmbMode", 2); });
    s.step(u"Musepack at quality 10"_s, [&] { s.tab(2), s.choose("cmbModeMpc", 1), s.w<QSlider>("sliMpc")->setValue(100); });
    s.step(u"Defaults"_s, [&] { s.w<QPushButton>("cmdDefault")->click(); });
    QApplication::setActiveWindow(s.window.get());
    s.step(u"Ctrl+3"_s, [&] { QTest::keyClick(s.window.get(), Qt::Key_3, Qt::ControlModifier); });
    s.step(u"Ctrl+Shift+L"_s, [&] { QTest::keyClick(s.window.get(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier); });
    s.toolbar(ShowWav)->trigger(); // a rescan lists the rows afresh, unticked
    s.toolbar(MakeAll)->trigger(); // released: only ticked rows count
    QTest::keyClick(s.window.get(), Qt::Key_L, Qt::AltModifier);
    ASSERT_TRUE(s.w("lstMain")->hasFocus());
    s.w<QTreeView>("lstMain")->setCurrentIndex(s.list()->index(0, 0));
    s.step(u"Show Wav, Make All released, Alt+L, Space on the first row"_s, [&] { QTest::keyClick(s.w("lstMain"), Qt::Key_Space); });
    expectAsRecorded(u"window-commands"_s, s.record, s.dir.path());

    // The Help panel and F1 open the one document beside the program, whichever the language.
    for (int language = 0; language < 2; ++language) {
        s.w<QToolButton>("stbMain_8")->click();
        QTest::keyClick(s.window.get(), Qt::Key_F1);
        s.language()->click();
    }
    EXPECT_EQ(s.opened, QStringList(4, s.program + u"help/rus/index.htm"_s));
}

// Saved at close (not while converting), restored; bad files in its place, a read-only program folder.
TEST(WindowConfiguration, SavedAtCloseRestoredAtTheNextStartAndRefusedWhileConverting)
{
    Session s;
    ASSERT_EQ(s.start(s.at("rock")), StartEnd::Running);
    s.w<QSlider>("sliPresetOgg")->setValue(45);
    s.choose("cmbMode", 2);
    s.tab(1);
    s.language()->click();
    s.window->resize(900, 640);
    s.window->move(30, 40);
    s.w("frEncode")->show();
    EXPECT_FALSE(s.window->close() || QFile::exists(s.cfg));
    s.w("frEncode")->hide();
    s.step(u"Ogg at quality 4.5, MP3 at a constant bitrate, the Ogg page, Russian"_s);
    EXPECT_TRUE(s.window->close());
    ASSERT_EQ(s.start(), StartEnd::Running);
    s.step(u"closed and started again: all as before, the sizes now in Russian units"_s);
    expectAsRecorded(u"window-configuration"_s, s.record, s.dir.path());
    EXPECT_EQ(QRect(s.window->pos(), s.window->size()), QRect(30, 40, 900, 640));
    // Closed maximised, it opens again where it was before, not over the whole screen.
    s.window->showMaximized();
    ASSERT_TRUE(s.waitFor([&] { return s.window->size() != QSize(900, 640); }));
    ASSERT_TRUE(s.window->isMaximized() && s.window->close());
    ASSERT_EQ(s.start(), StartEnd::Running);
    EXPECT_EQ(s.window->size(), QSize(900, 640));

    // Files that are not one record, and a folder of that name (no bytes): defaults, and the window works.
    const auto patched = [](char fill, int at, const QByteArray &bytes) {
        return QByteArray(ConfigRecord::kSize, fill).replace(at, bytes.size(), bytes);
    };
    const struct { QByteArray bytes; const char *languageAndOggQuality; } bad[] = {
        {QByteArray(ConfigRecord::kSize - 1, '\x01'), "English 60"},
        {QByteArray(ConfigRecord::kSize, '\xC8'), "English 60"}, // the left edge overflows first
        {{}, "English 60"},
        {QByteArray(ConfigRecord::kSize, '\0'), "English -10"},
        // A zero window: Russian applied, then the MP3 mode 255 ends the load.
        {patched('\xFF', 50, QByteArray(20, '\0')), "Русский 60"},
        // The MP3 mode one past its list ends the load before the Ogg quality.
        {patched('\0', ConfigRecord::kMp3Mode, "\x04"), "English 60"},
    };
    for (const auto &b : bad) {
        b.bytes.isEmpty() ? void(QDir().mkpath(s.cfg)) : write(s.cfg, b.bytes);
        ASSERT_EQ(s.start(), StartEnd::Running);
        const QString ogg = QString::number(s.w<QSlider>("sliPresetOgg")->value());
        EXPECT_EQ(s.language()->text() + u' ' + ogg, QString::fromUtf8(b.languageAndOggQuality));
        EXPECT_TRUE(s.window->width() >= 800 && s.window->height() >= 600 && s.window->close());
        EXPECT_TRUE(b.bytes.isEmpty() ? QFileInfo(s.cfg).isDir() : QFileInfo(s.cfg).size() == ConfigRecord::kSize);
        QDir(s.cfg).removeRecursively();
        QFile::remove(s.cfg);
    }

    // A program folder that cannot be written: the settings go to the user's folder, made at the first close.
    ASSERT_EQ(s.start(s.at("jazz"), false), StartEnd::Running);
    s.language()->click();
    ASSERT_FALSE(QFileInfo::exists(s.dir.path() + u"/config"_s));
    EXPECT_TRUE(s.window->close());
    EXPECT_EQ(QFileInfo(s.dir.path() + u"/config/kestrvan.cfg"_s).size(), ConfigRecord::kSize);
    EXPECT_FALSE(QFileInfo::exists(s.cfg));
    ASSERT_EQ(s.start({}, false), StartEnd::Running);
    EXPECT_EQ(s.language()->text() + u' ' + s.controller->fileList().currentFolder, u"Русский "_s + s.at("jazz/"));
}

// A listed file swapped for a FIFO before it is read, and the configuration a FIFO: opening either would wait.
TEST(WindowFaults, FifosInPlaceOfAListedFileAndOfTheConfigurationHoldNothing)
{
    Session s;
    const QByteArray swapped = QFile::encodeName(s.at("rock/swapped.mp3")), cfg = QFile::encodeName(s.cfg);
    FifoGuard listed(swapped), config(cfg);
    ASSERT_TRUE(listed.made() && config.made());
    s.folders.swapped[s.at("rock")] = QStringList{u"swapped.mp3"_s};
    ASSERT_EQ(s.start(s.at("rock")), StartEnd::Running);
    s.toolbar(ShowMp3)->trigger();
    EXPECT_EQ(s.shown().at(2), u"rows: mono.mp3 vbr.mp3"_s);
    EXPECT_FALSE(listed.finish()) << "the scan waited for the FIFO";
    EXPECT_TRUE(s.window->close());
    EXPECT_FALSE(config.finish()) << "the save at close waited for the FIFO";
    EXPECT_TRUE(isFifo(swapped) && isFifo(cfg));
}

// A folder named in bytes that are not UTF-8 reopens at the next start, also below a UTF-8 name
// and with the field ended in zeros; a UTF-8 name the code page cannot hold opens the one above.
TEST(WindowConfiguration, FolderNamedInWindows1251OpensAgainAtTheNextStart)
{
    Session s;
    const QByteArray old = QFile::encodeName(s.at("old"));
    const auto removeAtEnd = qScopeGuard([&] { QProcess::execute(u"/bin/rm"_s, {u"-rf"_s, s.at("old")}); });
    const QByteArray cp1251 = "\xCF\xF0\xEE\xE2\xE5\xF0\xEA\xE0"; // "Проверка" in Windows-1251
    const QByteArray archive = "\xD0\x90\xD1\x80\xD1\x85\xD0\xB8\xD0\xB2"; // "Архив" in UTF-8
    // The record's folder field: UTF-8 names as Windows-1251 text, other names as their bytes.
    const struct { QByteArray folder; QByteArray opened; QByteArray field; } cases[] = {
        {old + '/' + cp1251, old + '/' + cp1251, old + '/' + cp1251},
        {old + '/' + archive + '/' + cp1251, old + '/' + archive + '/' + cp1251, old + "/\xC0\xF0\xF5\xE8\xE2/" + cp1251},
        {old + "/caf\xE9 \x98", old + "/caf\xE9 \x98", old + "/caf\xE9 \x98"}, // Latin-1, and a byte Windows-1251 leaves undefined
        {old + "/\xE6\x97\xA5\xE6\x9C\xAC", old, old + "/??"},                // "日本" in UTF-8
    };
    for (const auto &c : cases) {
        for (qsizetype cut = old.size(); cut != -1; cut = c.folder.indexOf('/', cut + 1))
            ::mkdir(c.folder.left(cut).constData(), 0755);
        ::mkdir(c.folder.constData(), 0755);
        ::mkdir(old + "/\xC0\xF0\xF5\xE8\xE2", 0755); // "Архив" in Windows-1251: the UTF-8 one goes first
        writeFile(c.folder + "/take.wav", readAll(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav")));
        ASSERT_EQ(s.start(nameFromBytes(c.folder)), StartEnd::Running);
        ASSERT_TRUE(s.window->close());
        QByteArray record = readAll(s.cfg);
        EXPECT_EQ(record.mid(ConfigRecord::kFolder, c.field.size() + 2).toHex(' ').toStdString(), (c.field + "/ ").toHex(' ').toStdString());
        for (const bool zeroEnded : {false, true}) {
            const qsizetype rest = ConfigRecord::kTextWidth - c.field.size();
            if (zeroEnded)
                write(s.cfg, record.replace(ConfigRecord::kFolder + c.field.size(), rest, QByteArray(rest, '\0')));
            ASSERT_EQ(s.start(), StartEnd::Running);
            EXPECT_EQ(s.controller->fileList().currentFolder, nameFromBytes(c.opened + '/'));
        }
        s.toolbar(ShowWav)->trigger();
        EXPECT_EQ(s.list()->rowCount(), c.folder == c.opened ? 1 : 0) << c.folder.toHex(' ').constData();
    }
}

// A message box over the hourglass shows the ordinary pointer, and the hourglass comes back.
TEST(GuiMessages, ShowTheOrdinaryPointerOverTheHourglassAndGiveItBack)
{
    GuiMessages messages;
    GuiBusyCursor busy;
    for (const bool critical : {false, true}) {
        busy.begin();
        // Closes the box that shows, noting its icon, text and the pointer over it.
        QString seen;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                const QCursor *pointer = QApplication::overrideCursor();
                seen = u"icon %1, pointer %2: "_s.arg(box->icon()).arg(pointer ? pointer->shape() : Qt::ArrowCursor) + box->text();
                box->accept();
            }
        });
        timer.start(10);
        const QString text = critical ? u"/opt/kv/codec/lame not found"_s : u"Drive is not ready, change another drive"_s;
        (messages.*(critical ? &GuiMessages::critical : &GuiMessages::information))(text);
        EXPECT_EQ(seen, u"icon %1, pointer %2: "_s.arg(critical ? QMessageBox::Critical : QMessageBox::Information)
                            .arg(Qt::ArrowCursor) + text);
        EXPECT_EQ(QApplication::overrideCursor() ? QApplication::overrideCursor()->shape() : Qt::BlankCursor, Qt::WaitCursor);
        busy.end();
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
}

// What each control shows and tells in each language and options mode; then every encoder option's values, taken as a
// user takes them (a list stepped by its arrow key, a slider dragged), with the value shown and the WAV files' forecasts.
TEST(WindowRecord, WhatEachControlShowsAndEveryOptionValueWithTheForecastsItGives)
{
    // A free space that stays the same, and WAV files of 2 GB (sparse), where a step of one kbps shows.
    Session rig;
    rig.folders.clusters = 123456;
    rig.folders.shrink = 0;
    for (const char *name : {"rock/big1.wav", "rock/big2.wav"})
        QFile(rig.at(name)).resize(std::int64_t{2} << 30);
    ASSERT_EQ(rig.start(rig.at("rock/")), StartEnd::Running);
    // Wide enough that no toolbar caption breaks in two, whatever the font.
    rig.window->resize(1600, 900);
    rig.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(rig.window.get()));
    rig.toolbar(ShowMp3)->trigger();
    rig.toolbar(MakeAll)->trigger();
    QApplication::processEvents();

    // Switched there and back first: the English record then also holds that every text comes back.
    for (int i = 0; i < 2; ++i)
        rig.language()->click();
    // The way a keyboard user walks with Tab from one control until another takes the focus.
    auto tabWalk = [&](const char *from, const char *until) {
        QStringList walk;
        rig.w(from)->setFocus();
        for (QWidget *focus = QApplication::focusWidget(); walk.isEmpty() || (focus != rig.w(until) && walk.size() < 40);
             focus = QApplication::focusWidget()) {
            walk.append(focus->objectName().isEmpty() ? QLatin1String(focus->metaObject()->className()) : focus->objectName());
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        return u"Tab: "_s + walk.join(u' ');
    };
    const std::array modes{"cmbMode", "cmbModeOgg", "cmbModeMpc"};
    for (const char *language : {"english", "russian"}) {
        QStringList whole;
        describeWidgets(rig.window.get(), whole);
        whole.append(tabWalk("drvMain", "drvMain")); // round to the drive list again
        expectAsRecorded(u"window-"_s + QLatin1String(language), whole, rig.dir.path());
        QStringList options;
        for (int tab = 0; tab < 3; ++tab) {
            rig.tab(tab);
            const char *mode = modes.at(static_cast<size_t>(tab));
            for (int i = 0; i < rig.w<QComboBox>(mode)->count(); ++i) {
                rig.choose(mode, i);
                describeWidgets(rig.w(u"frEncOpt_%1"_s.arg(tab)), options);
                options.append(tabWalk("TabOpt", "cmdDefault"));
            }
            rig.choose(mode, 0);
        }
        rig.tab(0);
        expectAsRecorded(u"window-"_s + QLatin1String(language) + u"-options"_s, options, rig.dir.path());
        rig.language()->click();
    }

    rig.toolbar(ShowWav)->trigger();
    QStringList seen;
    auto note = [&](const QString &value) {
        seen.append(QStringList{value, rig.w<QLabel>("lblInfo_9")->text(), rig.w<QLabel>("lblInfo_10")->text(),
                                rig.w<QLabel>("lblInfo_11")->text()}.join(u" | "_s));
    };
    // Each mode's value control, by page and mode; a slider's value shows in its "lbl" label.
    const struct { int tab, mode; const char *control; } options[] = {
        {0, 0, "cmbPreset"}, {0, 1, "sliAbr"},    {0, 2, "cmbCbr"},       {0, 3, "txtCmd"}, {1, 0, "sliPresetOgg"},
        {1, 1, "sliAbrOgg"}, {1, 2, "txtCmdOgg"}, {2, 0, "cmbPresetMpc"}, {2, 1, "sliMpc"}, {2, 2, "txtCmdMpc"}};
    for (const auto &[tab, mode, control] : options) {
        rig.tab(tab);
        rig.choose(modes.at(static_cast<size_t>(tab)), mode);
        seen.append(QLatin1String(control));
        if (auto *slider = qobject_cast<QSlider *>(rig.w(control))) {
            for (int v = slider->minimum(); v <= slider->maximum(); ++v) {
                slider->setSliderDown(true);
                slider->setSliderPosition(v);
                slider->setSliderDown(false);
                note(QString::number(v) + u' ' + rig.w<QLabel>(u"lbl"_s + QLatin1String(control + 3))->text());
            }
        } else if (auto *list = qobject_cast<QComboBox *>(rig.w(control))) {
            list->setFocus();
            rig.choose(control, 0);
            for (int i = 0; i < list->count(); ++i, QTest::keyClick(list, Qt::Key_Down))
                note(list->currentText());
        } else {
            note(rig.w<QLineEdit>(control)->text());
        }
    }
    expectAsRecorded(u"window-every-option"_s, seen, rig.dir.path());
}
