#pragma once
// Every target defines the entry below: libFuzzer calls it in the fuzzing build, replaymain.cpp
// over the kept inputs in the ordinary test run.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <QByteArray>
#include <QString>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// A broken property is a crash, which libFuzzer and the replay both report with the input.
#define KV_FUZZ_CHECK(condition) \
    ((condition) ? void(0) : (std::fprintf(stderr, "%s:%d: property broken: %s\n", __FILE__, __LINE__, #condition), std::abort()))

namespace kvfuzz {

inline QByteArray bytesOf(const std::uint8_t *data, std::size_t size) { return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)); }

// The input as UTF-16 code units, lone surrogates included: names and command lines may hold any
// of them. Copied, since the input need not be aligned for char16_t.
inline QString utf16Of(const std::uint8_t *data, std::size_t size)
{
    QString text(qsizetype(size / 2), Qt::Uninitialized);
    std::memcpy(text.data(), data, (size / 2) * 2);
    return text;
}

} // namespace kvfuzz
