// The codecs' command lines: any arguments, each quoted and joined by blanks, split back into the
// same arguments; and any text splits into arguments that survive the same round.
#include <QStringList>

#include "fuzzing.h"
#include "platform/processes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto survivesTheRound = [](const QStringList &arguments) {
        QStringList quoted;
        for (const QString &argument : arguments)
            quoted.append(kv::quoteArgument(argument));
        return kv::splitCommandLine(quoted.join(QLatin1Char(' '))) == arguments;
    };
    const QString text = kvfuzz::utf16Of(data, size);
    // A NUL cannot be part of an argument, so it separates the arguments of the first round.
    KV_FUZZ_CHECK(survivesTheRound(text.split(QChar(u'\0'))));
    KV_FUZZ_CHECK(survivesTheRound(kv::splitCommandLine(text)));
    return 0;
}
