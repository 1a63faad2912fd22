#pragma once

#include <functional>

#include "app/maincontroller.h"

class QUrl;
class QWidget;

namespace kv {

// Message boxes with the information or critical icon and the program's name as title.
class GuiMessages : public Messages
{
public:
    void setParent(QWidget *parent) { m_parent = parent; }
    void information(const QString &text) override;
    void critical(const QString &text) override;

private:
    QWidget *m_parent = nullptr;
};

// The hourglass as the application's override cursor.
class GuiBusyCursor : public BusyCursor
{
public:
    void begin() override;
    void end() override;
};

// The file URL of a local document, made from its name's bytes: a folder name that is not UTF-8,
// or that holds "#" or "?", still names the same file for the desktop's browser.
QUrl documentUrl(const QString &path);

// Hands a local document to the desktop's browser.
bool openDocument(const QString &path);

// Calls ended(signal) from the event loop when SIGTERM, SIGHUP or SIGINT arrives: the end of
// the user's session. A closed output pipe no longer ends the program.
void watchSessionEnd(QObject *owner, const std::function<void(int)> &ended);

} // namespace kv
