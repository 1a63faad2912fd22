#pragma once

#include <array>
#include <vector>

#include <QGroupBox>
#include <QKeySequence>

class QLabel;
class QProgressBar;
class QTimer;
class QToolButton;
class QWidget;

namespace kv {

class MainController;

// frPlayer: the four buttons, the title and time labels and the progress bar of the preview
// player, and its timer. It shows the controller's player and forwards clicks and ticks; the
// rules are the player's.
class PlayerFrame : public QGroupBox
{
    Q_OBJECT

public:
    explicit PlayerFrame(MainController &controller, QWidget *parent = nullptr);
    ~PlayerFrame() override;

    // The keys of Play, Stop, Previous and Next, which work wherever the focus is.
    static const std::array<QKeySequence, 4> &keys();
    // Tool tips with their keys, in the interface language.
    void applyTexts();
    // The buttons in the order Tab visits them.
    std::vector<QWidget *> tabOrder() const;
    // Everything the player holds, shown again.
    void showPlayer();

private:
    MainController &m_c;
    std::array<QToolButton *, 4> imPlay{};
    QLabel *lblPlay = nullptr;
    QLabel *lblPlayTime = nullptr;
    QProgressBar *pbPlay = nullptr;
    QTimer *tmrPlay = nullptr;
};

} // namespace kv
