#pragma once

#include <optional>

#include <QString>

namespace kv::cli {

// Free text (a file or folder name, an option text from the configuration) as one field of the
// command's output: tab, newline and carriage return as \t, \n and \r, every other control
// character as the \xHH of its UTF-8 bytes, a backslash as \\, so that no name adds a column or
// splits a row. A byte of a name that is not UTF-8 shows as U+FFFD.
QString escapedText(const QString &text);

// FOLDER as given on the command line, made absolute and cleaned; nothing, after a message on
// standard error, when it does not exist or is not a folder.
std::optional<QString> folderArgument(const QString &folder);

} // namespace kv::cli
