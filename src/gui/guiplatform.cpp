#include "gui/guiplatform.h"

#include <QApplication>
#include <QMessageBox>

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

} // namespace kv
