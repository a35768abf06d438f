#include "bench/resident.h"

#include <cstdio>
#include <unistd.h>

namespace kv::bench {

double residentMiB() {
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr) return 0;
    unsigned long pages = 0;
    if (std::fscanf(file, "%*u %lu", &pages) != 1) pages = 0;
    std::fclose(file);
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1048576;
}

}  // namespace kv::bench
