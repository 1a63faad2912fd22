#include "gui/guiplatform.h"

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QUrl>

#include "platform/nativenames.h"

namespace kv {

void GuiMessages::information(const QString &text)
{
    QMessageBox::information(m_parent, QApplication::applicationDisplayName(), text);
}

void GuiMessages::critical(const QString &text)
{
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

} // namespace kv
