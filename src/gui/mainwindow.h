#pragma once

#include <array>
#include <utility>
#include <vector>

#include <QKeySequence>
#include <QMainWindow>

class QAction;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QTabBar;
class QToolBar;
class QToolButton;
class QTreeView;

namespace kv {

class ConversionFrame;
class MainController;
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
    QWidget *buildOptions();
    QWidget *buildStatistics();
    void buildStatusBar();
    void connectSettings();
    void setTabOrder();

    // Everything the controller holds, shown again.
    void showState();
    void showSettings();
    void showDrives();
    void applyTexts();
    void fitFileColumns();
    void fitToolbar();

    // A user's expand, collapse or click on the tree, to the controller; not the view following
    // the tree's own changes.
    void forwardTreeEvent(const QModelIndex &index, void (MainController::*event)(TreeNode &));

    MainController &m_c;
    FileListModel *m_listModel = nullptr;
    FolderTreeModel *m_treeModel = nullptr;
    bool m_treeSync = false;
    QString m_languageShown;
    std::vector<QKeySequence> m_panelKeys; // language and help
    std::vector<std::pair<QLabel *, QWidget *>> m_captions; // an option control's caption and the control

    DriveList *drvMain = nullptr;
    QTreeView *tvMain = nullptr;
    QTreeView *lstMain = nullptr;
    QToolBar *m_toolbar = nullptr;
    std::array<QAction *, 12> tbMain{}; // by position 1 to 11; 5 and 7 are separators
    ConversionFrame *m_conversion = nullptr;
    QGroupBox *frEncode = nullptr;
    QGroupBox *frPlayer = nullptr;
    std::array<QPushButton *, 2> cmbEncode{};
    QGroupBox *frOptions = nullptr;
    QTabBar *TabOpt = nullptr;
    std::array<QWidget *, 3> frEncOpt{};
    QComboBox *cmbMode = nullptr, *cmbPreset = nullptr, *cmbCbr = nullptr;
    QSlider *sliAbr = nullptr;
    QLabel *lblAbr = nullptr;
    QLineEdit *txtCmd = nullptr;
    QComboBox *cmbModeOgg = nullptr;
    QSlider *sliPresetOgg = nullptr, *sliAbrOgg = nullptr;
    QLabel *lblPresetOgg = nullptr, *lblAbrOgg = nullptr;
    QLineEdit *txtCmdOgg = nullptr;
    QComboBox *cmbModeMpc = nullptr, *cmbPresetMpc = nullptr;
    QSlider *sliMpc = nullptr;
    QLabel *lblMpc = nullptr;
    QLineEdit *txtCmdMpc = nullptr;
    QPushButton *cmdDefault = nullptr;
    QGroupBox *frInfo = nullptr;
    std::array<QLabel *, 12> lblInfo{};
    std::array<QLabel *, 6> stbPanels{};      // panels 1 to 6
    std::array<QToolButton *, 2> stbButtons{}; // panels 7 and 8
};

} // namespace kv
