#include <gtest/gtest.h>

#include <map>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/nativenames.h"
#include "settings/configrecord.h"
#include "support/bytefiles.h"
#include "support/fifoguard.h"
#include "support/qtprinters.h"
#include "windowrig.h"

using namespace kv;
using namespace kv::test;
using namespace Qt::StringLiterals;

namespace {

// Real folders, except those refused here (the tests run as any user), and names added to a
// listing as if swapped in before they are read.
struct Folders : PosixFolders
{
    std::set<QString> refused;
    std::map<QString, QStringList> swapped;
    bool refuses(const QString &f) const { return refused.count(QDir::cleanPath(f)) != 0; }
    std::optional<QStringList> listFiles(const QString &f, const QString &p) override
    {
        std::optional<QStringList> names = refuses(f) ? std::nullopt : PosixFolders::listFiles(f, p);
        if (names)
            *names += swapped[QDir::cleanPath(f)];
        return names;
    }
    std::optional<FolderListing> listFolder(const QString &f) override { return refuses(f) ? std::nullopt : PosixFolders::listFolder(f); }
};

// A program folder with its codec entries and a music tree beside it, on one "drive".
struct Session : WindowRig
{
    QString music = dir.path() + u"/music"_s;
    Folders folders;
    Recorder messages;
    QStringList opened; // documents handed to the desktop

    Session()
    {
        installCodecs(program, "#!/bin/sh\n");
        for (const char *f : {"rock/old", "jazz", ".hidden", "empty"})
            QDir().mkpath(at(f));
        for (const char *f : {"vbr.mp3", "mono.mp3"})
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mp3/") + QLatin1String(f), at("rock/") + QLatin1String(f));
        write(at("jazz/notes.txt"), "x");
        // An MP3 by its bytes but not by its name: no list shows it.
        QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/mp3/mono.mp3"), at("rock/notes.txt"));
        write(at("rock/old/a.mpc"), "x");
        // Two WAV files of 20 MB (sparse), big enough for the forecasts to differ per setting.
        for (const char *f : {"rock/big1.wav", "rock/big2.wav"}) {
            QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"), at(f));
            QFile(at(f)).resize(20 << 20);
        }
    }
    // The window and controller go before the parts they use.
    ~Session() { window.reset(), controller.reset(); }
    StartEnd start(const QString &folder = {}, bool programFolderWritable = true)
    {
        Environment environment = WindowRig::environment(folders, messages);
        environment.openDocument = [this](const QString &document) { opened.append(document); };
        return open(environment, folder, programFolderWritable);
    }

