#pragma once

#include <array>

#include <QString>

namespace kv {

// One row of the job list: the file name and five sub-items, all texts as shown, and the row's
// bold state. The row's 1-based position is the job's identity.
struct EncodeJob
{
    enum Column { Name = 0, Status = 1, SourceSize = 2, TargetSize = 3, Percent = 4, Time = 5 };
    static constexpr int ColumnCount = 6;

    std::array<QString, ColumnCount> columns;
    bool bold = false;

    const QString &operator[](int column) const { return columns.at(static_cast<size_t>(column)); }
    QString &operator[](int column) { return columns.at(static_cast<size_t>(column)); }
    bool operator==(const EncodeJob &) const = default;
};

} // namespace kv
