#include <gtest/gtest.h>

#include "platform/nativenames.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

// The escapes of undecodable bytes, in order.
QString escaped(std::initializer_list<unsigned char> bytes)
{
    QString s;
    for (unsigned char b : bytes)
        s += QChar(static_cast<char16_t>(0xDC00 + b));
    return s;
}

} // namespace

TEST(NativeNames, DecodesValidUtf8AndEscapesEveryOtherByte)
{
    const struct { QByteArray bytes; QString name; } cases[] = {
        {"\xD1\x91\xD0\xB6 \xC3\xBC.wav", QString::fromUtf8("ёж ü.wav")},
        // U+10080: a pair whose low half lies among the escapes, and must stay one character.
        {"\xF0\x90\x82\x80", QString::fromUcs4(U"\U00010080")},
        // U+FEFF is a character like any other in a name, not a byte order mark to drop.
        {"\xEF\xBB\xBF" "a\xEF\xBB\xBF", QStringLiteral(u"\uFEFFa\uFEFF")},
        // Windows-1251 "Пир" and Latin-1 "café".
        {"\xCF\xE8\xF0", escaped({0xCF, 0xE8, 0xF0})},
        {"caf\xE9.wav", QStringLiteral("caf") + escaped({0xE9}) + QStringLiteral(".wav")},
        // Not valid UTF-8: overlong, an encoded surrogate, above U+10FFFF, cut short.
        {"\xC0\xAF", escaped({0xC0, 0xAF})},
        {"\xED\xB2\x80", escaped({0xED, 0xB2, 0x80})},
        {"\xF4\x90\x80\x80", escaped({0xF4, 0x90, 0x80, 0x80})},
        {"\xE2\x82" "a", escaped({0xE2, 0x82}) + QLatin1Char('a')},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(nameFromBytes(c.bytes), c.name) << c.bytes.toHex().constData();
        EXPECT_EQ(bytesFromName(c.name), c.bytes) << c.bytes.toHex().constData();
    }
}

// Every single byte, every pair of bytes (which holds every cut-short and stray sequence start)
// and every sequence of a three- or four-byte lead (its fourth byte 80) comes back exactly: an
// overlong form taken as a character would name another file.
TEST(NativeNames, EveryByteStringRoundTrips)
{
    QByteArray pair(2, '\0'), longer(4, '\x80');
    for (int a = 0; a < 256; ++a) {
        const QByteArray one(1, static_cast<char>(a));
        ASSERT_EQ(bytesFromName(nameFromBytes(one)), one) << a;
        for (int b = 0; b < 256; ++b) {
            pair[0] = longer[0] = static_cast<char>(a);
            pair[1] = longer[1] = static_cast<char>(b);
            ASSERT_EQ(bytesFromName(nameFromBytes(pair)), pair) << a << ' ' << b;
            for (int c = 0; a >= 0xE0 && a <= 0xF4 && c < 256; ++c) {
                longer[2] = static_cast<char>(c);
                const QByteArray sequence = longer.left(a < 0xF0 ? 3 : 4);
                ASSERT_EQ(bytesFromName(nameFromBytes(sequence)), sequence) << a << ' ' << b << ' ' << c;
            }
        }
    }
}

TEST(NativeNames, ShownNamesReplaceOnlyUndecodableBytes)
{
    EXPECT_EQ(shownName(nameFromBytes("\xCF\xE8\xF0 caf\xE9 \xD1\x91")), QString::fromUtf8("\uFFFD\uFFFD\uFFFD caf\uFFFD ё"));
    EXPECT_EQ(shownName(nameFromBytes("\xF0\x90\x82\x80")), QString::fromUcs4(U"\U00010080"));
}
