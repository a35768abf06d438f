// Each connection has three threads: one for what the client sends, one that takes what the server sends and notes when
// it came, and one that hands it on when its time has come. What waits is bounded, so that a slow client slows the
// server as it would without the proxy.
#include "bench/delay.h"

#include <arpa/inet.h>
#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "bench/comparison.h"

namespace kv::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPiece = 256 * 1024;
constexpr std::size_t kMostWaiting = 64 * 1024 * 1024;

class Socket {
public:
    explicit Socket(int number) : number_(number) {
        const int on = 1;
        setsockopt(number_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { close(number_); }

    int number() const { return number_; }
    void endSending() const { shutdown(number_, SHUT_WR); }
    void end() const { shutdown(number_, SHUT_RDWR); }

    bool sendAll(const std::vector<char>& bytes) const {
        for (std::size_t at = 0; at < bytes.size();) {
            const ssize_t sent = send(number_, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
            if (sent <= 0) return false;
            at += static_cast<std::size_t>(sent);
        }
        return true;
    }

    /// What has come, or nothing at the end.
    std::vector<char> receive() const {
        std::vector<char> bytes(kPiece);
        const ssize_t got = recv(number_, bytes.data(), bytes.size(), 0);
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return bytes;
    }

private:
    int number_;
};

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// Pieces and the moments at which they may go on.
class Waiting {
public:
    void put(std::vector<char> bytes, Clock::time_point due) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return amount_ < kMostWaiting || ended_; });
        amount_ += bytes.size();
        pieces_.push_back({std::move(bytes), due});
        changed_.notify_all();
    }
    void end() {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        changed_.notify_all();
    }
    /// The next piece at its time; nothing after the last.
    std::vector<char> take() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !pieces_.empty() || ended_; });
        if (pieces_.empty()) return {};
        Piece piece = std::move(pieces_.front());
        pieces_.pop_front();
        amount_ -= piece.bytes.size();
        changed_.notify_all();
        lock.unlock();
        std::this_thread::sleep_until(piece.due);
        return std::move(piece.bytes);
    }

private:
    struct Piece {
        std::vector<char> bytes;
        Clock::time_point due;
    };
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Piece> pieces_;
    std::size_t amount_ = 0;
    bool ended_ = false;
};

class Connection {
public:
    Connection(int client, int server, std::chrono::milliseconds delay)
        : client_(client), server_(server), delay_(delay) {}
    ~Connection() {
        client_.end();
        server_.end();
        waiting_.end();
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

private:
    void there() {
        for (auto bytes = client_.receive(); !bytes.empty() && server_.sendAll(bytes);) bytes = client_.receive();
        server_.endSending();
    }
    void back() {
        for (auto bytes = server_.receive(); !bytes.empty(); bytes = server_.receive()) {
            waiting_.put(std::move(bytes), Clock::now() + delay_);
        }
        waiting_.end();
    }
    void handOn() {
        for (auto bytes = waiting_.take(); !bytes.empty() && client_.sendAll(bytes);) bytes = waiting_.take();
        client_.endSending();
        server_.end();
        waiting_.end();
    }

    Socket client_;
    Socket server_;
    std::chrono::milliseconds delay_;
    Waiting waiting_;
    // Last, so that they have ended before what they use goes.
    std::jthread there_{[this] { there(); }};
    std::jthread back_{[this] { back(); }};
    std::jthread handOn_{[this] { handOn(); }};
};

}  // namespace

class DelayingProxy::Impl {
public:
    Impl(std::uint16_t server, std::chrono::milliseconds delay) : server_(server), delay_(delay) {
        const sockaddr_in address = loopback(0);
        require(bind(listener_.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
                    listen(listener_.number(), 16) == 0,
                "the delaying proxy can't listen");
        accepting_ = std::jthread([this] { accept(); });
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() { listener_.end(); }

    std::uint16_t port() const {
        sockaddr_in address{};
        socklen_t length = sizeof address;
        getsockname(listener_.number(), reinterpret_cast<sockaddr*>(&address), &length);
        return ntohs(address.sin_port);
    }

private:
    void accept() {
        for (int client = ::accept(listener_.number(), nullptr, nullptr); client >= 0;
             client = ::accept(listener_.number(), nullptr, nullptr)) {
            const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
            const sockaddr_in address = loopback(server_);
            require(connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
                    "the delaying proxy can't reach its server");
            connections_.emplace_back(client, server, delay_);
        }
    }

    std::uint16_t server_;
    std::chrono::milliseconds delay_;
    Socket listener_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::list<Connection> connections_;  // kept to the end: a run makes few
    std::jthread accepting_;
};

DelayingProxy::DelayingProxy(const std::string& server, std::chrono::milliseconds delay)
    : impl_(
          std::make_unique<Impl>(static_cast<std::uint16_t>(std::stoi(server.substr(server.rfind(':') + 1))), delay)) {}
DelayingProxy::~DelayingProxy() = default;

std::string DelayingProxy::host() const { return "127.0.0.1:" + std::to_string(impl_->port()); }

}  // namespace kv::bench
