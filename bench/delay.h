// A proxy on this machine that holds back what a server sends, so that every answer begins later than it would: a
// network with a round trip, at the bandwidth of none.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace kv::bench {

class DelayingProxy {
public:
    /// In front of "127.0.0.1:PORT". What clients send goes on at once, what comes back `delay` later.
    DelayingProxy(const std::string& server, std::chrono::milliseconds delay);
    DelayingProxy(const DelayingProxy&) = delete;
    DelayingProxy& operator=(const DelayingProxy&) = delete;
    ~DelayingProxy();

    std::string host() const;  // "127.0.0.1:PORT"

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kv::bench
