#include <gtest/gtest.h>

#include <functional>

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
    const struct { std::function<void()> show; QMessageBox::Icon icon; } cases[] = {
        {[&] { messages.information(QStringLiteral("Drive is not ready, change another drive")); }, QMessageBox::Information},
        {[&] { messages.critical(QStringLiteral("/opt/kv/codec/lame not found")); }, QMessageBox::Critical},
    };
    for (const auto &c : cases) {
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
        c.show();
        EXPECT_TRUE(icon == c.icon && !text.isEmpty() && pointer == Qt::ArrowCursor) << icon << " " << text.toStdString() << " " << pointer;
        ASSERT_NE(QApplication::overrideCursor(), nullptr);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        busy.end();
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
}
