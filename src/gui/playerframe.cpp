#include "gui/playerframe.h"

#include <cmath>

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QToolButton>

#include "app/maincontroller.h"
#include "platform/nativenames.h"
#include "player/player.h"
#include "ui/controldescriptions.h"
#include "ui/interfacetexts.h"

namespace kv {

const std::array<QKeySequence, 4> &PlayerFrame::keys()
{
    static const std::array<QKeySequence, 4> k = {QKeySequence(Qt::Key_F5), QKeySequence(Qt::Key_F6),
                                                  QKeySequence(Qt::Key_F7), QKeySequence(Qt::Key_F8)};
    return k;
}

PlayerFrame::PlayerFrame(MainController &controller, QWidget *parent) : QGroupBox(parent), m_c(controller)
{
    setObjectName(QStringLiteral("frPlayer"));
    auto *grid = new QGridLayout(this);
    static const char *const pictures[] = {"play", "stop", "previous", "next"};
    for (size_t i = 0; i < imPlay.size(); ++i) {
        auto *b = imPlay[i] = new QToolButton;
        b->setObjectName(QStringLiteral("imPlay_%1").arg(i));
        // The highlighted picture shows while the pointer is over a raised button.
        QIcon icon;
        icon.addFile(QStringLiteral(":/icons/%1.svg").arg(QLatin1String(pictures[i])), {}, QIcon::Normal);
        icon.addFile(QStringLiteral(":/icons/%1-hover.svg").arg(QLatin1String(pictures[i])), {}, QIcon::Active);
        b->setIcon(icon);
        b->setIconSize(QSize(20, 20));
        b->setAutoRaise(true);
        b->setFocusPolicy(Qt::StrongFocus);
        grid->addWidget(b, 0, static_cast<int>(i), 2, 1);
        connect(b, &QToolButton::clicked, this, [this, i] { m_c.playerClick(static_cast<int>(i)); });

        // Keys as window actions: a button's own shortcut would press it visibly for 100 ms first.
        auto *key = new QAction(this);
        key->setObjectName(QStringLiteral("actPlay_%1").arg(i));
        key->setShortcut(keys()[i]);
        key->setShortcutContext(Qt::WindowShortcut);
        addAction(key);
        connect(key, &QAction::triggered, this, [this, i] { m_c.playerClick(static_cast<int>(i)); });
    }
    lblPlay = new QLabel;
    lblPlay->setObjectName(QStringLiteral("lblPlay"));
    lblPlay->setTextFormat(Qt::PlainText);
    lblPlay->setMinimumWidth(40);
    lblPlay->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long name is cut, not the frame widened
    lblPlayTime = new QLabel(QStringLiteral("0:00:00"));
    lblPlayTime->setObjectName(QStringLiteral("lblPlayTime"));
    lblPlayTime->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    pbPlay = new QProgressBar;
    pbPlay->setObjectName(QStringLiteral("pbPlay"));
    pbPlay->setTextVisible(false);
    pbPlay->setMaximumHeight(8);
    grid->addWidget(lblPlay, 0, 4);
    grid->addWidget(lblPlayTime, 0, 5);
    grid->addWidget(pbPlay, 1, 4, 1, 2);
    grid->setColumnStretch(4, 1);
    grid->setContentsMargins(4, 2, 4, 2);
    grid->setVerticalSpacing(0);

    tmrPlay = new QTimer(this);
    tmrPlay->setObjectName(QStringLiteral("tmrPlay"));
    tmrPlay->setInterval(100);
    connect(tmrPlay, &QTimer::timeout, this, [this] { m_c.playerTick(); });
    m_c.playerView.changed = [this] { showPlayer(); };
    showPlayer();
}

PlayerFrame::~PlayerFrame()
{
    m_c.playerView.changed = nullptr;
}

std::vector<QWidget *> PlayerFrame::tabOrder() const
{
    return {imPlay.begin(), imPlay.end()};
}

void PlayerFrame::applyTexts()
{
    const Language language = currentLanguage(m_c.ui());
    for (size_t i = 0; i < imPlay.size(); ++i) {
        const ControlDescription d = describeControl(imPlay[i]->objectName(), language);
        imPlay[i]->setToolTip(d.name + QStringLiteral(" (") + keys()[i].toString(QKeySequence::NativeText) + QLatin1Char(')'));
    }
}

void PlayerFrame::showPlayer()
{
    const PlayerDisplay *d = m_c.playerDisplay();
    setEnabled(d != nullptr);
    if (d == nullptr)
        return;
    const QString title = shownName(d->lblPlay);
    if (lblPlay->text() != title)
        lblPlay->setText(title);
    if (lblPlayTime->text() != d->lblPlayTime)
        lblPlayTime->setText(d->lblPlayTime);
    const int max = std::max(1, static_cast<int>(std::lround(d->progressMax)));
    const int min = static_cast<int>(std::lround(d->progressMin));
    if (pbPlay->maximum() != max || pbPlay->minimum() != min)
        pbPlay->setRange(min, max);
    pbPlay->setValue(std::clamp(static_cast<int>(std::lround(d->progressValue)), min, max));
    // An idle player has no timer at all, so it costs no processor time.
    if (d->timerEnabled && !tmrPlay->isActive())
        tmrPlay->start();
    else if (!d->timerEnabled && tmrPlay->isActive())
        tmrPlay->stop();
}

} // namespace kv
