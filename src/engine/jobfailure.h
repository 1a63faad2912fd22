#pragma once

#include <QString>

#include "engine/encodejob.h"

namespace kv {

// How a failed codec ended, in words: "exit status 1" or "signal 11 (Segmentation fault)".
QString processEndText(const ProcessEnd &end);

// Why a job failed, for the user: the reason the program ended it, how its codec ended and the
// end of what the codec wrote on its standard error. Empty when there is nothing to tell.
QString jobFailureText(const EncodeJob &job);

} // namespace kv
