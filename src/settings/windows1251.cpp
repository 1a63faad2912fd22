#include "settings/windows1251.h"

#include <array>
#include <cstdint>

#include <QList>

namespace kv {

namespace {

// Bytes 0x80 to 0xBF; 0xC0 to 0xFF are U+0410 to U+044F in order, below 0x80 is ASCII.
// 0x98 has no character in the code page and is carried as U+0098 so that it survives a round trip.
constexpr std::array<char16_t, 64> kHighHalf = {
    0x0402, 0x0403, 0x201A, 0x0453, 0x201E, 0x2026, 0x2020, 0x2021, // 80
    0x20AC, 0x2030, 0x0409, 0x2039, 0x040A, 0x040C, 0x040B, 0x040F, // 88
    0x0452, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, // 90
    0x0098, 0x2122, 0x0459, 0x203A, 0x045A, 0x045C, 0x045B, 0x045F, // 98
    0x00A0, 0x040E, 0x045E, 0x0408, 0x00A4, 0x0490, 0x00A6, 0x00A7, // A0
    0x0401, 0x00A9, 0x0404, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x0407, // A8
    0x00B0, 0x00B1, 0x0406, 0x0456, 0x0491, 0x00B5, 0x00B6, 0x00B7, // B0
    0x0451, 0x2116, 0x0454, 0x00BB, 0x0458, 0x0405, 0x0455, 0x0457, // B8
};

char encodeOne(uint c)
{
    if (c < 0x80)
        return static_cast<char>(c);
    if (c >= 0x0410 && c <= 0x044F)
        return static_cast<char>(0xC0 + (c - 0x0410));
    for (std::size_t i = 0; i < kHighHalf.size(); ++i) {
        if (kHighHalf[i] == c)
            return static_cast<char>(0x80 + i);
    }
    return '?';
}

} // namespace

QByteArray toWindows1251(const QString &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const uint c : text.toUcs4()) // a surrogate pair is one character, so one "?"
        bytes.append(encodeOne(c));
    return bytes;
}

QString fromWindows1251(const QByteArray &bytes)
{
    QString text;
    text.reserve(bytes.size());
    for (const char b : bytes) {
        const auto u = static_cast<std::uint8_t>(b);
        if (u < 0x80)
            text.append(QChar(static_cast<char16_t>(u)));
        else if (u >= 0xC0)
            text.append(QChar(static_cast<char16_t>(0x0410 + (u - 0xC0))));
        else
            text.append(QChar(kHighHalf[u - 0x80]));
    }
    return text;
}

} // namespace kv
