// Opening a URL: a request for the headers alone, which tells the size, and logging in anew where a server sends
// elsewhere.
//
// Opening for writing sends no request.
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "border/guard.h"
#include "border/secrets.h"
#include "border/text.h"
#include "errlog.h"
#include "file/curl.h"
#include "file/kinds.h"
#include "file/openers.h"
#include "file/token.h"
#include "file/url.h"
#include "file/url_headers.h"
#include "kvos/locator.h"
#include "kvos/url.h"

namespace kv::file {
namespace {

constexpr int kAttempts = 6;

/// How an attempt ended.
struct Attempt {
    CURLcode result;
    long status;
};

/// What stands for the request that an open for writing does not send.
constexpr Attempt kNoRequest{CURLE_HTTP_RETURNED_ERROR, 0};

struct CloseRecord {
    void operator()(kvOSFileHandle* file) const { kUrlFile.close(*file); }
};
using OwnedRecord = std::unique_ptr<kvOSFileHandle, CloseRecord>;

bool isForWriting(const kvOSFileHandle& file) { return (file.dwAccess & KVFILE_WRITE) != 0; }

OwnedRecord newUrlRecord(const OpenRequest& request) {
    OwnedRecord file(newRecord(KVFILE_CURL, request));
    if (!file) return file;
    for (void** buffer : {&file->pCache, &file->pSpare1, &file->pSpare2}) *buffer = std::calloc(kUrlBufferSize, 1);
    if (file->pCache == nullptr || file->pSpare1 == nullptr || file->pSpare2 == nullptr) return nullptr;
    border::copyPath(file->szPath, request.redirected);
    return file;
}

// ---- one attempt -------------------------------------------------------------------------------------------------

/// The headers are caught in the read cache, which nobody needs before the open is done.
void catchHeaders(kvOSFileHandle& file) {
    file.pBuf = file.pCache;
    file.qwBufSize = kUrlBufferSize - 1;
    file.qwBufFill = 0;
}

void dropHeaders(kvOSFileHandle& file) {
    file.pBuf = nullptr;
    file.qwBufLen = file.qwBufSize = file.qwBufFill = 0;
}

/// The headers as far as they were caught, those of the last answer alone.
std::string_view caughtHeaders(const kvOSFileHandle& file) {
    if (file.pBuf == nullptr) return {};
    return lastAnswer({static_cast<const char*>(file.pBuf), static_cast<std::size_t>(file.qwBufFill)});
}

Attempt askForHeaders(kvOSFileHandle& file) {
    catchHeaders(file);
    const CURLcode result = curl_easy_perform(file.pFile);
    return {result, statusOf(file.pFile)};
}

Attempt attempt(kvOSFileHandle& file, const std::string& url) {
    CURL* const transfer = file.pFile;
    curl_easy_setopt(transfer, CURLOPT_URL, url.c_str());
    curl_easy_setopt(transfer, CURLOPT_VERBOSE, 0L);
    curl_easy_setopt(transfer, CURLOPT_WRITEDATA, &file);
    curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &write_callback_open);
    curl_easy_setopt(transfer, CURLOPT_NOBODY, 1L);
    curl_easy_setopt(transfer, CURLOPT_HEADER, 1L);
    setOptionsOfFile(transfer);
    if (isForWriting(file)) {
        curl_easy_setopt(transfer, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(transfer, CURLOPT_APPEND, 1L);
    }
    return isForWriting(file) ? kNoRequest : askForHeaders(file);
}

// ---- redirects that were not followed ----------------------------------------------------------------------------

bool isRedirect(const kvOSFileHandle& file, const Attempt& attempt) {
    if (attempt.status == 302 || attempt.status == 303 || attempt.status == 307) return true;
    return border::beginsWithAnyCase(caughtHeaders(file), "HTTP/1.1 30");
}

/// A location as seen from the URL that gave it: it may be a path alone.
std::string absolute(const std::string& url, const std::string& location) {
    const std::unique_ptr<CURLU, void (*)(CURLU*)> parts(curl_url(), curl_url_cleanup);
    char* joined = nullptr;
    const bool isJoined = parts && curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), 0) == CURLUE_OK &&
                          curl_url_set(parts.get(), CURLUPART_URL, location.c_str(), 0) == CURLUE_OK &&
                          curl_url_get(parts.get(), CURLUPART_URL, &joined, 0) == CURLUE_OK;
    const std::unique_ptr<char, void (*)(void*)> text(joined, curl_free);
    return isJoined ? text.get() : location;
}

