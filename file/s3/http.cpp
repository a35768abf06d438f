// The transfer library is told everything for each exchange: an idle transfer keeps its connections, and also what the
// exchange before had told it.
#include "file/s3/http.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <new>
#include <utility>

#include "border/guard.h"
#include "border/text.h"
#include "file/s3/answers.h"

namespace kv::file::s3 {
namespace {

constexpr long kConnectSeconds = 10;
constexpr long kReadBytes = 256 * 1024;
constexpr long kWriteBytes = 1024 * 1024;
constexpr std::size_t kMostIdle = 8;

struct FreeHeaders {
    void operator()(curl_slist* headers) const noexcept { curl_slist_free_all(headers); }
};
using Headers = std::unique_ptr<curl_slist, FreeHeaders>;

void append(Headers& headers, const std::string& line) {
    curl_slist* const longer = curl_slist_append(headers.get(), line.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    static_cast<void>(headers.release());
    headers.reset(longer);
}

/// The request's headers, and for those that the transfer library would add by itself a line that forbids it.
Headers headersOf(const HttpRequest& request) {
    Headers headers;
    bool hasType = false;
    for (const auto& [name, value] : request.headers) {
        append(headers, std::string(name).append(": ").append(value));
        hasType = hasType || name == "content-type";
    }
    if (!hasType) append(headers, "content-type:");
    append(headers, "expect:");
    return headers;
}

/// What the callbacks of one transfer share.
struct Run {
    const Exchange& exchange;
    HttpAnswer answer = {};
    bool hasBegun = false;
    bool hadEnough = false;  // the sink ended the transfer
    bool isTooLong = false;

    void begin() {
        if (!std::exchange(hasBegun, true)) exchange.sink->begin(answer.head);
    }
    bool isForSink() const { return exchange.sink != nullptr && answer.head.isSuccess(); }
};

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

void readHeader(AnswerHead& head, std::string_view line) {
    const auto value = [&](std::string_view name) -> std::optional<std::string_view> {
        if (!border::beginsWithAnyCase(line, name)) return std::nullopt;
        return trimmed(line.substr(name.size()));
    };
    if (line.starts_with("HTTP/")) {
        // Of several answers in a row, as behind "100 Continue", the last one counts.
        const std::size_t blank = std::min(line.find(' '), line.size() - 1);
        head = AnswerHead();
        head.status = numberIn<long>(line.substr(blank + 1, 3)).value_or(0);
    } else if (const auto length = value("content-length:")) {
        head.contentLength = numberIn<std::uint64_t>(*length);
    } else if (const auto type = value("content-type:")) {
        head.contentType = *type;
    } else if (const auto range = value("content-range:")) {
        head.contentRange = *range;
    } else if (const auto tag = value("etag:")) {
        head.eTag = *tag;
    }
}

std::size_t onHeader(char* data, std::size_t, std::size_t size, void* user) noexcept {
    return border::atBorder<std::size_t>(0, [&] {
        readHeader(static_cast<Run*>(user)->answer.head, {data, size});
        return size;
    });
}

std::size_t onBody(char* data, std::size_t, std::size_t size, void* user) noexcept {
    return border::atBorder<std::size_t>(0, [&]() -> std::size_t {
        Run& run = *static_cast<Run*>(user);
        if (run.isForSink()) {
            run.begin();
            run.hadEnough = !run.exchange.sink->take(std::as_bytes(std::span(data, size)));
            return run.hadEnough ? 0 : size;
        }
        run.isTooLong = size > kLargestAnswer - run.answer.body.size();
        if (run.isTooLong) return 0;
        run.answer.body.append(data, size);
        return size;
    });
}

int onProgress(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t) noexcept {
    const std::atomic<bool>* const abandon = static_cast<Run*>(user)->exchange.abandon;
    return abandon != nullptr && abandon->load(std::memory_order_relaxed) ? 1 : 0;
}

template <class Value>
void set(CURL* transfer, CURLoption option, Value value) {
    if (curl_easy_setopt(transfer, option, value) == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
}

/// What is the same for all exchanges.
void setUp(CURL* transfer) {
    set(transfer, CURLOPT_NOSIGNAL, 1L);
    set(transfer, CURLOPT_PATH_AS_IS, 1L);
    set(transfer, CURLOPT_FOLLOWLOCATION, 0L);
    set(transfer, CURLOPT_PROTOCOLS_STR, "http,https");
    set(transfer, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(transfer, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(transfer, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    set(transfer, CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(transfer, CURLOPT_TCP_KEEPALIVE, 1L);
    set(transfer, CURLOPT_MAXCONNECTS, 2L);
    set(transfer, CURLOPT_BUFFERSIZE, kReadBytes);
    set(transfer, CURLOPT_UPLOAD_BUFFERSIZE, kWriteBytes);
    set(transfer, CURLOPT_NOPROGRESS, 0L);
    set(transfer, CURLOPT_HEADERFUNCTION, &onHeader);
    set(transfer, CURLOPT_WRITEFUNCTION, &onBody);
    set(transfer, CURLOPT_XFERINFOFUNCTION, &onProgress);
}

/// The method with its body. All of it is set every time: a transfer keeps what it was told for the exchange before.
void setMethod(CURL* transfer, const Exchange& exchange) {
    const std::string& method = exchange.request.method;
    set(transfer, CURLOPT_NOBODY, method == "HEAD" ? 1L : 0L);
    if (method == "PUT" || method == "POST") {
        set(transfer, CURLOPT_POST, 1L);
        // A null pointer would have the body read from standard input.
        const void* const body = exchange.body.empty() ? static_cast<const void*>("") : exchange.body.data();
        set(transfer, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(exchange.body.size()));
        set(transfer, CURLOPT_POSTFIELDS, body);
    } else if (method != "HEAD") {
        set(transfer, CURLOPT_HTTPGET, 1L);
    }
    set(transfer, CURLOPT_CUSTOMREQUEST, method.c_str());
}

void setExchange(CURL* transfer, Run& run, const Headers& headers) {
    setMethod(transfer, run.exchange);
    set(transfer, CURLOPT_LOW_SPEED_TIME, static_cast<long>(run.exchange.longestSilence.count()));
    set(transfer, CURLOPT_URL, run.exchange.url.c_str());
    set(transfer, CURLOPT_HTTPHEADER, headers.get());
    set(transfer, CURLOPT_SSL_VERIFYPEER, run.exchange.verifyTls ? 1L : 0L);
    set(transfer, CURLOPT_SSL_VERIFYHOST, run.exchange.verifyTls ? 2L : 0L);
    set(transfer, CURLOPT_HEADERDATA, static_cast<void*>(&run));
    set(transfer, CURLOPT_WRITEDATA, static_cast<void*>(&run));
    set(transfer, CURLOPT_XFERINFODATA, static_cast<void*>(&run));
}

int errnoOf(CURL* transfer, CURLcode result) {
    const border::KeepErrno keep;
    setErrno(transfer, result);
    return errno;
}

void conclude(Run& run, CURL* transfer, CURLcode result, const char* reason) {
    HttpAnswer& answer = run.answer;
    const bool isWhole = result == CURLE_OK || run.hadEnough;
    if (isWhole && run.isForSink()) run.begin();
    // A refusal counts although its text was cut off.
    if (!isWhole && (answer.head.isSuccess() || answer.head.status == 0)) {
        const char* const told = *reason != '\0' ? reason : curl_easy_strerror(result);
        answer.failed =
            Error{std::string(kNetworkError), run.isTooLong ? "The answer is too long" : told, answer.head.status};
        answer.isUnresolved = result == CURLE_COULDNT_RESOLVE_HOST;
        answer.error = run.isTooLong ? EFBIG : errnoOf(transfer, result);
    } else if (!answer.head.isSuccess()) {
        answer.error = errnoOf(transfer, CURLE_HTTP_RETURNED_ERROR);
    }
}

}  // namespace

HttpAnswer Connections::run(const Exchange& exchange) {
    Transfer transfer = take();
    const Headers headers = headersOf(exchange.request);
    std::array<char, CURL_ERROR_SIZE> reason{};
    Run run{.exchange = exchange};
    setExchange(transfer.get(), run, headers);
    set(transfer.get(), CURLOPT_ERRORBUFFER, reason.data());
    const CURLcode result = curl_easy_perform(transfer.get());
    conclude(run, transfer.get(), result, reason.data());
    // It must not point here while it is idle.
    set(transfer.get(), CURLOPT_ERRORBUFFER, static_cast<char*>(nullptr));
    set(transfer.get(), CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
    giveBack(std::move(transfer));
    return std::move(run.answer);
}

Connections::Transfer Connections::take() {
    {
        const std::lock_guard locked(lock_);
        if (!idle_.empty()) {
            Transfer transfer = std::move(idle_.back());
            idle_.pop_back();
            return transfer;
        }
    }
    Transfer transfer(newTransfer());
    if (transfer == nullptr) throw std::bad_alloc();
    setUp(transfer.get());
    return transfer;
}

void Connections::giveBack(Transfer transfer) {
    const std::lock_guard locked(lock_);
    if (idle_.size() < kMostIdle) idle_.push_back(std::move(transfer));
}

}  // namespace kv::file::s3
