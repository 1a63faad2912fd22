#include <gtest/gtest.h>

#include <functional>

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QTimer>
#include <QUrl>

#include "gui/guiplatform.h"
#include "platform/nativenames.h"
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
                icon = box->icon();
                text = box->text();
                pointer = QApplication::overrideCursor() != nullptr ? QApplication::overrideCursor()->shape() : Qt::ArrowCursor;
                box->accept();
            }
        });
        timer.start(10);
        c.show();
        EXPECT_EQ(icon, c.icon);
        EXPECT_FALSE(text.isEmpty());
        EXPECT_EQ(pointer, Qt::ArrowCursor);
        ASSERT_NE(QApplication::overrideCursor(), nullptr);
        EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        busy.end();
        EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    }
}

namespace {

// Stands in for the desktop: the file URLs it is handed.
class Desktop : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};

} // namespace

#include "guiplatform_test.moc"
