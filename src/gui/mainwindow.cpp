#include "gui/mainwindow.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QResizeEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include "app/maincontroller.h"
#include "gui/conversionframe.h"
#include "gui/filelistmodel.h"
#include "gui/foldertreemodel.h"
#include "gui/optionsframe.h"
#include "gui/playerframe.h"
#include "common/failure.h"
#include "platform/nativenames.h"
#include "player/player.h"
#include "ui/controldescriptions.h"

namespace kv {

// drvMain: the drive list is read again each time it opens, so a stick plugged in shows up.
class DriveList : public QComboBox
{
public:
    using QComboBox::QComboBox;
    std::function<void()> aboutToOpen;
    void showPopup() override
    {
        if (aboutToOpen)
            aboutToOpen();
        QComboBox::showPopup();
    }
};

namespace {

template <typename W>
W *named(W *widget, const QString &name)
{
    widget->setObjectName(name);
    return widget;
}

WindowState stateOf(const QWidget *w)
{
    if (w->isMinimized())
        return WindowState::Minimised;
    if (w->isMaximized() || w->isFullScreen())
        return WindowState::Maximised;
    return WindowState::Normal;
}

} // namespace

MainWindow::MainWindow(MainController &controller, QWidget *parent) : QMainWindow(parent), m_c(controller)
{
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("Kestrelvane"));
    setWindowIcon(QIcon(QStringLiteral(":/icons/kestrelvane.svg")));
    setMinimumSize(800, 600);

    buildToolbar();
    auto *split = named(new QSplitter(Qt::Horizontal), QStringLiteral("splMain"));
    split->addWidget(buildBrowser());

    auto *right = new QWidget;
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    m_listModel = new FileListModel(m_c, this);
    lstMain = named(new QTreeView, QStringLiteral("lstMain"));
    lstMain->setModel(m_listModel);
    lstMain->setRootIsDecorated(false);
    lstMain->setUniformRowHeights(true); // ten thousand rows lay out without measuring each
    lstMain->setAllColumnsShowFocus(true);
    lstMain->setAlternatingRowColors(true);
    lstMain->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lstMain->header()->setStretchLastSection(false);
    lstMain->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int c = 1; c < MediaInfo::ColumnCount; ++c)
        lstMain->header()->setSectionResizeMode(c, QHeaderView::Interactive);
    rightLayout->addWidget(lstMain, 1);

    // The conversion frame, shown by the Make commands; the player's room below it.
    m_conversion = new ConversionFrame(m_c);
    frEncode = m_conversion;
    cmbEncode = m_conversion->buttons();
    rightLayout->addWidget(frEncode);
    m_playerFrame = new PlayerFrame(m_c);
    rightLayout->addWidget(m_playerFrame);

    auto *bottom = new QHBoxLayout;
    m_options = new OptionsFrame(m_c);
    bottom->addWidget(m_options, 3);
    bottom->addWidget(buildStatistics(), 2);
    rightLayout->addLayout(bottom);
    split->addWidget(right);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 3);
    split->setSizes({240, 760});
    split->setChildrenCollapsible(false);
    setCentralWidget(split);
    buildStatusBar();
    setTabOrder();

    m_c.rowsAboutToChange = [this] { m_listModel->beginRefill(); };
    m_c.rowsChanged = [this] {
        m_listModel->endRefill();
        fitFileColumns();
    };
    m_c.changed = [this] { showState(); };
    connectPlayer();

    // The tree was built before the window; the view follows it from here on. Its signals are
    // connected only afterwards, so showing the tree as it stands hands nothing back.
    tvMain->setModel(m_treeModel);
    // Deep or long folder names scroll sideways instead of being cut short.
    tvMain->header()->setStretchLastSection(false);
    tvMain->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    for (TreeNode *n : m_c.tree().nodesInCreationOrder()) {
        if (n->expanded)
            tvMain->setExpanded(m_treeModel->indexOf(n), true);
    }
    tvMain->setCurrentIndex(m_treeModel->indexOf(m_c.tree().selected()));
    tvMain->scrollTo(tvMain->currentIndex());
    const auto expand = [this](const QModelIndex &i) { forwardTreeEvent(i, &MainController::treeExpand); };
    const auto collapse = [this](const QModelIndex &i) { forwardTreeEvent(i, &MainController::treeCollapse); };
    const auto click = [this](const QModelIndex &i) { forwardTreeEvent(i, &MainController::treeClick); };
    connect(tvMain, &QTreeView::expanded, this, expand);
    connect(tvMain, &QTreeView::collapsed, this, collapse);
    connect(tvMain, &QTreeView::clicked, this, click);
    connect(tvMain->selectionModel(), &QItemSelectionModel::currentChanged, this, click);

    showDrives();
    m_options->showSettings();
    showState();
}

