// How much of this process lies in memory.
#pragma once

namespace kv::bench {

/// The resident size, in MiB; 0 where the system does not tell.
double residentMiB();

}  // namespace kv::bench
