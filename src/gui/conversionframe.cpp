#include "gui/conversionframe.h"

#include <cmath>

#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include "app/maincontroller.h"
#include "app/runwakeups.h"
#include "engine/conversionrun.h"
#include "gui/joblistmodel.h"
#include "ui/interfacetexts.h"
#include "ui/uitext.h"

namespace kv {

QString abortJobText(bool russian)
{
    return russian ? QStringLiteral("Прервать это задание") : QStringLiteral("Abort this job");
}

ConversionFrame::ConversionFrame(MainController &controller, QWidget *parent) : QGroupBox(parent), m_c(controller)
{
    setObjectName(QStringLiteral("frEncode"));
    auto *layout = new QVBoxLayout(this);

    m_model = new JobListModel(m_c, this);
    lstCode = new QTreeView;
    lstCode->setObjectName(QStringLiteral("lstCode"));
    lstCode->setModel(m_model);
    lstCode->setRootIsDecorated(false);
    lstCode->setUniformRowHeights(true);
    lstCode->setAllColumnsShowFocus(true);
    lstCode->setSelectionMode(QAbstractItemView::SingleSelection);
    lstCode->setContextMenuPolicy(Qt::CustomContextMenu);
    lstCode->header()->setStretchLastSection(false);
    lstCode->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    layout->addWidget(lstCode, 1);
    // Enter and double click both activate a row.
    connect(lstCode, &QTreeView::activated, this, [this](const QModelIndex &index) { openDetails(index.row()); });
    connect(lstCode, &QWidget::customContextMenuRequested, this, &ConversionFrame::contextMenu);

    actAbortJob = new QAction(this);
    actAbortJob->setObjectName(QStringLiteral("actAbortJob"));
    actAbortJob->setShortcut(QKeySequence(Qt::Key_Delete));
    actAbortJob->setShortcutContext(Qt::WidgetShortcut);
    lstCode->addAction(actAbortJob);
    connect(actAbortJob, &QAction::triggered, this, &ConversionFrame::abortCurrent);

    txtDetails = new QPlainTextEdit;
    txtDetails->setObjectName(QStringLiteral("txtDetails"));
    txtDetails->setReadOnly(true);
    txtDetails->setMaximumHeight(120);
    txtDetails->hide();
    layout->addWidget(txtDetails);

    auto *progress = new QHBoxLayout;
    pbEncode = new QProgressBar;
    pbEncode->setObjectName(QStringLiteral("pbEncode"));
    pbEncode->setTextVisible(false);
    progress->addWidget(pbEncode, 1);
    for (size_t i = 0; i < lblEncodeTime.size(); ++i) {
        lblEncodeTime[i] = new QLabel;
        lblEncodeTime[i]->setObjectName(QStringLiteral("lblEncodeTime_%1").arg(i));
        progress->addWidget(lblEncodeTime[i]);
    }
    layout->addLayout(progress);

    auto *bottom = new QHBoxLayout;
    for (size_t i = 0; i < imProc.size(); ++i) {
        imProc[i] = new QLabel;
        imProc[i]->setObjectName(QStringLiteral("imProc_%1").arg(i));
        imProc[i]->setFixedSize(20, 20);
        imProc[i]->hide();
        bottom->addWidget(imProc[i]);
    }
    bottom->addStretch(1);
    for (size_t i = 0; i < cmbEncode.size(); ++i) {
        cmbEncode[i] = new QPushButton;
        cmbEncode[i]->setObjectName(QStringLiteral("cmbEncode_%1").arg(i));
        bottom->addWidget(cmbEncode[i]);
    }
    layout->addLayout(bottom);
    connect(cmbEncode[0], &QPushButton::clicked, this, [this] { m_c.stopClicked(); });
    connect(cmbEncode[1], &QPushButton::clicked, this, [this] { m_c.closeClicked(); });

    tmrEncode = new QTimer(this);
    tmrEncode->setObjectName(QStringLiteral("tmrEncode"));
    tmrEncode->setInterval(100);
    connect(tmrEncode, &QTimer::timeout, this, [this] { m_c.encodeTick(); });
    watchRunWakeups(this, m_c.wakeups(), [this] { m_c.encodeTick(true); });

    m_c.runChanged = [this] { showRun(); };
    hide();
}

ConversionFrame::~ConversionFrame()
{
    m_c.runChanged = nullptr;
}

void ConversionFrame::applyTexts()
{
    const UiText &t = m_c.text();
    cmbEncode[0]->setText(t.stopButton);
    cmbEncode[1]->setText(t.closeButton);
    const bool russian = currentLanguage(m_c.ui()) == Language::Russian;
    actAbortJob->setText(abortJobText(russian));
    m_model->languageChanged();
    // The labels keep their width as their numbers change, so a tick redraws them alone instead
    // of laying out the frame again.
    const QFontMetrics metrics = lstCode->fontMetrics();
    const QString longestTime = QStringLiteral("00:00:00");
    for (size_t i = 0; i < 2; ++i)
        lblEncodeTime.at(i)->setMinimumWidth(metrics.horizontalAdvance(longestTime) + metrics.averageCharWidth());
    lblEncodeTime[2]->setMinimumWidth(metrics.horizontalAdvance(t.finishedLabel + QStringLiteral("00000") + t.ofLabel
                                                                 + QStringLiteral("00000")));
    // Widths by the widest text a column can show, not by its rows: measuring every row at each
    // tick would cost the event thread more than the run itself.
    const QString widest[] = {QString(), t.statusInProgress, QStringLiteral("999999") + t.kbUnit,
                              QStringLiteral("999999") + t.kbUnit, QStringLiteral("999"), QStringLiteral("0:00:00")};
    for (int c = 1; c < EncodeJob::ColumnCount; ++c) {
        QString text = widest[c];
        if (c == EncodeJob::Status) {
            for (const QString &word : {t.statusInProgress, t.statusDone, t.statusBreak, t.statusReadOnly, t.statusError})
                text = metrics.horizontalAdvance(word) > metrics.horizontalAdvance(text) ? word : text;
        }
        const int width = std::max(metrics.horizontalAdvance(text), metrics.horizontalAdvance(t.jobColumns.at(static_cast<size_t>(c))));
        lstCode->header()->setSectionResizeMode(c, QHeaderView::Interactive);
        lstCode->header()->resizeSection(c, width + 4 * metrics.averageCharWidth());
    }
}

void ConversionFrame::showRun()
{
    const ConversionRun *run = m_c.run();
    if (run == nullptr)
        return;
    const RunDisplay &d = run->display();
    const bool newlyShown = d.frameVisible && !m_frameShown;
    m_frameShown = d.frameVisible;
    m_model->refresh();
    if (newlyShown) {
        m_selectedShown = -1;
        txtDetails->hide();
        showLeftOut();
    }
    setVisible(d.frameVisible);

    // The bar counts whole seconds; its maximum is the estimated length of the run.
    const int max = std::max(1, static_cast<int>(std::lround(d.barMax)));
    pbEncode->setRange(0, max);
    pbEncode->setValue(std::clamp(static_cast<int>(std::lround(d.barValue)), 0, max));
    pbEncode->setVisible(d.barVisible);
    for (size_t i = 0; i < lblEncodeTime.size(); ++i)
        lblEncodeTime[i]->setText(d.labels[i]);
    lblEncodeTime[1]->setVisible(d.remainingVisible);

    static const QPixmap idle = QIcon(QStringLiteral(":/icons/slot-idle.svg")).pixmap(16, 16);
    static const QPixmap running = QIcon(QStringLiteral(":/icons/slot-running.svg")).pixmap(16, 16);
    for (size_t i = 0; i < imProc.size(); ++i) {
        const Activity a = d.indicators[i];
        imProc[i]->setVisible(a != Activity::Hidden);
        // Only a change is drawn; the label keeps its picture between ticks.
        const QString state = a == Activity::Running ? QStringLiteral("running") : QStringLiteral("idle");
        if (a != Activity::Hidden && imProc[i]->property("activity").toString() != state) {
            imProc[i]->setPixmap(a == Activity::Running ? running : idle);
            imProc[i]->setProperty("activity", state);
        }
    }
    cmbEncode[0]->setEnabled(d.stopEnabled);
    cmbEncode[1]->setEnabled(d.closeEnabled);

    if (d.selectedRow >= 0 && d.selectedRow != m_selectedShown && d.selectedRow < m_model->rowCount()) {
        m_selectedShown = d.selectedRow;
        const QModelIndex row = m_model->index(d.selectedRow, 0);
        lstCode->setCurrentIndex(row);
        lstCode->scrollTo(row);
    }
    if (d.timerEnabled && !tmrEncode->isActive())
        tmrEncode->start();
    else if (!d.timerEnabled && tmrEncode->isActive())
        tmrEncode->stop();
}

void ConversionFrame::showLeftOut()
{
    const ConversionRun *run = m_c.run();
    QStringList lines;
    for (const LeftOutSource &s : run->leftOut()) {
        lines.append(s.name + QStringLiteral(" left out: its target ") + s.target.mid(s.target.lastIndexOf(QLatin1Char('/')) + 1)
                     + QStringLiteral(" is made from ") + s.sameTargetAs + QStringLiteral(" in this run"));
    }
    if (lines.isEmpty())
        return;
    txtDetails->setPlainText(lines.join(QLatin1Char('\n')));
    txtDetails->show();
}

void ConversionFrame::openDetails(int row)
{
    const QString why = m_model->failureText(row);
    if (why.isEmpty()) {
        txtDetails->hide();
        return;
    }
    const ConversionRun *run = m_c.run();
    const EncodeJob &job = run->jobs().at(static_cast<size_t>(row));
    txtDetails->setPlainText(job[EncodeJob::Name] + QStringLiteral(": ") + job[EncodeJob::Status] + QLatin1Char('\n') + why);
    txtDetails->show();
}

void ConversionFrame::contextMenu(const QPoint &at)
{
    const QModelIndex index = lstCode->indexAt(at);
    const ConversionRun *run = m_c.run();
    if (!index.isValid() || run == nullptr)
        return;
    lstCode->setCurrentIndex(index);
    const bool running = run->jobs().at(static_cast<size_t>(index.row()))[EncodeJob::Status] == m_c.text().statusInProgress;
    if (!running)
        return;
    QMenu menu(this);
    menu.addAction(actAbortJob);
    menu.exec(lstCode->viewport()->mapToGlobal(at));
}

void ConversionFrame::abortCurrent()
{
    if (lstCode->currentIndex().isValid())
        m_c.abortJob(lstCode->currentIndex().row());
}

} // namespace kv