MainWindow::~MainWindow()
{
    m_c.rowsAboutToChange = nullptr;
    m_c.rowsChanged = nullptr;
    m_c.changed = nullptr;
    m_c.playerView = {};
}

void MainWindow::buildToolbar()
{
    auto *bar = m_toolbar = named(new QToolBar, QStringLiteral("tbMain"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    bar->setIconSize(QSize(32, 32));
    addToolBar(Qt::TopToolBarArea, bar);
    const struct { int position; const char *icon; QKeySequence keys; bool checkable; } buttons[] = {
        {MakeMp3, "make-mp3", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M), false},
        {MakeOgg, "make-ogg", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O), false},
        {MakeMpc, "make-mpc", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C), false},
        {MakeWav, "make-wav", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_W), false},
        {5, nullptr, {}, false},
        {MakeAll, "make-all", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A), true},
        {7, nullptr, {}, false},
        {ShowWav, "show-wav", QKeySequence(Qt::CTRL | Qt::Key_1), true},
        {ShowMp3, "show-mp3", QKeySequence(Qt::CTRL | Qt::Key_2), true},
        {ShowOgg, "show-ogg", QKeySequence(Qt::CTRL | Qt::Key_3), true},
        {ShowMpc, "show-mpc", QKeySequence(Qt::CTRL | Qt::Key_4), true},
    };
    for (const auto &b : buttons) {
        QAction *a = b.icon == nullptr ? bar->addSeparator()
                                       : bar->addAction(QIcon(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(b.icon))),
                                                        QString());
        a->setObjectName(QStringLiteral("tbMain_%1").arg(b.position));
        tbMain[static_cast<size_t>(b.position)] = a;
        if (b.icon == nullptr)
            continue;
        a->setShortcut(b.keys);
        a->setCheckable(b.checkable);
        if (QWidget *w = bar->widgetForAction(a))
            w->setObjectName(a->objectName());
        if (!b.checkable) {
            connect(a, &QAction::triggered, this, [this, p = b.position] { m_c.toolbarClick(p); });
            continue;
        }
        // A screen reader's toggle changes the button's state without a click, so the command
        // follows the state, not the click; the button passes its state on to the action.
        connect(a, &QAction::toggled, this, [this, p = b.position](bool on) { toolbarToggled(p, on); });
    }
}

void MainWindow::toolbarToggled(int position, bool checked)
{
    const bool state = position == MakeAll ? m_c.makeAll() : m_c.showPressed().at(static_cast<size_t>(position - ShowWav));
    // Showing the controller's state toggles back to it; only a change against it is a command.
    if (checked != state)
        m_c.toolbarClick(position);
    showState();
}

