// The log behind the reporting calls. It keeps nothing yet, so that every message goes on to standard error.
#include "diag/log_list.h"

namespace kv::diag {

std::uint32_t putInLog(std::uint32_t, const char*) { return kLogStored; }

}  // namespace kv::diag
