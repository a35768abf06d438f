#include "servers/sockets.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace kvtest {
namespace {

sockaddr_in addressOf(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

Socket newSocket() {
    Socket made(socket(AF_INET, SOCK_STREAM, 0));
    fcntl(made.descriptor(), F_SETFD, FD_CLOEXEC);
    return made;
}

}  // namespace

Socket::~Socket() {
    if (descriptor_ >= 0) close(descriptor_);
}

Socket::Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

bool Socket::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

Socket listenOnFreePort(std::uint16_t& port) {
    Socket listener = newSocket();
    sockaddr_in address = addressOf(0);
    socklen_t size = sizeof address;
    auto* general = reinterpret_cast<sockaddr*>(&address);
    if (!listener.isOpen() || bind(listener.descriptor(), general, size) != 0 ||
        listen(listener.descriptor(), 64) != 0 || getsockname(listener.descriptor(), general, &size) != 0) {
        throw std::runtime_error(std::string("no port of 127.0.0.1 to listen on: ") + std::strerror(errno));
    }
    port = ntohs(address.sin_port);
    return listener;
}

std::uint16_t freePort() {
    std::uint16_t port = 0;
    listenOnFreePort(port);
    return port;
}

Socket connectTo(std::uint16_t port) {
    Socket client = newSocket();
    const sockaddr_in address = addressOf(port);
    const int on = 1;
    setsockopt(client.descriptor(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(client.descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return Socket();
    return client;
}

std::string exchange(std::uint16_t port, std::string_view request) {
    const Socket client = connectTo(port);
    std::string answer;
    if (!client.isOpen() || !client.send(request)) return answer;
    std::array<char, 4096> block;
    for (ssize_t got; (got = recv(client.descriptor(), block.data(), block.size(), 0)) > 0;) {
        answer.append(block.data(), static_cast<std::size_t>(got));
    }
    return answer;
}

std::string localHost(std::uint16_t port) { return "127.0.0.1:" + std::to_string(port); }

}  // namespace kvtest