void MainWindow::connectPlayer()
{
    PlayerView &v = m_c.playerView;
    v.firstSelectedRow = [this] {
        int first = -1;
        for (const QModelIndex &i : lstMain->selectionModel()->selectedIndexes())
            first = first < 0 ? i.row() : std::min(first, i.row());
        return first;
    };
    v.rowChanged = [this](int row) { m_listModel->rowChanged(row); };
    v.selectRow = [this](int row) {
        lstMain->selectionModel()->setCurrentIndex(m_listModel->index(row, 0),
                                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    };
    v.scrollTo = [this](int row) { lstMain->scrollTo(m_listModel->index(row, 0)); };
    // Enter or a double click on a row plays from that row.
    connect(lstMain, &QTreeView::activated, this, [this](const QModelIndex &index) {
        lstMain->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        m_c.playerClick(Player::Play);
    });
}

QWidget *MainWindow::buildBrowser()
{
    auto *left = new QWidget;
    auto *layout = new QVBoxLayout(left);
    layout->setContentsMargins(0, 0, 0, 0);
    drvMain = named(new DriveList, QStringLiteral("drvMain"));
    drvMain->aboutToOpen = [this] {
        m_c.refreshDrives();
        showDrives();
    };
    connect(drvMain, &QComboBox::activated, this, [this](int index) { m_c.driveChanged(index); });
    layout->addWidget(drvMain);
    tvMain = named(new QTreeView, QStringLiteral("tvMain"));
    tvMain->setHeaderHidden(true);
    tvMain->setUniformRowHeights(true);
    tvMain->setMinimumWidth(180);
    m_treeModel = new FolderTreeModel(m_c.tree(), this);
    m_treeModel->expandRequested = [this](const QModelIndex &index, bool on) {
        const QScopedValueRollback sync(m_treeSync, true);
        tvMain->setExpanded(index, on);
    };
    m_treeModel->selectRequested = [this](const QModelIndex &index) {
        const QScopedValueRollback sync(m_treeSync, true);
        tvMain->setCurrentIndex(index);
    };
    layout->addWidget(tvMain, 1);
    return left;
}

QWidget *MainWindow::buildStatistics()
{
    frInfo = named(new QGroupBox, QStringLiteral("frInfo"));
    auto *grid = new QGridLayout(frInfo);
    for (int i = 0; i < 12; ++i) {
        auto *l = named(new QLabel, QStringLiteral("lblInfo_%1").arg(i));
        l->setTextInteractionFlags(Qt::TextSelectableByMouse);
        lblInfo[static_cast<size_t>(i)] = l;
    }
    // Caption and value side by side; the Wav row has no value of its own (element 2 stays empty).
    const std::pair<int, int> rows[] = {{0, 3}, {1, 4}, {5, 2}, {6, 9}, {7, 10}, {8, 11}};
    int r = 0;
    for (const auto &[caption, value] : rows) {
        grid->addWidget(lblInfo[static_cast<size_t>(caption)], r, 0);
        lblInfo[static_cast<size_t>(value)]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        grid->addWidget(lblInfo[static_cast<size_t>(value)], r, 1);
        lblInfo[static_cast<size_t>(caption)]->setBuddy(lblInfo[static_cast<size_t>(value)]);
        ++r;
    }
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(r, 1);
    return frInfo;
}

void MainWindow::buildStatusBar()
{
    QStatusBar *bar = statusBar();
    bar->setObjectName(QStringLiteral("stbMain"));
    // The grip's width goes to the panels: at 800 pixels they need all of it.
    bar->setSizeGripEnabled(false);
    for (int i = 0; i < 6; ++i) {
        auto *l = named(new QLabel, QStringLiteral("stbMain_%1").arg(i + 1));
        // No frames: at the smallest window size every panel's text still fits, blanks included.
        l->setContentsMargins(0, 0, 0, 0);
        stbPanels[static_cast<size_t>(i)] = l;
        bar->addWidget(l);
    }
    for (int i = 0; i < 2; ++i) {
        auto *b = named(new QToolButton, QStringLiteral("stbMain_%1").arg(i + 7));
        b->setAutoRaise(true);
        b->setFocusPolicy(Qt::TabFocus);
        stbButtons[static_cast<size_t>(i)] = b;
        bar->addPermanentWidget(b);
        connect(b, &QToolButton::clicked, this, [this, panel = i + 7] { m_c.statusPanelClick(panel); });
    }
    // The two commands of the status bar also answer to keys, as window actions so they work
    // wherever the focus is.
    const std::pair<int, QKeySequence> keys[] = {{7, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L)},
                                                 {8, QKeySequence(Qt::Key_F1)}};
    for (const auto &[panel, sequence] : keys) {
        auto *a = new QAction(this);
        a->setObjectName(QStringLiteral("actPanel_%1").arg(panel));
        a->setShortcut(sequence);
        addAction(a);
        connect(a, &QAction::triggered, this, [this, p = panel] { m_c.statusPanelClick(p); });
        m_panelKeys.push_back(sequence);
    }
}