    QString at(const char *below) const { return music + u'/' + QString::fromUtf8(below); }
    QString label(const char *name) const { return w<QLabel>(name)->text(); }
    QTreeView *tree() const { return w<QTreeView>("tvMain"); }
    QAbstractItemModel *list() const { return w<QTreeView>("lstMain")->model(); }
    QToolButton *language() const { return w<QToolButton>("stbMain_7"); }
    // The drive list is read again when it opens.
    int drivesListed() const
    {
        auto *drives = w<QComboBox>("drvMain");
        drives->showPopup();
        drives->hidePopup();
        return drives->count();
    }
    // The tree's node of a path, found by names below the drive.
    QModelIndex node(const char *below) const { return node(at(below)); }
    QModelIndex node(const QString &path) const
    {
        QAbstractItemModel *m = tree()->model();
        QModelIndex at = m->index(0, 0);
        if (QDir::cleanPath(path) == QDir::cleanPath(drive.root))
            return at;
        for (const QString &part : QDir(drive.root).relativeFilePath(path).split(u'/', Qt::SkipEmptyParts)) {
            QModelIndex next;
            for (int r = 0; r < m->rowCount(at); ++r)
                if (m->index(r, 0, at).data().toString() == part)
                    next = m->index(r, 0, at);
            if (!next.isValid())
                return {};
            at = next;
        }
        return at;
    }
    QStringList children(const QModelIndex &parent) const
    {
        QStringList out;
        for (int r = 0; r < tree()->model()->rowCount(parent); ++r)
            out.append(tree()->model()->index(r, 0, parent).data().toString());
        return out;
    }
    // The pictures the tree's view was told of: read once, then again at each change announced.
    std::map<QPersistentModelIndex, QString> told;
    // The tree as the view shows it: each node's name and picture, "+" where it can open, the
    // nodes of an open one in braces, ">" before the current one; the drive's path as "drive".
    QString shownTree(const QModelIndex &parent = {})
    {
        QAbstractItemModel *m = tree()->model();
        if (told.empty())
            QObject::connect(m, &QAbstractItemModel::dataChanged, window.get(), [this, m](const QModelIndex &from, const QModelIndex &to) {
                for (int r = from.row(); r <= to.row(); ++r)
                    told[m->index(r, 0, from.parent())] = picture(m->index(r, 0, from.parent()).data(Qt::DecorationRole).value<QIcon>());
            });
        QStringList nodes;
        for (int r = 0; r < m->rowCount(parent); ++r) {
            const QModelIndex i = m->index(r, 0, parent);
            QString node = (tree()->currentIndex() == i ? u">"_s : QString()) + i.data().toString().replace(drive.root, u"drive"_s)
                           + u'[' + told.try_emplace(i, picture(i.data(Qt::DecorationRole).value<QIcon>())).first->second + u']';
            if (tree()->isExpanded(i))
                node += u'{' + shownTree(i) + u'}';
            else if (m->hasChildren(i))
                node += u'+';
            nodes.append(node);
        }
        return nodes.join(u' ');
    }
    // The name of the picture file an icon shows.
    static QString picture(const QIcon &icon)
    {
        for (const char *name : {"drive-fixed", "drive-removable", "folder", "folder-open", "folder-audio", "folder-audio-open", "kestrelvane"})
            if (!icon.isNull() && icon.pixmap(16).toImage() == QIcon(u":/icons/%1.svg"_s.arg(QLatin1String(name))).pixmap(16).toImage())
                return QLatin1String(name);
        return u"?"_s;
    }
    void click(const QModelIndex &index) const
    {
        tree()->scrollTo(index);
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, tree()->visualRect(index).center());
    }
};

} // namespace

