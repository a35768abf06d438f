// One exchange over HTTP with an object store, and the connections that exchanges share.
//
// Nothing is retried and no redirect is followed: what the store said is the answer. Messages hold no header of the
// request, since one of them is a login.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <curl/curl.h>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "file/curl.h"
#include "file/s3/client.h"
#include "file/s3/signature.h"

namespace kv::file::s3 {

/// Exception name of what fails without an answer of the store.
inline constexpr std::string_view kNetworkError = "NetworkError";

struct AnswerHead {
    long status = 0;
    std::string contentType;
    std::string contentRange;
    std::string eTag;
    std::optional<std::uint64_t> contentLength;

    bool isSuccess() const { return status >= 200 && status < 300; }
};

/// Takes the body of a successful answer.
class BodySink {
public:
    virtual ~BodySink() = default;
    /// Comes once, ahead of the body, for an empty one too.
    virtual void begin(const AnswerHead& head) = 0;
    /// False ends the transfer: no more is wanted.
    virtual bool take(std::span<const std::byte> bytes) = 0;
};

struct Exchange {
    const HttpRequest& request;
    std::string url;
    std::span<const std::byte> body;
    bool verifyTls = true;
    BodySink* sink = nullptr;                    // null: the body goes into the answer
    const std::atomic<bool>* abandon = nullptr;  // ends the exchange when it becomes true
    std::chrono::seconds longestSilence{30};     // after which an exchange that moves nothing is given up
};

struct HttpAnswer {
    AnswerHead head;
    std::string body;             // at most kLargestAnswer bytes
    std::optional<Error> failed;  // no answer, or not the whole of one
    bool isUnresolved = false;    // failed because the host has no address
    int error = 0;                // what errno is to be where it failed or the status is no success
};

/// Idle transfers, each with its open connections. They end with this; one that is in use ends with its exchange.
class Connections {
public:
    HttpAnswer run(const Exchange& exchange);

private:
    using Transfer = std::unique_ptr<CURL, CloseTransfer>;

    Transfer take();
    void giveBack(Transfer transfer);

    std::mutex lock_;
    std::vector<Transfer> idle_;
};

}  // namespace kv::file::s3
