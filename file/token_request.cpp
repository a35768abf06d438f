// The request to a token endpoint, and the header that a token makes.
#include <array>
#include <cstdlib>
#include <memory>
#include <string>

#include "border/guard.h"
#include "errlog.h"
#include "file/curl.h"
#include "file/token.h"
#include "file/token_text.h"
#include "kvos/time.h"
#include "kvos/url.h"

namespace kv::file {
namespace {

constexpr std::size_t kAnswerSize = 16376;

/// The transfer library waits for ever unless told; an open must not.
constexpr long kLongestRequest_ms = 15000;

using Transfer = std::unique_ptr<CURL, CloseTransfer>;
struct FreeList {
    void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

// ---- the request -------------------------------------------------------------------------------------------------

std::string escaped(CURL* transfer, const char* text) {
    if (text == nullptr) return {};
    const std::unique_ptr<char, void (*)(void*)> copy(curl_easy_escape(transfer, text, 0), curl_free);
    return copy ? copy.get() : "";
}

std::string bodyFor(const kvOSFileHandle& file, CURL* transfer) {
    std::string body = std::string("client_id=") + file.szClientId;  // meant: this one as it stands
    body += "&client_secret=" + escaped(transfer, file.szClientSecret);
    if (file.szRefreshToken != nullptr) {
        body += "&refresh_token=" + escaped(transfer, file.szRefreshToken) + "&grant_type=refresh_token";
    } else if (file.szPassword != nullptr) {
        body += "&username=" + escaped(transfer, file.szUserName) + "&password=" + escaped(transfer, file.szPassword) +
                "&grant_type=password";
    } else {
        body += "&grant_type=urn:ietf:params:oauth:grant-type:jwt-bearer";
    }
    return body;
}

HeaderList requestHeaders() {
    HeaderList list(curl_slist_append(nullptr, "Content-Type: application/x-www-form-urlencoded"));
    if (list) curl_slist_append(list.get(), "cache-control: no-cache");
    return list;
}

bool request(kvOSFileHandle& file, CURL* transfer) {
    const std::string body = bodyFor(file, transfer);
    const HeaderList headers = requestHeaders();
    curl_easy_setopt(transfer, CURLOPT_CUSTOMREQUEST, "POST");
    curl_easy_setopt(transfer, CURLOPT_URL, file.szOAuthServer);
    curl_easy_setopt(transfer, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(transfer, CURLOPT_VERBOSE, 0L);
    curl_easy_setopt(transfer, CURLOPT_WRITEDATA, &file);
    curl_easy_setopt(transfer, CURLOPT_WRITEFUNCTION, &write_callback_open);
    curl_easy_setopt(transfer, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(transfer, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(transfer, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(transfer, CURLOPT_TIMEOUT_MS, kLongestRequest_ms);
    return curl_easy_perform(transfer) == CURLE_OK;  // an answer that refuses is read like any other
}

// ---- the login --------------------------------------------------------------------------------------------------

/// The record's buffer for the time of a login; the fields are zero behind it, as after every transfer.
class AnswerBuffer {
public:
    explicit AnswerBuffer(kvOSFileHandle& file) : file_(file), bytes_(std::make_unique<char[]>(kAnswerSize)) {
        file.pBuf = bytes_.get();
        file.qwBufFill = 0;
        file.qwBufLen = file.qwBufSize = kAnswerSize - 1;
    }
    ~AnswerBuffer() {
        file_.pBuf = nullptr;
        file_.qwBufLen = file_.qwBufSize = file_.qwBufFill = 0;
    }
    AnswerBuffer(const AnswerBuffer&) = delete;
    AnswerBuffer& operator=(const AnswerBuffer&) = delete;

    std::string_view text() const { return {bytes_.get(), static_cast<std::size_t>(file_.qwBufFill)}; }

private:
    kvOSFileHandle& file_;
    std::unique_ptr<char[]> bytes_;
};

void authorize(kvOSFileHandle& file) {
    const Transfer transfer(newTransfer());
    const AnswerBuffer answer(file);
    if (file.szClientId == nullptr && file.szOAuthJson != nullptr) readTokenFile(file, file.szOAuthJson);
    if (!transfer || file.szClientId == nullptr || file.szClientSecret == nullptr) return;
    if (request(file, transfer.get())) readTokenAnswer(file, answer.text());
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::uint32_t kvOSOAuthAuthorize(kvOSFileHandle* pFile) {
    if (pFile == nullptr) return 0;
    return kv::border::atBorder(0u, [&] {
        file::authorize(*pFile);
        return 0u;
    });
}

std::uint32_t kvOSOAuthRefresh(kvOSFileHandle* pFile) {
    return pFile != nullptr && file::isTokenExpired(*pFile) ? kvOSOAuthAuthorize(pFile) : 0;
}

std::uint32_t kvOSOAuthAddHeader(kvOSFileHandle* pFile, void* pCurl) {
    if (pFile == nullptr || pCurl == nullptr || pFile->szAccessToken == nullptr) return 0;
    kvOSOAuthRefresh(pFile);
    return kv::border::atBorder(0u, [&] {
        const std::string line = std::string("Authorization: Bearer ") + pFile->szAccessToken;
        curl_slist_free_all(pFile->pHeaders);
        pFile->pHeaders = curl_slist_append(nullptr, line.c_str());
        curl_easy_setopt(pCurl, CURLOPT_HTTPHEADER, pFile->pHeaders);
        return 0u;
    });
}
