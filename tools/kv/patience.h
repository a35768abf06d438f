// An end to waiting: reads that would wait for ever are interrupted.
#pragma once

#include <chrono>

namespace kv::tool {

/// While it lives, a read that waits is interrupted whenever that much time has gone by. One at a time.
class Patience {
public:
    explicit Patience(std::chrono::milliseconds interval);
    ~Patience();
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;
};

}  // namespace kv::tool
