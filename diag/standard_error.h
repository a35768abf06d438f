// The process's standard error stream as a place for messages.
#pragma once

namespace kv::diag {

/// Writes the text as it stands, without adding a line end, while gdwOutputToStdDebug is on.
void toStandardError(const char* text);

}  // namespace kv::diag
