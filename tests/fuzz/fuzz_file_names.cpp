// File names as bytes: every byte string comes back exactly from the text it maps to, valid UTF-8
// maps to the text it encodes, and any text maps to bytes that survive the same round.
#include <QByteArrayView>

#include "fuzzing.h"
#include "platform/nativenames.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes = kvfuzz::bytesOf(data, size);
    const QString name = kv::nameFromBytes(bytes);
    KV_FUZZ_CHECK(kv::bytesFromName(name) == bytes);
    KV_FUZZ_CHECK(!QByteArrayView(bytes).isValidUtf8() || name == QString::fromUtf8(bytes));
    // What a person is shown holds no escape any more: it is plain, valid text.
    KV_FUZZ_CHECK(QByteArrayView(kv::bytesFromName(kv::shownName(name))).isValidUtf8());

    const QByteArray fromText = kv::bytesFromName(kvfuzz::utf16Of(data, size));
    KV_FUZZ_CHECK(kv::bytesFromName(kv::nameFromBytes(fromText)) == fromText);
    return 0;
}