void MainWindow::setTabOrder()
{
    // The captions are the designed texts, so the main areas take Alt keys of their own in place
    // of underlined letters: Alt+D drives, Alt+T tree, Alt+L list, Alt+O options.
    const std::pair<QWidget *, Qt::Key> areas[] = {
        {drvMain, Qt::Key_D}, {tvMain, Qt::Key_T}, {lstMain, Qt::Key_L}, {m_options->tabOrder().front(), Qt::Key_O}};
    for (const auto &[widget, key] : areas) {
        auto *a = new QAction(this);
        a->setShortcut(QKeySequence(Qt::ALT | key));
        addAction(a);
        connect(a, &QAction::triggered, widget, [w = widget] { w->setFocus(Qt::ShortcutFocusReason); });
    }

    std::vector<QWidget *> order = {drvMain, tvMain, lstMain};
    for (QWidget *w : m_playerFrame->tabOrder())
        order.push_back(w);
    for (QWidget *w : m_options->tabOrder())
        order.push_back(w);
    order.insert(order.end(), {cmbEncode[0], cmbEncode[1], stbButtons[0], stbButtons[1]});
    for (size_t i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

void MainWindow::showDrives()
{
    const QSignalBlocker block(drvMain);
    drvMain->clear();
    for (const Volume &v : m_c.drives())
        drvMain->addItem(FolderTreeModel::treeImage(static_cast<int>(driveKind(v))), shownName(v.mountPoint));
    drvMain->setCurrentIndex(m_c.currentDrive());
}

void MainWindow::showState()
{
    if (m_languageShown != m_c.ui().status.panel(7))
        applyTexts();
    for (int i = 0; i < 6; ++i)
        stbPanels[static_cast<size_t>(i)]->setText(m_c.ui().status.panel(i + 1));
    for (int i = 0; i < 2; ++i)
        stbButtons[static_cast<size_t>(i)]->setText(m_c.ui().status.panel(i + 7));
    for (int i = 0; i < 12; ++i)
        lblInfo[static_cast<size_t>(i)]->setText(m_c.labels().lblInfo.at(static_cast<size_t>(i)));
    for (int i = 0; i < 4; ++i) {
        tbMain[static_cast<size_t>(MakeMp3 + i)]->setEnabled(m_c.makeEnabled()[static_cast<size_t>(i)]);
        tbMain[static_cast<size_t>(ShowWav + i)]->setChecked(m_c.showPressed()[static_cast<size_t>(i)]);
    }
    tbMain[MakeAll]->setChecked(m_c.makeAll());
    if (drvMain->currentIndex() != m_c.currentDrive()) {
        const QSignalBlocker block(drvMain);
        drvMain->setCurrentIndex(m_c.currentDrive());
    }
}

void MainWindow::fitFileColumns()
{
    // The number columns take the width of their caption or longest text, once per listing:
    // sizing them to their contents at every layout change measured all ten thousand rows each
    // time an option control was shown or hidden.
    const QFontMetrics metrics = lstMain->fontMetrics();
    const auto &rows = m_c.fileList().rows;
    for (int c = 1; c < MediaInfo::ColumnCount; ++c) {
        QString longest;
        for (const FileRow &row : rows) {
            if (row.info[c].size() > longest.size())
                longest = row.info[c];
        }
        const QString caption = m_listModel->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString();
        const int width = std::max(metrics.horizontalAdvance(longest), lstMain->header()->fontMetrics().horizontalAdvance(caption));
        lstMain->header()->resizeSection(c, width + 3 * metrics.averageCharWidth());
    }
}

void MainWindow::applyTexts()
{
    const UiText &t = m_c.text();
    m_languageShown = m_c.ui().status.panel(7);
    const Language language = currentLanguage(m_c.ui());
    for (int i = 0; i < 4; ++i) {
        tbMain[static_cast<size_t>(MakeMp3 + i)]->setText(t.makeButtons.at(static_cast<size_t>(i)));
        tbMain[static_cast<size_t>(ShowWav + i)]->setText(t.showButtons.at(static_cast<size_t>(i)));
    }
    tbMain[MakeAll]->setText(t.makeButtons.at(4));
    fitToolbar();
    m_options->applyTexts();
    m_conversion->applyTexts();
    m_playerFrame->applyTexts();
    m_listModel->languageChanged();
    fitFileColumns();

    // What a screen reader says, in the same language; the shortcut goes into the tool tip.
    for (QWidget *w : findChildren<QWidget *>()) {
        const ControlDescription d = describeControl(w->objectName(), language);
        if (!d.name.isEmpty())
            w->setAccessibleName(d.name);
        if (!d.description.isEmpty())
            w->setAccessibleDescription(d.description);
    }
    for (QAction *a : tbMain) {
        if (a == nullptr || a->isSeparator())
            continue;
        const ControlDescription d = describeControl(a->objectName(), language);
        const QString keys = a->shortcut().toString(QKeySequence::NativeText);
        a->setToolTip(d.description + (keys.isEmpty() ? QString() : QStringLiteral(" (") + keys + QLatin1Char(')')));
        a->setStatusTip(QString());
    }
    for (size_t i = 0; i < stbButtons.size(); ++i) {
        const ControlDescription d = describeControl(stbButtons[i]->objectName(), language);
        stbButtons[i]->setToolTip(d.description + QStringLiteral(" (")
                                  + m_panelKeys.at(i).toString(QKeySequence::NativeText) + QLatin1Char(')'));
    }
}

void MainWindow::fitToolbar()
{
    // Captions on one line while they fit; in a narrow window (Russian captions are the longest)
    // each breaks after its first word, so all eleven positions stay in view.
    for (const bool twoLines : {false, true}) {
        for (QAction *a : tbMain) {
            if (a == nullptr || a->isSeparator())
                continue;
            QString caption = a->text();
            if (twoLines)
                caption.replace(caption.indexOf(QLatin1Char(' ')), 1, QLatin1Char('\n'));
            a->setIconText(caption);
            if (QWidget *button = m_toolbar->widgetForAction(a))
                button->setAccessibleName(a->text());
        }
        if (m_toolbar->sizeHint().width() <= width())
            break;
    }
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    fitToolbar();
}

void MainWindow::forwardTreeEvent(const QModelIndex &index, void (MainController::*event)(TreeNode &))
{
    if (!m_treeSync && index.isValid())
        (m_c.*event)(*FolderTreeModel::nodeOf(index));
}

void MainWindow::placeWindow()
{
    const SettingsControls &s = m_c.controls();
    const int px = SettingsControls::kTwipsPerPixel;
    if (m_c.configRead()) {
        resize(s.windowWidth() / px, s.windowHeight() / px);
        move(s.windowLeft() / px, s.windowTop() / px);
        return;
    }
    // First start: a comfortable size in the middle of the screen.
    const QRect screen = QGuiApplication::primaryScreen() != nullptr ? QGuiApplication::primaryScreen()->availableGeometry()
                                                                     : QRect(0, 0, 1024, 768);
    const QSize size(std::min(1100, std::max(800, screen.width() * 3 / 4)), std::min(760, std::max(600, screen.height() * 3 / 4)));
    resize(size);
    move(screen.center() - QPoint(size.width() / 2, size.height() / 2));
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    m_c.setWindowPlace(x(), y(), width(), height(), stateOf(this));
    if (m_c.closeRequested(!frEncode->isHidden()))
        event->accept();
    else
        event->ignore();
}

} // namespace kv
