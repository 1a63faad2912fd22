#pragma once

#include <array>
#include <optional>

#include <QString>

#include "platform/processes.h"

namespace kv {

// One row of the job list: the file name and five sub-items, all texts as shown, and the row's
// bold state. The row's 1-based position is the job's identity.
struct EncodeJob
{
    enum Column { Name = 0, Status = 1, SourceSize = 2, TargetSize = 3, Percent = 4, Time = 5 };
    static constexpr int ColumnCount = 6;

    std::array<QString, ColumnCount> columns;
    bool bold = false;
    // How the codec ended when it exited non-zero or died by a signal; the status column still
    // follows the target's size.
    std::optional<ProcessEnd> codecFailure;
    // Why the program itself ended the job ("aborted"); empty when the codec ended on its own.
    QString reason;

    const QString &operator[](int column) const { return columns.at(static_cast<size_t>(column)); }
    QString &operator[](int column) { return columns.at(static_cast<size_t>(column)); }
    bool operator==(const EncodeJob &) const = default;
};

} // namespace kv
