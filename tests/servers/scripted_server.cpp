// One thread accepts, and each connection has one of its own. What they share is under one mutex.
//
// The end: the listener and all connections are shut down, which wakes whoever waits for bytes, and one condition
// wakes whoever waits for time or for release().
#include "servers/scripted_server.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <condition_variable>
#include <limits>
#include <list>
#include <mutex>
#include <strings.h>
#include <sys/socket.h>
#include <thread>

#include "servers/sockets.h"

namespace kvtest {
namespace {

constexpr std::size_t kChunkSize = 1000;
constexpr std::chrono::seconds kLongestWait{30};
constexpr char kTlsHandshake = 0x16;  // what the first record of a client that talks TLS begins with

/// The bytes of one connection, line by line or by count; nothing once the client is gone.
class Incoming {
public:
    explicit Incoming(int descriptor) : descriptor_(descriptor) {}

    /// The next byte, which stays.
    std::optional<char> next() {
        if (held_.empty() && !fill()) return std::nullopt;
        return held_.front();
    }

    std::optional<std::string> line() {
        std::size_t end;
        while ((end = held_.find('\n')) == std::string::npos) {
            if (!fill()) return std::nullopt;
        }
        std::string text = held_.substr(0, end);
        held_.erase(0, end + 1);
        if (text.ends_with('\r')) text.pop_back();
        return text;
    }

    std::optional<std::string> bytes(std::size_t count) {
        while (held_.size() < count) {
            if (!fill()) return std::nullopt;
        }
        std::string text = held_.substr(0, count);
        held_.erase(0, count);
        return text;
    }

private:
    bool fill() {
        std::array<char, 65536> block;
        const ssize_t got = recv(descriptor_, block.data(), block.size(), 0);
        if (got <= 0) return false;
        held_.append(block.data(), static_cast<std::size_t>(got));
        return true;
    }