std::optional<std::string> redirectedTo(const kvOSFileHandle& file, const Attempt& attempt) {
    if (!isRedirect(file, attempt)) return std::nullopt;
    ErrOut(
        "\nRedirect return, likely your token authentication is not setup properly, so it is attempting a oath2 "
        "redirect\n");
    const std::string headers(caughtHeaders(file));
    if (!headers.empty()) ErrOut("%s", border::withoutSecrets(headers).c_str());
    return locationIn(headers);
}

// ---- all attempts ------------------------------------------------------------------------------------------------

void endTransfer(kvOSFileHandle& file) {
    curl_easy_cleanup(file.pFile);
    file.pFile = nullptr;
    curl_slist_free_all(file.pHeaders);
    file.pHeaders = nullptr;
}

/// The last attempt; the record has a transfer unless none could be made.
Attempt attemptAll(kvOSFileHandle& file, std::string url) {
    for (int counter = 1;; ++counter) {
        file.pFile = newTransfer();
        if (file.pFile == nullptr) return kNoRequest;
        logIn(file, url, Unreadable::reported);
        kvOSOAuthAddHeader(&file, file.pFile);
        const Attempt last = attempt(file, url);
        const auto location = redirectedTo(file, last);
        if (!location) return last;
        const std::string next = absolute(url, *location);
        if (kvOSFUseCurl(next.c_str()) == 0) return last;
        if (!haveSameHost(url, next)) forgetLogin(file);  // a login is for the host that it was made for
        url = next;
        curl_easy_setopt(file.pFile, CURLOPT_URL, url.c_str());
        if (counter == kAttempts) return last;
        endTransfer(file);
    }
}

std::uint64_t announcedSize(CURL* transfer) {
    curl_off_t size = -1;
    const bool told = curl_easy_getinfo(transfer, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &size) == CURLE_OK && size != -1;
    return told ? static_cast<std::uint64_t>(size) : kUnknownSize;
}

void prepareReading(kvOSFileHandle& file) {
    CURL* const transfer = file.pFile;
    file.qwSize = announcedSize(transfer);
    curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &write_callback_read);
    curl_easy_setopt(transfer, CURLOPT_SEEKFUNCTION, &seek_callback);
    curl_easy_setopt(transfer, CURLOPT_SEEKDATA, &file);
    curl_easy_setopt(transfer, CURLOPT_NOBODY, 0L);
    curl_easy_setopt(transfer, CURLOPT_HEADER, 0L);
}

/// A server that does not answer requests for headers may answer others.
bool isRefusalOfMethod(long status) { return status == 405 || status == 415; }

bool prepare(kvOSFileHandle& file, const Attempt& last) {
    dropHeaders(file);
    if (file.pFile == nullptr) {
        errno = ENOMEM;
        return false;
    }
    if (last.result == CURLE_OK) {
        prepareReading(file);
        return true;
    }
    if (isForWriting(file) || isRefusalOfMethod(last.status)) return true;
    setErrno(file.pFile, last.result);
    const border::KeepErrno keep;
    ErrOut("Error: opening <%s> ", border::withoutSecrets(file.szPath).c_str());
    return false;
}

}  // namespace

std::optional<std::int64_t> openUrl(const OpenRequest& request) {
    if (kvOSFUseCurl(request.redirected) == 0) return std::nullopt;
    OwnedRecord file = newUrlRecord(request);
    if (!file) {
        errno = ENOMEM;
        return kInvalidHandle;
    }
    const Attempt last = attemptAll(*file, request.redirected);
    const bool opened = prepare(*file, last);
    if (opened) return handleOf(*file.release());
    const border::KeepErrno keep;
    file.reset();
    return kInvalidHandle;
}

}  // namespace kv::file
