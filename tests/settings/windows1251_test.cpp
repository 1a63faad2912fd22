#include <gtest/gtest.h>

#include <iconv.h>

#include <cerrno>
#include <optional>

#include "settings/windows1251.h"
#include "support/qtprinters.h"

using namespace kv;

namespace {

// One conversion through the C library's own code page tables; nothing when it refuses the input.
std::optional<QByteArray> convert(const char *to, const char *from, QByteArray in)
{
    const iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        return std::nullopt;
    QByteArray out(16, '\0');
    char *inPtr = in.data();
    char *outPtr = out.data();
    size_t inLeft = static_cast<size_t>(in.size());
    size_t outLeft = static_cast<size_t>(out.size());
    const size_t done = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv_close(cd);
    if (done == static_cast<size_t>(-1))
        return std::nullopt;
    out.truncate(out.size() - static_cast<qsizetype>(outLeft));
    return out;
}

QByteArray utf32(char32_t c)
{
    return QByteArray(reinterpret_cast<const char *>(&c), sizeof c);
}

} // namespace

// The upper half of the code page, both ways, against the C library's CP1251. The one byte it
// leaves undefined, 0x98, is carried as U+0098 so that a record read and written back is
// unchanged; every other character outside the code page is written as "?".
TEST(Windows1251, UpperHalfAgreesWithTheSystemCodePage)
{
    ASSERT_TRUE(convert("CP1251", "UTF-32LE", utf32(U'Ж'))) << "glibc's CP1251 converter is missing";
    for (int b = 0x80; b <= 0xFF; ++b) {
        const QByteArray byte(1, static_cast<char>(b));
        const std::optional<QByteArray> decoded = convert("UTF-32LE", "CP1251", byte);
        const char32_t expected = decoded ? *reinterpret_cast<const char32_t *>(decoded->constData()) : char32_t(b);
        EXPECT_EQ(decoded.has_value(), b != 0x98) << b;
        EXPECT_EQ(fromWindows1251(byte), QString::fromUcs4(&expected, 1)) << b;
        EXPECT_EQ(toWindows1251(QString::fromUcs4(&expected, 1)), byte) << b;
    }
    // Every character of the Basic Multilingual Plane, U+FEFF included (not a byte-order mark
    // here): a byte where the system has one, else "?".
    for (char32_t c = 0x80; c <= 0xFFFF; ++c) {
        if ((c >= 0xD800 && c <= 0xDFFF) || c == 0x98)
            continue;
        const QByteArray expected = convert("CP1251", "UTF-32LE", utf32(c)).value_or(QByteArrayLiteral("?"));
        ASSERT_EQ(toWindows1251(QString(QChar(static_cast<char16_t>(c)))), expected) << std::hex << static_cast<unsigned>(c);
    }
}
