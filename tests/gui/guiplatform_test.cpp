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

// The desktop gets a URL that names the help document byte for byte, wherever the program lies.
TEST(WindowHelp, DocumentUrlNamesTheFileByteForByte)
{
    Desktop desktop;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &desktop, "open");
    for (const QByteArray &folder : {QByteArray("/opt/kestrelvane/"),
                                    QByteArray("/home/me/Kestrel vane #2?/"),              // a blank, a fragment and a query mark
                                    QByteArray("/home/\xd0\xbc\xd0\xbe\xd1\x8f/prog/"), // Cyrillic, UTF-8
                                    QByteArray("/media/old/\xcf\xf0\xee\xe3/")}) {        // Windows-1251, not UTF-8
        const QByteArray path = folder + "help/rus/index.htm";
        ASSERT_TRUE(openDocument(nameFromBytes(path))) << path.constData();
        ASSERT_EQ(desktop.opened.size(), 1);
        const QUrl url = desktop.opened.takeLast();
        EXPECT_TRUE(url.isValid() && url.isLocalFile() && !url.hasQuery() && !url.hasFragment()) << path.constData();
        EXPECT_EQ(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()), path);
    }
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

#include "guiplatform_test.moc"
