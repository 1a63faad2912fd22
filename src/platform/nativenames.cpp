#include "platform/nativenames.h"

namespace kv {

namespace {

constexpr char16_t kEscapeBase = 0xDC00; // byte b (0x80 to 0xFF) is U+DC00 + b

bool isEscape(QChar c)
{
    return c.unicode() >= kEscapeBase + 0x80 && c.unicode() <= kEscapeBase + 0xFF;
}

// Length of the valid UTF-8 sequence starting at i and its code point, or 0 when the byte there
// starts none (overlong forms, surrogates and values above U+10FFFF are not valid).
int validSequence(QByteArrayView bytes, qsizetype i, char32_t &codePoint)
{
    const auto at = [&](qsizetype k) { return static_cast<unsigned char>(bytes[k]); };
    const unsigned char lead = at(i);
    int length = 0;
    char32_t minimum = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        codePoint = lead & 0x1F;
        minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        codePoint = lead & 0x0F;
        minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        codePoint = lead & 0x07;
        minimum = 0x10000;
    } else {
        return 0;
    }
    if (i + length > bytes.size())
        return 0;
    for (int k = 1; k < length; ++k) {
        const unsigned char c = at(i + k);
        if ((c & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (c & 0x3F);
    }
    if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

// Calls escape(i) at each escape of name; a surrogate pair is one character, even when its low
// half looks like an escape.
template <typename Escape>
void forEachEscape(const QString &name, Escape escape)
{
    for (qsizetype i = 0; i < name.size(); ++i) {
        const QChar c = name.at(i);
        if (c.isHighSurrogate() && i + 1 < name.size() && name.at(i + 1).isLowSurrogate())
            ++i;
        else if (isEscape(c))
            escape(i);
    }
}

} // namespace

QString nameFromBytes(QByteArrayView bytes)
{
    QString name;
    name.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size();) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (b < 0x80) {
            name += QLatin1Char(static_cast<char>(b));
            ++i;
            continue;
        }
        char32_t codePoint = 0;
        if (const int length = validSequence(bytes, i, codePoint); length > 0) {
            // Not QString::fromUcs4, which takes a leading U+FEFF for a byte order mark and drops it.
            name += QChar::fromUcs4(codePoint);
            i += length;
        } else {
            name += QChar(static_cast<char16_t>(kEscapeBase + b));
            ++i;
        }
    }
    return name;
}

QByteArray bytesFromName(const QString &name)
{
    QByteArray bytes;
    bytes.reserve(name.size());
    qsizetype runStart = 0; // start of the text not yet encoded
    const auto flush = [&](qsizetype end) {
        if (end > runStart)
            bytes += QStringView(name).mid(runStart, end - runStart).toUtf8();
    };
    forEachEscape(name, [&](qsizetype i) {
        flush(i);
        bytes += static_cast<char>(name.at(i).unicode() - kEscapeBase);
        runStart = i + 1;
    });
    flush(name.size());
    return bytes;
}

QString shownName(const QString &name)
{
    QString shown = name;
    forEachEscape(name, [&](qsizetype i) { shown[i] = QChar(QChar::ReplacementCharacter); });
    return shown;
}

} // namespace kv
