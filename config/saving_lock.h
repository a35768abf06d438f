// The lock of saving: one save at a time in the process, whatever call it comes from.
#pragma once

#include <mutex>

namespace kv::config {

/// Two stores may have one file, and so one ring of backups. Recursive, since a report on the way may read the log's
/// settings, which saves. Taken before a store's own lock.
extern std::recursive_mutex savingLock;

}  // namespace kv::config
