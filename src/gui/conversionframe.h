#pragma once

#include <array>

#include <QGroupBox>

class QAction;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QTimer;
class QTreeView;

namespace kv {

class JobListModel;
class MainController;

// frEncode: the job list, the progress bar and its three labels, the slot indicators, Stop and
// Close, and the pane that tells why a job failed. It shows the controller's run and forwards
// the clicks, the timer and the wake-ups of ended codecs; the rules are the run's.
class ConversionFrame : public QGroupBox
{
    Q_OBJECT

public:
    explicit ConversionFrame(MainController &controller, QWidget *parent = nullptr);
    ~ConversionFrame() override;

    const std::array<QPushButton *, 2> &buttons() const { return cmbEncode; }
    // The captions and column headers of the current language.
    void applyTexts();
    // Everything the run holds, shown again.
    void showRun();

private:
    void openDetails(int row);
    void showLeftOut();
    void contextMenu(const QPoint &at);
    void abortCurrent();

    MainController &m_c;
    JobListModel *m_model = nullptr;
    int m_selectedShown = -1;
    bool m_frameShown = false;

    QTreeView *lstCode = nullptr;
    QPlainTextEdit *txtDetails = nullptr;
    QProgressBar *pbEncode = nullptr;
    std::array<QLabel *, 3> lblEncodeTime{};
    std::array<QLabel *, 8> imProc{};
    std::array<QPushButton *, 2> cmbEncode{};
    QAction *actAbortJob = nullptr;
    QTimer *tmrEncode = nullptr;
};

// The words of "Abort this job" and of the failure pane in the interface language.
QString abortJobText(bool russian);

} // namespace kv
