#include "gui/guiplatform.h"

#include <csignal>

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QSocketNotifier>
#include <QUrl>

#include "platform/nativenames.h"
#include "platform/posix/posixprocesses.h"

namespace kv {

namespace {

// The hourglass belongs to the window's work: a message shown in the middle of it (a drive that
// is not ready) gets the ordinary pointer, and the hourglass comes back when it is closed.
class OrdinaryPointer
{
public:
    OrdinaryPointer() : m_busy(QApplication::overrideCursor() != nullptr)
    {
        if (m_busy)
            QApplication::setOverrideCursor(Qt::ArrowCursor);
    }
    ~OrdinaryPointer()
    {
        if (m_busy)
            QApplication::restoreOverrideCursor();
    }
    OrdinaryPointer(const OrdinaryPointer &) = delete;
    OrdinaryPointer &operator=(const OrdinaryPointer &) = delete;

private:
    bool m_busy;
};

} // namespace

void GuiMessages::information(const QString &text)
{
    const OrdinaryPointer pointer;
    QMessageBox::information(m_parent, QApplication::applicationDisplayName(), text);
}

void GuiMessages::critical(const QString &text)
{
    const OrdinaryPointer pointer;
    QMessageBox::critical(m_parent, QApplication::applicationDisplayName(), text);
}

void GuiBusyCursor::begin()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void GuiBusyCursor::end()
{
    QApplication::restoreOverrideCursor();
}

QUrl documentUrl(const QString &path)
{
    return QUrl::fromEncoded(QByteArrayLiteral("file://") + bytesFromName(path).toPercentEncoding("/"), QUrl::StrictMode);
}

bool openDocument(const QString &path)
{
    return QDesktopServices::openUrl(documentUrl(path));
}

void watchSessionEnd(QObject *owner, const std::function<void(int)> &ended)
{
    auto *signals = new QSocketNotifier(InterruptWatcher::install(), QSocketNotifier::Read, owner);
    QObject::connect(signals, &QSocketNotifier::activated, owner, [ended] {
        for (const int sig : InterruptWatcher::takeSignals()) {
            if (sig == SIGTERM || sig == SIGHUP || sig == SIGINT) {
                ended(sig);
                return;
            }
        }
    });
}

} // namespace kv
