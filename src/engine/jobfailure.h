#pragma once

#include <QString>

#include "engine/encodejob.h"

namespace kv {

// How a failed codec ended, in words: "exit status 1" or "signal 11 (Segmentation fault)".
QString processEndText(const ProcessEnd &end);

// What the codec wrote last on its standard error, blanks around it trimmed. Codecs write their
// own language; a byte that is not UTF-8 shows as a replacement mark.
QString errorOutputText(const ProcessEnd &end);

// Why a job failed, for the user: the reason the program ended it, how its codec ended and the
// end of what the codec wrote on its standard error. Empty when there is nothing to tell.
QString jobFailureText(const EncodeJob &job);

} // namespace kv
