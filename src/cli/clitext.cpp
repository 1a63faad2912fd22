#include "cli/clitext.h"

#include "cli/command.h"
#include "platform/nativenames.h"
#include "platform/posix/posixpaths.h"

namespace kv::cli {

QString escapedText(const QString &text)
{
    const QString shown = shownName(text);
    QString escaped;
    escaped.reserve(shown.size());
    for (const QChar c : shown) {
        const char16_t u = c.unicode();
        if (u == u'\\') {
            escaped += QStringLiteral("\\\\");
        } else if (u == u'\t') {
            escaped += QStringLiteral("\\t");
        } else if (u == u'\n') {
            escaped += QStringLiteral("\\n");
        } else if (u == u'\r') {
            escaped += QStringLiteral("\\r");
        } else if (u < 0x20 || (u >= 0x7F && u <= 0x9F)) {
            // C1 controls too: some terminals act on them.
            for (const char byte : QString(c).toUtf8())
                escaped += QStringLiteral("\\x%1").arg(static_cast<unsigned char>(byte), 2, 16, QLatin1Char('0'));
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::optional<QString> folderArgument(const QString &folder)
{
    switch (pathKind(folder)) {
    case PathKind::Folder:
        return absolutePath(folder);
    case PathKind::Missing:
        err(QStringLiteral("kestrelvane-cli: ") + escapedText(folder) + QStringLiteral(": no such folder\n"));
        return std::nullopt;
    case PathKind::Other:
        break;
    }
    err(QStringLiteral("kestrelvane-cli: ") + escapedText(folder) + QStringLiteral(": not a folder\n"));
    return std::nullopt;
}

} // namespace kv::cli