TEST(WindowTree, ExpandCollapseClickImagesAndFaults)
{
    Session s;
    ASSERT_EQ(s.start(s.music), StartEnd::Running);
    QAbstractItemModel *model = s.tree()->model();
    const QModelIndex music = s.node(s.music), rock = s.node("rock");
    // Dot-folders are left out; sub-folders are listed one level ahead.
    EXPECT_EQ(s.shownTree(), u"drive[drive-fixed]{>music[folder-open]{empty[folder] jazz[folder] rock[folder-audio]+} prog[folder]+}"_s);
    EXPECT_EQ(model->data(rock, Qt::ToolTipRole).toString(), s.at("rock")) << "a folder's tip is its whole path";
    EXPECT_EQ(Session::picture(s.window->windowIcon()), u"kestrelvane"_s) << "the icon the desktop entry names";

    s.click(rock);
    EXPECT_EQ(s.controller->fileList().currentFolder, s.at("rock/"));
    EXPECT_EQ(s.list()->rowCount(), 2); // the two WAV files
    EXPECT_EQ(s.shownTree(), u"drive[drive-fixed]{music[folder]{empty[folder] jazz[folder] >rock[folder-audio-open]+} prog[folder]+}"_s);
    s.click(music); // the folder left shows its closed picture again
    EXPECT_EQ(s.shownTree(), u"drive[drive-fixed]{>music[folder-open]{empty[folder] jazz[folder] rock[folder-audio]+} prog[folder]+}"_s);
    s.click(rock);
    s.toolbar(ShowMp3)->trigger();
    EXPECT_EQ(s.list()->rowCount(), 2);
    EXPECT_EQ(s.label("stbMain_3"), u"Files: 2  "_s);
    s.tree()->expand(rock);
    EXPECT_EQ(s.shownTree(), u"drive[drive-fixed]{music[folder]{empty[folder] jazz[folder] >rock[folder-audio-open]{old[folder-audio]}} prog[folder]+}"_s);
    // Folding the folder shown reads it again, a file come since included; a click on it then
    // does not, so a tick stays.
    QFile::copy(s.at("rock/mono.mp3"), s.at("rock/added.mp3"));
    s.tree()->collapse(rock);
    EXPECT_EQ(s.list()->rowCount(), 3);
    QFile::remove(s.at("rock/added.mp3"));
    s.tree()->expand(rock);
    s.tree()->collapse(rock);
    s.list()->setData(s.list()->index(0, 0), Qt::Checked, Qt::CheckStateRole);
    s.click(rock);
    EXPECT_EQ(s.list()->index(0, 0).data(Qt::CheckStateRole).value<Qt::CheckState>(), Qt::Checked);

    // A folder that cannot be read: listed as an empty folder, and clicking it keeps the list.
    s.folders.refused.insert(s.at("jazz"));
    s.tree()->collapse(music);
    s.tree()->expand(music);
    s.click(s.node("rock"));
    s.click(s.node("jazz"));
    EXPECT_EQ(s.list()->rowCount(), 2);
    // The folder shown is removed: a rescan keeps the rows and the window goes on.
    s.click(s.node("rock"));
    ASSERT_TRUE(QDir(s.at("rock")).removeRecursively());
    s.toolbar(ShowMp3)->trigger();
    EXPECT_EQ(s.list()->rowCount(), 2);
    s.tree()->expand(s.node("rock"));
    EXPECT_EQ(s.shownTree(), u"drive[drive-fixed]{music[folder]{empty[folder] jazz[folder] >rock[folder-audio-open]{}} prog[folder]+}"_s);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    // Choosing the drive already shown changes nothing: the open folders stay open.
    const size_t nodes = s.controller->tree().nodesInCreationOrder().size();
    s.choose("drvMain", 0);
    EXPECT_TRUE(s.tree()->isExpanded(s.node(s.music)));
    EXPECT_EQ(s.controller->tree().nodesInCreationOrder().size(), nodes);

    // A drive plugged in shows when the list opens; once gone, choosing it says so once and the
    // list and tree stay on the program's drive.
    const QString stick = s.dir.path() + u"/stick"_s;
    s.drive.plugged = {Volume{stick, u"vfat"_s}};
    auto *drives = s.w<QComboBox>("drvMain");
    ASSERT_EQ(s.drivesListed(), 2);
    Q_EMIT drives->activated(1);
    EXPECT_EQ(s.messages.shown, QStringList{u"i Drive is not ready, change another drive"_s});
    EXPECT_EQ(drives->currentIndex(), 0);
    EXPECT_EQ(s.children({}), QStringList{s.drive.root});
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    // A drive pulled out while shown: its folders list as empty, the rows stay, and the drive
    // list, read again, lets the user go back.
    QDir().mkpath(stick + u"/album/cd1"_s);
    QFile::copy(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"), stick + u"/album/a.wav"_s);
    s.toolbar(ShowWav)->trigger();
    Q_EMIT drives->activated(1);
    ASSERT_EQ(s.children({}), QStringList{stick});
    EXPECT_TRUE(s.tree()->isExpanded(model->index(0, 0))) << "a drive opens showing its folders";
    ASSERT_EQ(s.drivesListed(), 2); // read again, the list shows the drive the tree shows
    EXPECT_EQ(drives->currentIndex(), 1);
    const QModelIndex album = model->index(0, 0, model->index(0, 0));
    s.click(album);
    ASSERT_EQ(s.list()->rowCount(), 1);
    ASSERT_TRUE(QDir(stick).removeRecursively());
    s.drive.plugged.clear();
    s.tree()->expand(album);
    EXPECT_EQ(model->rowCount(album), 0);
    s.toolbar(ShowWav)->trigger();
    EXPECT_EQ(s.list()->rowCount(), 1);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    ASSERT_EQ(s.drivesListed(), 1);
    Q_EMIT drives->activated(0);
    EXPECT_EQ(s.children({}), QStringList{s.drive.root});
    EXPECT_EQ(s.messages.shown.size(), 1);
}

TEST(WindowCommands, ShowEnablingStatisticsAndLanguage)
{
    Session s;
    ASSERT_EQ(s.start(s.at("rock")), StartEnd::Running);
    for (const int show : {ShowMp3, ShowOgg, ShowMpc, ShowMp3, ShowWav}) {
        s.toolbar(show)->trigger();
        for (int make : {MakeMp3, MakeOgg, MakeMpc, MakeWav})
            EXPECT_EQ(s.toolbar(make)->isEnabled(), (show == ShowWav) != (make == MakeWav)) << show << " " << make;
        for (int other : {ShowWav, ShowMp3, ShowOgg, ShowMpc})
            EXPECT_EQ(s.toolbar(other)->isChecked(), other == show);
    }

    // Ticks, Make All and option changes each run the statistics again.
    QAbstractItemModel *list = s.list();
    EXPECT_EQ(s.label("lblInfo_3"), u"0"_s);
    list->setData(list->index(1, 0), Qt::Checked, Qt::CheckStateRole);
    EXPECT_EQ(s.label("lblInfo_3"), u"1"_s);
    s.toolbar(MakeAll)->trigger();
    EXPECT_EQ(s.label("lblInfo_3"), u"2"_s);
    const QString mp3Forecast = s.label("lblInfo_9");
    s.choose("cmbMode", 2); // constant bitrate: the bit-rate list shows instead of the presets
    EXPECT_TRUE(s.w("cmbCbr")->isVisible());
    EXPECT_FALSE(s.w("cmbPreset")->isVisible());
    EXPECT_NE(s.label("lblInfo_9"), mp3Forecast);
    s.tab(2);
    EXPECT_TRUE(s.w("frEncOpt_2")->isVisible());
    EXPECT_FALSE(s.w("frEncOpt_0")->isVisible());
    const QString mpcForecast = s.label("lblInfo_11");
    s.choose("cmbModeMpc", 1);
    s.w<QSlider>("sliMpc")->setValue(100);
    EXPECT_EQ(s.label("lblMpc"), u"--quality 10"_s);
    EXPECT_NE(s.label("lblInfo_11"), mpcForecast);
    s.w<QPushButton>("cmdDefault")->click();
    EXPECT_EQ(s.label("lblInfo_11"), mpcForecast);
    EXPECT_EQ(s.w<QComboBox>("cmbModeMpc")->currentIndex(), 0);

    // The keyboard reaches the Show commands, the language panel and the list's ticks.
    QApplication::setActiveWindow(s.window.get());
    QTest::keyClick(s.window.get(), Qt::Key_3, Qt::ControlModifier);
    EXPECT_TRUE(s.toolbar(ShowOgg)->isChecked());
    QTest::keyClick(s.window.get(), Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(s.language()->text(), u"Русский"_s);
    s.toolbar(ShowWav)->trigger(); // a rescan lists the rows afresh, unticked
    s.toolbar(MakeAll)->trigger(); // released: only ticked rows count
    QTest::keyClick(s.window.get(), Qt::Key_L, Qt::AltModifier);
    ASSERT_TRUE(s.w("lstMain")->hasFocus());
    s.w<QTreeView>("lstMain")->setCurrentIndex(list->index(0, 0));
    QTest::keyClick(s.w("lstMain"), Qt::Key_Space);
    EXPECT_EQ(list->index(0, 0).data(Qt::CheckStateRole).value<Qt::CheckState>(), Qt::Checked);
    EXPECT_EQ(s.label("lblInfo_3"), u"1"_s);
}

TEST(WindowConfiguration, SavedAtCloseRestoredAtTheNextStartAndRefusedWhileConverting)
{
    Session s;
    const QString cfg = s.program + u"kestrvan.cfg"_s;
    ASSERT_EQ(s.start(s.at("rock")), StartEnd::Running);
    s.w<QSlider>("sliPresetOgg")->setValue(45);
    s.choose("cmbMode", 2);
    s.tab(1);
    s.language()->click();
    s.window->resize(900, 640);
    s.window->move(30, 40);
    s.w("frEncode")->show();
    EXPECT_FALSE(s.window->close());
    EXPECT_FALSE(QFile::exists(cfg));
    s.w("frEncode")->hide();
    EXPECT_TRUE(s.window->close());
    ASSERT_EQ(QFileInfo(cfg).size(), ConfigRecord::kSize);

    ASSERT_EQ(s.start(), StartEnd::Running);
    EXPECT_EQ(s.w<QSlider>("sliPresetOgg")->value(), 45);
    EXPECT_EQ(s.label("lblPresetOgg"), u"--quality 4.5"_s);
    EXPECT_EQ(s.w<QComboBox>("cmbMode")->currentIndex(), 2);
    EXPECT_TRUE(s.w("frEncOpt_1")->isVisible());
    EXPECT_EQ(s.language()->text(), u"Русский"_s);
    EXPECT_EQ(s.controller->fileList().currentFolder, s.at("rock/"));
    EXPECT_EQ(s.window->size(), QSize(900, 640));
    EXPECT_EQ(s.window->pos(), QPoint(30, 40));
    // Closed maximised, it opens again where it was before, not over the whole screen.
    s.window->showMaximized();
    ASSERT_TRUE(s.waitFor([&] { return s.window->size() != QSize(900, 640); }));
    ASSERT_TRUE(s.window->isMaximized() && s.window->close());
    ASSERT_EQ(s.start(), StartEnd::Running);
    EXPECT_EQ(s.window->size(), QSize(900, 640));

    // A folder field ended by zeros, as a text box leaves it, names the same folder.
    s.window.reset();
    QByteArray record = readAll(cfg);
    const QByteArray field = QFile::encodeName(s.at("rock"));
    const QByteArray zeros(ConfigRecord::kTextWidth - field.size(), '\0');
    record.replace(ConfigRecord::kFolder, ConfigRecord::kTextWidth, field + zeros);
    write(cfg, record);
    ASSERT_EQ(s.start(), StartEnd::Running);
    EXPECT_EQ(s.controller->fileList().currentFolder, s.at("rock/"));

    // Files that are not one record, and a folder of that name: defaults, and the window works.
    // A record of 0xFF with a zero window: Russian applied, then the MP3 mode 255 ends the load.
    QByteArray russianThenBadMode(ConfigRecord::kSize, '\xFF');
    russianThenBadMode.replace(50, 20, QByteArray(20, '\0'));
    // Zeros but for the MP3 mode 4, one past its list: the load ends there, before the Ogg quality.
    QByteArray pastTheModes(ConfigRecord::kSize, '\0');
    pastTheModes[ConfigRecord::kMp3Mode] = 4;
    const struct { QByteArray bytes; bool folder; const char *language; int oggQuality; } bad[] = {
        {QByteArray(ConfigRecord::kSize - 1, '\x01'), false, "English", 60},
        {QByteArray(ConfigRecord::kSize, '\xC8'), false, "English", 60}, // the left edge overflows first
        {{}, true, "English", 60},
        {QByteArray(ConfigRecord::kSize, '\0'), false, "English", -10},
        {russianThenBadMode, false, "Русский", 60},
        {pastTheModes, false, "English", 60},
    };
    for (const auto &b : bad) {
        s.window.reset();
        QFile::remove(cfg);
        b.folder ? void(QDir().mkpath(cfg)) : write(cfg, b.bytes);
        ASSERT_EQ(s.start(), StartEnd::Running);
        EXPECT_EQ(s.language()->text(), QString::fromUtf8(b.language));
        EXPECT_EQ(s.w<QSlider>("sliPresetOgg")->value(), b.oggQuality);
        EXPECT_GE(s.window->width(), 800);
        EXPECT_GE(s.window->height(), 600);
        EXPECT_TRUE(s.window->close());
        EXPECT_EQ(QFileInfo(cfg).isDir(), b.folder);
        EXPECT_TRUE(b.folder || QFileInfo(cfg).size() == ConfigRecord::kSize);
        QDir(cfg).removeRecursively();
    }
}

// A listed file swapped for a FIFO before it is read, and a FIFO in place of the configuration
// file: opening either would wait for the FIFO's other end.
TEST(WindowFaults, FifosInPlaceOfAListedFileAndOfTheConfigurationHoldNothing)
{
    Session s;
    const QByteArray swapped = QFile::encodeName(s.at("rock/swapped.mp3"));
    const QByteArray cfg = QFile::encodeName(s.program) + "kestrvan.cfg";
    FifoGuard listed(swapped);
    FifoGuard config(cfg);
    ASSERT_TRUE(listed.made() && config.made());
    s.folders.swapped[s.at("rock")] = QStringList{u"swapped.mp3"_s};

    ASSERT_EQ(s.start(s.at("rock")), StartEnd::Running);
    s.toolbar(ShowMp3)->trigger();
    ASSERT_EQ(s.list()->rowCount(), 2);
    EXPECT_EQ(s.list()->index(0, 0).data().toString(), u"mono.mp3"_s);
    EXPECT_EQ(s.list()->index(1, 0).data().toString(), u"vbr.mp3"_s);
    EXPECT_FALSE(listed.finish()) << "the scan waited for the FIFO";
    EXPECT_TRUE(s.window->close());
    EXPECT_FALSE(config.finish()) << "the save at close waited for the FIFO";
    EXPECT_TRUE(isFifo(swapped) && isFifo(cfg));
}

// A folder whose name is not UTF-8 is remembered by its bytes and opened again by the next start
// without a folder argument, also below a UTF-8 name. A UTF-8 name the record's code page cannot
// hold opens the folder above it.
TEST(WindowConfiguration, FolderNamedInWindows1251OpensAgainAtTheNextStart)
{
    Session s;
    const QByteArray old = QFile::encodeName(s.at("old"));
    // The temporary folder cannot remove names that are not UTF-8.
    struct RemoveAtEnd
    {
        QString folder;
        ~RemoveAtEnd() { QProcess::execute(u"/bin/rm"_s, {u"-rf"_s, folder}); }
    } removeAtEnd{s.at("old")};
    const QByteArray cp1251 = "\xCF\xF0\xEE\xE2\xE5\xF0\xEA\xE0"; // "Проверка" in Windows-1251
    const QByteArray archive = "\xD0\x90\xD1\x80\xD1\x85\xD0\xB8\xD0\xB2"; // "Архив" in UTF-8
    // The record's folder field: UTF-8 names as Windows-1251 text, other names as their bytes.
    const struct { QByteArray folder; QByteArray opened; QByteArray field; } cases[] = {
        {old + '/' + cp1251, old + '/' + cp1251, old + '/' + cp1251},
        {old + '/' + archive + '/' + cp1251, old + '/' + archive + '/' + cp1251, old + "/\xC0\xF0\xF5\xE8\xE2/" + cp1251},
        {old + "/caf\xE9 \x98", old + "/caf\xE9 \x98", old + "/caf\xE9 \x98"}, // Latin-1, and a byte Windows-1251 leaves undefined
        {old + "/\xE6\x97\xA5\xE6\x9C\xAC", old, old + "/??"},                // "日本" in UTF-8
    };
    // "Архив" in Windows-1251 bytes beside the UTF-8 one, which the text names first.
    ::mkdir(old.constData(), 0755);
    ::mkdir(old + "/\xC0\xF0\xF5\xE8\xE2", 0755);
    const QByteArray wav = readAll(QStringLiteral(KV_TEST_DATA_DIR "/wav/stereo-16bit-44100.wav"));
    for (const auto &c : cases) {
        for (qsizetype cut = old.size(); cut != -1; cut = c.folder.indexOf('/', cut + 1))
            ::mkdir(c.folder.left(cut).constData(), 0755);
        ::mkdir(c.folder.constData(), 0755);
        writeFile(c.folder + "/take.wav", wav);
        ASSERT_EQ(s.start(nameFromBytes(c.folder)), StartEnd::Running);
        ASSERT_TRUE(s.window->close());
        const QByteArray record = readAll(s.program + u"kestrvan.cfg"_s);
        EXPECT_EQ(record.mid(ConfigRecord::kFolder, c.field.size() + 2).toHex(' ').toStdString(), (c.field + "/ ").toHex(' ').toStdString());

        ASSERT_EQ(s.start(), StartEnd::Running);
        EXPECT_EQ(s.controller->fileList().currentFolder, nameFromBytes(c.opened + '/'));
        s.toolbar(ShowWav)->trigger();
        EXPECT_EQ(s.list()->rowCount(), c.folder == c.opened ? 1 : 0) << c.folder.toHex(' ').constData();
    }
}

// The Help panel and F1 open the one document beside the program, whichever the language.
TEST(WindowHelp, PanelAndF1OpenTheDocumentBesideTheProgramInBothLanguages)
{
    Session s;
    ASSERT_EQ(s.start(s.music), StartEnd::Running);
    QApplication::setActiveWindow(s.window.get());
    for (int language = 0; language < 2; ++language) {
        s.w<QToolButton>("stbMain_8")->click();
        QTest::keyClick(s.window.get(), Qt::Key_F1);
        s.language()->click();
    }
    EXPECT_EQ(s.opened, QStringList(4, s.program + u"help/rus/index.htm"_s));
}

// The arrow keys in the folder tree list the folder they reach.
TEST(WindowTree, ArrowKeysListTheFolderReached)
{
    Session s;
    // Started at a folder gone since: the deepest one left is listed, with its drive's free space.
    ASSERT_EQ(s.start(s.at("jazz/gone")), StartEnd::Running);
    EXPECT_EQ(s.controller->fileList().currentFolder, s.at("jazz/"));
    EXPECT_NE(s.label("stbMain_2"), u"Free Disk Space: 0 MB  "_s);
    EXPECT_EQ(s.list()->rowCount(), 0);
    s.tree()->setFocus();
    QTest::keyClick(s.tree(), Qt::Key_Down);
    EXPECT_EQ(s.controller->fileList().currentFolder, s.at("rock/"));
    EXPECT_EQ(s.list()->rowCount(), 2);
    QTest::keyClick(s.tree(), Qt::Key_Up);
    EXPECT_EQ(s.list()->rowCount(), 0);
}

// A program folder that cannot be written keeps the settings in the user's configuration folder,
// which is made at the first close.
TEST(WindowConfiguration, AReadOnlyProgramFolderSavesInTheUserFolder)
{
    Session s;
    ASSERT_EQ(s.start(s.at("rock"), false), StartEnd::Running);
    s.language()->click();
    ASSERT_FALSE(QFileInfo::exists(s.dir.path() + u"/config"_s));
    EXPECT_TRUE(s.window->close());
    EXPECT_EQ(QFileInfo(s.dir.path() + u"/config/kestrvan.cfg"_s).size(), ConfigRecord::kSize);
    EXPECT_FALSE(QFileInfo::exists(s.program + u"kestrvan.cfg"_s));
    ASSERT_EQ(s.start({}, false), StartEnd::Running);
    EXPECT_EQ(s.language()->text(), u"Русский"_s);
    EXPECT_EQ(s.controller->fileList().currentFolder, s.at("rock/"));
}
