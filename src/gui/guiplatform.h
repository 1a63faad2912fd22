#pragma once

#include "app/maincontroller.h"

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

} // namespace kv
