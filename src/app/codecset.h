#pragma once

#include <QString>
#include <QStringList>

namespace kv {

class Files;

// The codec folder beside the program and the six programs the conversions and the player start.
struct CodecSet
{
    // programFolder ends in "/".
    static QString folder(const QString &programFolder) { return programFolder + QStringLiteral("codec/"); }
    static QString path(const QString &programFolder, const QString &codec) { return folder(programFolder) + codec; }
};

// The start-up check of the codec folder: one "<full path> not found" message per failed test,
// in check order; no messages means the program may start. A file counts when it exists (links
// followed), is not empty and may be executed.
QStringList checkCodecs(const QString &programFolder, Files &files);

} // namespace kv