    int descriptor_;
    std::string held_;
};

std::size_t numberIn(std::string_view text, int base) {
    std::size_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number, base);
    return number;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

bool readHeaders(Incoming& in, Request& request) {
    for (;;) {
        const auto line = in.line();
        if (!line) return false;
        if (line->empty()) return true;
        const std::size_t colon = std::min(line->find(':'), line->size());
        const std::string_view value = trimmed(std::string_view(*line).substr(std::min(colon + 1, line->size())));
        std::string& held = request.headers[line->substr(0, colon)];
        held += (held.empty() ? "" : ", ") + std::string(value);
    }
}

bool readChunks(Incoming& in, std::string& body) {
    for (;;) {
        const auto size = in.line();
        if (!size) return false;
        const auto chunk = in.bytes(numberIn(*size, 16));
        if (!chunk || !in.line()) return false;
        if (chunk->empty()) return true;
        body += *chunk;
    }
}

/// A close with this option set sends a reset instead of the orderly end.
void closeWithReset(const Socket& client) {
    const linger none{1, 0};
    setsockopt(client.descriptor(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
}

bool readBody(Incoming& in, const Socket& client, std::size_t resetBehind, Request& request) {
    if (strcasecmp(request.header("Expect").c_str(), "100-continue") == 0 &&
        !client.send("HTTP/1.1 100 Continue\r\n\r\n")) {
        return false;
    }
    if (strcasecmp(request.header("Transfer-Encoding").c_str(), "chunked") == 0) return readChunks(in, request.body);
    const std::size_t length = numberIn(request.header("Content-Length"), 10);
    if (length > resetBehind) {
        in.bytes(resetBehind);
        closeWithReset(client);
        return false;
    }
    auto body = in.bytes(length);
    if (body) request.body = std::move(*body);
    return body.has_value();
}

std::optional<Request> readRequest(Incoming& in, const Socket& client, std::size_t resetBehind) {
    // A client that talks TLS would wait for an answer for as long as it waits for any.
    if (in.next() == kTlsHandshake) return std::nullopt;
    const auto first = in.line();
    if (!first) return std::nullopt;
    Request request;
    const std::size_t gap = std::min(first->find(' '), first->size());
    const std::size_t end = std::max(std::min(first->rfind(' '), first->size()), gap);
    request.method = first->substr(0, gap);
    if (end > gap) request.target = first->substr(gap + 1, end - gap - 1);
    if (!readHeaders(in, request) || !readBody(in, client, resetBehind, request)) return std::nullopt;
    return request;
}

std::string chunked(std::string_view body) {
    std::string text;
    while (!body.empty()) {
        const std::string_view chunk = body.substr(0, kChunkSize);
        std::array<char, 20> size;
        const auto end = std::to_chars(size.data(), size.data() + size.size(), chunk.size(), 16).ptr;
        text.append(size.data(), end).append("\r\n").append(chunk).append("\r\n");
        body.remove_prefix(chunk.size());
    }
    return text + "0\r\n\r\n";
}

bool endsConnection(const Request& request, const Answer& answer) {
    const bool lies = request.method != "HEAD" && answer.announced && *answer.announced != answer.body.size();
    return !answer.keepAlive || lies || answer.framing == Answer::Framing::untilClose ||
           answer.framing == Answer::Framing::asGiven || answer.cutAfter.has_value() ||
           strcasecmp(request.header("Connection").c_str(), "close") == 0;
}

std::string headOf(const Request& request, const Answer& answer) {
    std::string head = "HTTP/1.1 " + std::to_string(answer.status) + " " + answer.reason + "\r\n";
    if (answer.framing == Answer::Framing::length)
        head += "Content-Length: " + std::to_string(answer.announced.value_or(answer.body.size())) + "\r\n";
    if (answer.framing == Answer::Framing::chunked) head += "Transfer-Encoding: chunked\r\n";
    if (endsConnection(request, answer)) head += "Connection: close\r\n";
    for (const auto& [name, value] : answer.headers) head += name + ": " + value + "\r\n";
    return head + "\r\n";
}

}  // namespace

bool AnyCase::operator()(const std::string& one, const std::string& other) const {
    return strcasecmp(one.c_str(), other.c_str()) < 0;
}

std::string Request::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

Answer answerWithRange(const Request& request, std::string_view content) {
    const std::string range = request.header("Range");
    if (!range.starts_with("bytes=")) return {.headers = {{"Accept-Ranges", "bytes"}}, .body = std::string(content)};
    const std::size_t dash = std::min(range.find('-'), range.size());
    const std::size_t from = numberIn(std::string_view(range).substr(6, dash - 6), 10);
    const std::string to = dash < range.size() ? range.substr(dash + 1) : std::string();
    const std::string all = std::to_string(content.size());
    if (from >= content.size()) {
        return {.status = 416, .reason = "Range Not Satisfiable", .headers = {{"Content-Range", "bytes */" + all}}};
    }
    const std::size_t last = to.empty() ? content.size() - 1 : std::min(numberIn(to, 10), content.size() - 1);
    const std::string part = "bytes " + std::to_string(from) + "-" + std::to_string(last) + "/" + all;
    return {.status = 206,
            .reason = "Partial Content",
            .headers = {{"Content-Range", part}},
            .body = std::string(content.substr(from, last - from + 1))};
}

class ScriptedServer::Impl {
public:
    explicit Impl(Handler handler) : handler_(std::move(handler)), listener_(listenOnFreePort(port_)) {
        accepting_ = std::thread([this] { acceptAll(); });
    }

    ~Impl() {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
            for (const Connection& connection : open_) shutdown(connection.client.descriptor(), SHUT_RDWR);
        }
        changed_.notify_all();
        shutdown(listener_.descriptor(), SHUT_RDWR);
        connectTo(port_);  // where shutting a listener down does not wake who waits at it
        accepting_.join();
        for (Connection& connection : open_) connection.thread.join();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    std::uint16_t port() const { return port_; }

    std::vector<Request> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

    int connections() const {
        const std::lock_guard lock(mutex_);
        return connections_;
    }

    bool waitForRequests(std::size_t count) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kLongestWait, [&] { return requests_.size() >= count; });
    }

    void resetBodiesBehind(std::size_t bytes) { resetBehind_ = bytes; }

