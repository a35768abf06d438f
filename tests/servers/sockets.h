// Sockets of 127.0.0.1, as the fixtures need them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kvtest {

/// A socket that closes itself.
class Socket {
public:
    explicit Socket(int descriptor = -1) : descriptor_(descriptor) {}
    ~Socket();
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;

    int descriptor() const { return descriptor_; }
    bool isOpen() const { return descriptor_ >= 0; }
    /// Whether all of it was sent; a peer that went away raises no signal.
    bool send(std::string_view bytes) const;

private:
    int descriptor_;
};

/// Listens on a free port, which `port` becomes. Throws std::runtime_error with the reason if it can't.
Socket listenOnFreePort(std::uint16_t& port);

/// A port that was free a moment ago, for a server that opens its own.
std::uint16_t freePort();

/// One attempt; a socket that is not open if nobody listens.
Socket connectTo(std::uint16_t port);

/// Sends an HTTP request and gives back all that comes until the server closes; empty if nobody listens.
std::string exchange(std::uint16_t port, std::string_view request);

std::string localHost(std::uint16_t port);

}  // namespace kvtest
