// Writing a URL: one request a call, its method chosen by the text in the place of the overlapped record.
//
// The word behind the count pointer is input as well: the room of the caller's buffer, into which the server's answer
// goes. Sending and answer share a buffer of their own here, so that nothing is read or written behind the caller's.
#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <vector>

#include "border/text.h"
#include "file/curl.h"
#include "file/url.h"
#include "kvos/url.h"

namespace kv::file {
namespace {

enum class Method { put, post, patch, other };

Method methodOf(const char* text) {
    if (text == nullptr) return Method::put;
    if (border::beginsWithAnyCase(text, "POST")) return Method::post;
    if (border::beginsWithAnyCase(text, "PATCH")) return Method::patch;
    return Method::other;
}

/// One call: what it sends, and the room of the caller's buffer for the answer; 0 for none.
struct Request {
    const char* data;
    std::uint32_t count;
    std::uint32_t room;
    Method method;

    bool replacesTransfer() const { return method == Method::post || method == Method::patch; }
    bool isJson() const { return replacesTransfer() && count > 0 && *data == '{'; }
    std::size_t textLength() const { return strnlen(data, count); }
    std::uint64_t answerRoom() const { return std::max(room, count); }
};

bool isForWriting(const kvOSFileHandle& file) { return (file.dwAccess & KVFILE_WRITE) != 0; }

// ---- the buffer --------------------------------------------------------------------------------------------------

/// The record's buffer during a write: the data and a zero byte behind them, which is sent as well. Meant.
class ExchangeBuffer {
public:
    ExchangeBuffer(kvOSFileHandle& file, const Request& request)
        : file_(file), bytes_(std::max<std::size_t>(request.count + std::size_t{1}, request.room) + 1) {
        std::copy_n(request.data, request.count, bytes_.begin());
    }

    /// Puts it to use. A login on the way to the transfer would have taken the record's buffer for itself.
    void attach(const Request& request) {
        const bool answerIsUnwanted = request.isJson() && request.room == 0;
        file_.pBuf = answerIsUnwanted ? nullptr : bytes_.data();
        file_.qwBufFill = 0;
        file_.qwBufSize = answerIsUnwanted ? 0 : request.answerRoom();
        file_.qwBufLen = answerIsUnwanted ? 0 : request.isJson() ? request.room : request.count + std::uint64_t{1};
    }
    ~ExchangeBuffer() {
        file_.pBuf = nullptr;
        file_.qwBufLen = file_.qwBufSize = file_.qwBufFill = 0;
    }
    ExchangeBuffer(const ExchangeBuffer&) = delete;
    ExchangeBuffer& operator=(const ExchangeBuffer&) = delete;

    const char* data() const { return bytes_.data(); }