    void release() {
        {
            const std::lock_guard lock(mutex_);
            released_ = true;
        }
        changed_.notify_all();
    }

private:
    /// Kept until the end, so that nobody shuts down a descriptor that has become another's.
    struct Connection {
        Socket client;
        std::thread thread;
    };

    void acceptAll() {
        for (;;) {
            Socket client(accept(listener_.descriptor(), nullptr, nullptr));
            const std::lock_guard lock(mutex_);
            if (ending_ || !client.isOpen()) return;
            open_.push_back({std::move(client), std::thread()});
            Connection& connection = open_.back();
            connection.thread =
                std::thread([this, &connection, number = ++connections_] { serve(connection, number); });
        }
    }

    void serve(Connection& connection, int number) {
        Socket& client = connection.client;
        Incoming in(client.descriptor());
        bool more = true;
        while (more) {
            auto request = readRequest(in, client, resetBehind_);
            if (!request) break;
            request->connection = number;
            {
                const std::lock_guard lock(mutex_);
                requests_.push_back(*request);
            }
            changed_.notify_all();
            more = answer(client, *request, handler_(*request));
        }
        Socket ended;  // closed behind the lock
        const std::lock_guard lock(mutex_);
        ended = std::move(client);
    }

    /// Whether the connection goes on.
    bool answer(const Socket& client, const Request& request, const Answer& answer) {
        if (answer.delay.count() > 0 && !waitFor(answer.delay)) return false;
        if (answer.stall && !waitForRelease()) return false;
        if (answer.unanswered) return endConnection(client, answer.ending);
        if (!answer.raw.empty()) {
            client.send(answer.raw);
            return endConnection(client, answer.ending);
        }
        if (!client.send(headOf(request, answer))) return false;
        if (request.method != "HEAD" && !sendBody(client, answer)) return false;
        if (!endsConnection(request, answer)) return true;
        return endConnection(client, answer.cutAfter ? answer.ending : Answer::Ending::close);
    }

    bool sendBody(const Socket& client, const Answer& answer) {
        const std::string framed = answer.framing == Answer::Framing::chunked ? chunked(answer.body) : answer.body;
        const std::string_view sent = std::string_view(framed).substr(0, answer.cutAfter.value_or(framed.size()));
        const std::size_t first = std::min(answer.stallAfter.value_or(sent.size()), sent.size());
        if (!client.send(sent.substr(0, first))) return false;
        if (answer.stallAfter && !waitForRelease()) return false;
        return client.send(sent.substr(first));
    }

    /// An orderly end is sent here, since the client waits for it and the descriptor is kept a little longer.
    bool endConnection(const Socket& client, Answer::Ending ending) {
        if (ending == Answer::Ending::reset) {
            closeWithReset(client);
        } else {
            shutdown(client.descriptor(), SHUT_RDWR);
        }
        return false;
    }

    bool waitFor(std::chrono::milliseconds time) {
        std::unique_lock lock(mutex_);
        return !changed_.wait_for(lock, time, [this] { return ending_; });
    }

    bool waitForRelease() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return ending_ || released_; });
        return !ending_;
    }

    Handler handler_;
    std::uint16_t port_ = 0;
    Socket listener_;
    std::thread accepting_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::list<Connection> open_;
    std::vector<Request> requests_;
    int connections_ = 0;
    std::atomic<std::size_t> resetBehind_ = std::numeric_limits<std::size_t>::max();
    bool released_ = false;
    bool ending_ = false;
};

ScriptedServer::ScriptedServer(Handler handler) : impl_(std::make_unique<Impl>(std::move(handler))) {}
ScriptedServer::~ScriptedServer() = default;

std::string ScriptedServer::host() const { return localHost(impl_->port()); }
std::string ScriptedServer::url(std::string_view path) const { return "http://" + host() + std::string(path); }
std::vector<Request> ScriptedServer::requests() const { return impl_->requests(); }
int ScriptedServer::connections() const { return impl_->connections(); }
bool ScriptedServer::waitForRequests(std::size_t count) const { return impl_->waitForRequests(count); }
void ScriptedServer::release() { impl_->release(); }
void ScriptedServer::resetBodiesBehind(std::size_t bytes) { impl_->resetBodiesBehind(bytes); }

}  // namespace kvtest
