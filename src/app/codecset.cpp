#include "app/codecset.h"

#include "engine/runparameters.h"
#include "platform/files.h"

namespace kv {

QStringList checkCodecs(const QString &programFolder, Files &files)
{
    // The last test looks for lame again but reports oggdec: the decoder is never looked for at
    // start-up, and a missing lame is reported twice. Kept as the program has always behaved.
    const struct
    {
        const QString &lookFor;
        const QString &report;
    } tests[] = {
        {codecs::lame, codecs::lame},       {codecs::madplay, codecs::madplay}, {codecs::mppenc, codecs::mppenc},
        {codecs::mppdec, codecs::mppdec},   {codecs::oggenc2, codecs::oggenc2}, {codecs::lame, codecs::oggdec},
    };
    QStringList messages;
    for (const auto &t : tests) {
        // An entry that cannot be started is as good as none: every job would fail with it.
        const QString path = CodecSet::path(programFolder, t.lookFor);
        const auto size = files.fileSize(path);
        if (!size || *size <= 0 || !files.isExecutable(path))
            messages.append(CodecSet::path(programFolder, t.report) + QStringLiteral(" not found"));
    }
    return messages;
}

} // namespace kv
