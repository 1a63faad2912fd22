#pragma once

#include <array>

#include <QString>

namespace kv {

// The texts of the eight status-bar panels, numbered from 1 as the window numbers them:
// 1 processors, 2 free space, 3 files, 4 size, 5 duration, 6 bit rate, 7 language, 8 help.
struct StatusBar
{
    std::array<QString, 8> panels;

    QString &panel(int number) { return panels.at(static_cast<size_t>(number - 1)); }
    const QString &panel(int number) const { return panels.at(static_cast<size_t>(number - 1)); }
};

} // namespace kv
