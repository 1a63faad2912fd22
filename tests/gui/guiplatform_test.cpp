#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include "gui/guiplatform.h"
#include "support/qtprinters.h"

using namespace kv;

// A message box over the hourglass shows the ordinary pointer, and the hourglass comes back.
TEST(GuiMessages, ShowTheOrdinaryPointerOverTheHourglassAndGiveItBack)
{
    GuiMessages messages;
    GuiBusyCursor busy;
    for (const bool critical : {false, true}) {
        busy.begin();
        // Closes the box that shows, noting its icon, text and the pointer over it.
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QString text;
        Qt::CursorShape pointer = Qt::BlankCursor;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                icon = box->icon(), text = box->text();
                pointer = QApplication::overrideCursor() != nullptr ? QApplication::overrideCursor()->shape() : Qt::ArrowCursor;
                box->accept();
            }
        });
        timer.start(10);
        if (critical)
            messages.critical(QStringLiteral("/opt/kv/codec/lame not found"));
        else
            messages.information(QStringLiteral("Drive is not ready, change another drive"));
        const QMessageBox::Icon shown = critical ? QMessageBox::Critical : QMessageBox::Information;
        EXPECT_TRUE(icon == shown && !text.isEmpty() && pointer == Qt::ArrowCursor) << icon << " " << text.toStdString() << " " << pointer;
        ASSERT_NE(QApplication::overrideCursor(), nullptr);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        busy.end();
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
}
