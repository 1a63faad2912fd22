#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <QByteArray>
#include <QString>

// Every target defines this entry: libFuzzer calls it in the fuzzing build, the replay driver
// calls it over the kept inputs in the ordinary test run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace kvfuzz {

// A broken property is a crash, which libFuzzer and the replay both report with the input.
[[noreturn]] inline void fail(const char *what, const char *file, int line)
{
    std::fprintf(stderr, "%s:%d: property broken: %s\n", file, line, what);
    std::abort();
}

inline QByteArray bytesOf(const std::uint8_t *data, std::size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
}

// The input as UTF-16 code units, lone surrogates included: names and command lines may hold
// any of them. Copied, since the input need not be aligned for char16_t.
inline QString utf16Of(const std::uint8_t *data, std::size_t size)
{
    QString text(static_cast<qsizetype>(size / 2), Qt::Uninitialized);
    std::memcpy(text.data(), data, (size / 2) * 2);
    return text;
}

} // namespace kvfuzz

#define KV_FUZZ_CHECK(condition) \
    ((condition) ? void(0) : kvfuzz::fail(#condition, __FILE__, __LINE__))
