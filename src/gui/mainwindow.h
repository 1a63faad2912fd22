#pragma once

#include <array>
#include <utility>
#include <vector>

#include <QKeySequence>
#include <QMainWindow>

class QAction;
class QGroupBox;
class QLabel;
class QPushButton;
class QToolBar;
class QToolButton;
class QTreeView;

namespace kv {

class ConversionFrame;
class MainController;
class OptionsFrame;
class PlayerFrame;
class FileListModel;
class FolderTreeModel;
class DriveList;
struct TreeNode;

// frmMain: the window over the controller. It only lays out, forwards events and shows what the
// controller holds; every rule lives in the controller and the core below it.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(MainController &controller, QWidget *parent = nullptr);
    ~MainWindow() override;

    // Puts the window where the configuration file left it, or centres it on first use.
    void placeWindow();

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildToolbar();
    QWidget *buildBrowser();
    QWidget *buildStatistics();
    void buildStatusBar();
    void setTabOrder();

    // Everything the controller holds, shown again.
    void showState();
    void showDrives();
    void applyTexts();
    void fitFileColumns();
    void fitToolbar();
    // The player's hold on the file list: the selection it starts from, and the row it plays.
    void connectPlayer();
    // A checkable toolbar command, from a click, a key or a screen reader's toggle alike.
    void toolbarToggled(int position, bool checked);

    // A user's expand, collapse or click on the tree, to the controller; not the view following
    // the tree's own changes.
    void forwardTreeEvent(const QModelIndex &index, void (MainController::*event)(TreeNode &));

    MainController &m_c;
    FileListModel *m_listModel = nullptr;
    FolderTreeModel *m_treeModel = nullptr;
    bool m_treeSync = false;
    QString m_languageShown;
    std::vector<QKeySequence> m_panelKeys; // language and help

    DriveList *drvMain = nullptr;
    QTreeView *tvMain = nullptr;
    QTreeView *lstMain = nullptr;
    QToolBar *m_toolbar = nullptr;
    std::array<QAction *, 12> tbMain{}; // by position 1 to 11; 5 and 7 are separators
    ConversionFrame *m_conversion = nullptr;
    OptionsFrame *m_options = nullptr;
    PlayerFrame *m_playerFrame = nullptr;
    QGroupBox *frEncode = nullptr;
    std::array<QPushButton *, 2> cmbEncode{};
    QGroupBox *frInfo = nullptr;
    std::array<QLabel *, 12> lblInfo{};
    std::array<QLabel *, 6> stbPanels{};      // panels 1 to 6
    std::array<QToolButton *, 2> stbButtons{}; // panels 7 and 8
};

} // namespace kv