    /// Brings the answer, with a terminator as far as there is room for one, to the caller's data. Meant.
    void copyTo(char* target, std::uint64_t room) const {
        const std::uint64_t filled = std::min<std::uint64_t>(file_.qwBufFill, bytes_.size());
        std::memcpy(target, bytes_.data(), std::min(filled, room));
        if (filled > 0 && filled < room) target[filled] = '\0';
    }

private:
    kvOSFileHandle& file_;
    std::vector<char> bytes_;
};

// ---- options -----------------------------------------------------------------------------------------------------

/// Where an upload begins, behind the start of the file too, and where it begins again behind a redirect: with the
/// first byte of the buffer. seek_callback would let the library wait for bytes that are gone.
int rewindUpload(void* record, curl_off_t, int) noexcept {
    static_cast<kvOSFileHandle*>(record)->qwBufFill = 0;
    return CURL_SEEKFUNC_OK;
}

/// A transfer that has posted has neither the options nor the headers of the others: without them an upload that was
/// refused would count as done.
void prepareUpload(kvOSFileHandle& file, const Request& request) {
    CURL* const transfer = file.pFile;
    setOptionsOfFile(transfer);
    curl_easy_setopt(transfer, CURLOPT_HTTPHEADER, file.pHeaders);
    curl_easy_setopt(transfer, CURLOPT_POSTFIELDS, nullptr);  // else nothing is rewound behind a redirect
    curl_easy_setopt(transfer, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(transfer, CURLOPT_READDATA, &file);
    curl_easy_setopt(transfer, CURLOPT_READFUNCTION, &read_callback_write);
    curl_easy_setopt(transfer, CURLOPT_SEEKDATA, &file);
    curl_easy_setopt(transfer, CURLOPT_SEEKFUNCTION, &rewindUpload);
    // The headers of an interim answer would come into the buffer ahead of what is still to be sent from it.
    curl_easy_setopt(transfer, CURLOPT_HEADER, 0L);
    const std::uint64_t skipped = file.qwPos == file.qwSize ? 0 : file.qwPos;
    const std::uint64_t length = skipped + request.count + 1;
    curl_easy_setopt(transfer, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(length));
}

/// A transfer of its own for a POST or PATCH. Meant: it follows no redirect, and a status of 400 and above is no
/// failure.
bool renewTransfer(kvOSFileHandle& file, const char* name) {
    curl_easy_cleanup(file.pFile);
    file.pFile = newTransfer();
    if (file.pFile == nullptr) {
        errno = ENOMEM;
        return false;
    }
    kvOSOAuthRefresh(&file);
    CURL* const transfer = file.pFile;
    trustAnyCertificate(transfer);
    curl_easy_setopt(transfer, CURLOPT_CUSTOMREQUEST, name);
    curl_easy_setopt(transfer, CURLOPT_READDATA, &file);
    curl_easy_setopt(transfer, CURLOPT_READFUNCTION, &read_callback_write);
    curl_easy_setopt(transfer, CURLOPT_WRITEDATA, &file);
    curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &write_callback_read);
    curl_easy_setopt(transfer, CURLOPT_URL, file.szPath);
    return true;
}

void addJsonHeader(kvOSFileHandle& file) {
    constexpr const char* kLine = "Content-Type: application/json";
    for (const curl_slist* line = file.pHeaders; line != nullptr; line = line->next) {
        if (std::strcmp(line->data, kLine) == 0) return;
    }
    curl_slist* const longer = curl_slist_append(file.pHeaders, kLine);
    if (longer != nullptr) file.pHeaders = longer;
}

void setBody(kvOSFileHandle& file, const Request& request, const char* data) {
    const std::size_t length = request.isJson() ? request.textLength() : request.count + std::size_t{1};
    curl_easy_setopt(file.pFile, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(length));
    curl_easy_setopt(file.pFile, CURLOPT_COPYPOSTFIELDS, data);
}

bool prepareReplaced(kvOSFileHandle& file, const Request& request, const char* data) {
    if (!renewTransfer(file, request.method == Method::post ? "POST" : "PATCH")) return false;
    if (request.isJson()) addJsonHeader(file);
    // Meant: a POST that is not JSON goes out without the handle's headers, a login's among them.
    const bool takesHeaders = request.isJson() || request.method == Method::patch;
    if (takesHeaders) curl_easy_setopt(file.pFile, CURLOPT_HTTPHEADER, file.pHeaders);
    setBody(file, request, data);
    return true;
}

/// An upload resumes at the position. The body of a POST or PATCH would be cut by as much, so that its place goes into
/// the header alone.
bool setRange(kvOSFileHandle& file, const Request& request) {
    CURL* const transfer = file.pFile;
    if (file.qwPos == file.qwSize) {
        curl_easy_setopt(transfer, CURLOPT_RANGE, nullptr);
        curl_easy_setopt(transfer, CURLOPT_RESUME_FROM_LARGE, curl_off_t{0});
        return true;
    }
    char text[136];
    std::snprintf(text, sizeof text, "%" PRIu64 "-%" PRIu64, file.qwPos, file.qwPos + request.count - 1);
    curl_easy_setopt(transfer, CURLOPT_RANGE, text);
    const auto from = request.replacesTransfer() ? curl_off_t{0} : static_cast<curl_off_t>(file.qwPos);
    return curl_easy_setopt(transfer, CURLOPT_RESUME_FROM_LARGE, from) == CURLE_OK;
}

bool prepare(kvOSFileHandle& file, const Request& request, const char* data) {
    if (request.replacesTransfer()) {
        if (!prepareReplaced(file, request, data)) return false;
    } else if (isForWriting(file)) {
        prepareUpload(file, request);
    }
    if (request.method == Method::put) curl_easy_setopt(file.pFile, CURLOPT_CUSTOMREQUEST, "PUT");
    return setRange(file, request);
}

/// A transfer that has posted would post on where a read asks.
void prepareReadingAgain(kvOSFileHandle& file) {
    curl_easy_setopt(file.pFile, CURLOPT_HTTPGET, 1L);
    setOptionsOfFile(file.pFile);
}

// ---- the call ----------------------------------------------------------------------------------------------------

bool perform(kvOSFileHandle& file) {
    const CURLcode result = curl_easy_perform(file.pFile);
    const long status = statusOf(file.pFile);
    if (result == CURLE_OK || status == 200 || status == 201 || status == 216) return true;
    setErrno(file.pFile, result);
    return false;
}

/// Without access a PUT would send no body, which empties what is there.
bool canSend(const kvOSFileHandle& file, const Request& request, const std::uint32_t* count) {
    const bool isAllowed = request.method != Method::put || isForWriting(file);
    if (isAllowed && count != nullptr && file.qwPos != kNowhere) return true;
    errno = isAllowed ? EINVAL : EBADF;
    return false;
}

}  // namespace

Outcome writeUrl(kvOSFileHandle& file, const void* buffer, const Transfer& transfer) {
    const auto* const method = reinterpret_cast<const char*>(transfer.overlapped);
    const Request request{static_cast<const char*>(buffer), transfer.count,
                          transfer.moved == nullptr ? 0 : *transfer.moved, methodOf(method)};
    if (!canSend(file, request, transfer.moved)) return Outcome::failed;
    ExchangeBuffer exchange(file, request);
    if (!prepare(file, request, exchange.data())) return Outcome::failed;
    exchange.attach(request);
    const bool sent = perform(file);
    if (request.replacesTransfer() && !isForWriting(file)) prepareReadingAgain(file);
    if (!sent) return Outcome::failed;

    const std::uint64_t exchanged = file.qwBufFill;
    if (request.room != 0) {
        exchange.copyTo(const_cast<char*>(request.data), request.answerRoom());
    }
    *transfer.moved = static_cast<std::uint32_t>(exchanged);
    file.qwPos += exchanged != 0 ? exchanged : request.textLength();
    file.qwSize = std::max(file.qwSize, file.qwPos);
    return Outcome::done;
}

}  // namespace kv::file
