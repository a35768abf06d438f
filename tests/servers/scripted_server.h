// An HTTP server inside the test's own process, which answers as a function says: for faults that a real server does
// not make on command.
//
// Each connection has a thread of its own, so the function may run in several at once. Connections stay open from
// request to request, as a real server keeps them, unless an answer or the client says otherwise. One that begins to
// talk TLS ends at once.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kvtest {

/// Orders the names of headers without regard to case.
struct AnyCase {
    bool operator()(const std::string& one, const std::string& other) const;
};

struct Request {
    std::string method;
    std::string target;  // as sent, with its query
    std::map<std::string, std::string, AnyCase> headers;
    std::string body;    // without its framing
    int connection = 0;  // which connection it came on, counted from 1

    /// The value of a header; empty if it was not sent. One that was sent twice has its values joined by ", ".
    std::string header(const std::string& name) const;
    bool has(const std::string& name) const { return headers.contains(name); }
};

/// What the server sends for one request, and the faults it makes with it.
struct Answer {
    enum class Framing {
        length,      // Content-Length
        chunked,     // chunks of 1000 bytes, no length
        untilClose,  // no length: the end of the connection ends the body
        asGiven      // no header of its own: `headers` has them all, the connection closes behind the body
    };
    enum class Ending { close, reset };

    int status = 200;
    std::string reason = "OK";
    std::vector<std::pair<std::string, std::string>> headers = {};
    std::string body = {};  // not sent in answer to HEAD, whose headers tell its length all the same
    Framing framing = Framing::length;
    std::optional<std::uint64_t> announced =
        {};  // a Content-Length other than that of the body, which is sent as it is

    std::optional<std::size_t> cutAfter = {};    // the connection ends after that many bytes of the body as framed
    Ending ending = Ending::close;               // how it ends: with an orderly close, or with a reset
    std::chrono::milliseconds delay{0};          // ahead of the first byte
    bool stall = false;                          // not a byte before release()
    std::optional<std::size_t> stallAfter = {};  // stalls once that many bytes of the body were sent
    bool unanswered = false;                     // the connection ends (see `ending`) without a byte of an answer
    std::string raw = {};                        // if not empty: these bytes and nothing else, then the close
    bool keepAlive = true;                       // whether the connection stays open behind the answer
};

/// The answer of a server that knows ranges: 206 with the part that "Range: bytes=a-b" asks for, 416 for one behind the
/// end, 200 with all of it when none is asked for.
Answer answerWithRange(const Request& request, std::string_view content);

class ScriptedServer {
public:
    using Handler = std::function<Answer(const Request&)>;

    /// Listens on a free port of 127.0.0.1. Throws std::runtime_error with the reason if it can't.
    explicit ScriptedServer(Handler handler);
    /// Ends all connections, stalled ones too, and its threads.
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// "127.0.0.1:PORT".
    std::string host() const;
    /// "http://127.0.0.1:PORT" and the path.
    std::string url(std::string_view path) const;

    /// All requests so far, in the order in which they were complete; one is listed before its answer is sent.
    std::vector<Request> requests() const;
    /// Connections accepted so far.
    int connections() const;

    /// Waits until that many requests have come; false if they did not within half a minute.
    bool waitForRequests(std::size_t count) const;
    /// Lets all stalled answers go on, and those that would stall later.
    void release();
    /// Of requests that come from now on, one with a longer body has its connection reset once that much of it has
    /// come. It is not listed.
    void resetBodiesBehind(std::size_t bytes);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kvtest
