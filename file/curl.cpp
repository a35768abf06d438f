#include "file/curl.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "errlog.h"

namespace kv::file {
namespace {

/// Once for the process, and before the first transfer: the library's own start is not made for threads everywhere.
bool isLibraryReady() noexcept {
    static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return ready;
}

std::string_view markOf(curl_infotype type) noexcept {
    switch (type) {
        case CURLINFO_TEXT:
            return "* ";
        case CURLINFO_HEADER_IN:
            return "< ";
        case CURLINFO_HEADER_OUT:
            return "> ";
        default:
            return {};
    }
}

/// Where in a line a login begins, if it holds one: behind the name of a header, whatever stands ahead of it, or behind
/// the command of an FTP password.
std::size_t secretIn(const std::string& line) {
    for (const char* const name : {"authorization:", "> PASS "}) {
        const char* const found = strcasestr(line.c_str(), name);
        if (found != nullptr) return static_cast<std::size_t>(found - line.c_str()) + std::strlen(name);
    }
    return std::string::npos;
}

/// The text without what a login is: whoever reads the messages must not be able to use it.
std::string withoutSecrets(const std::string& text) {
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const std::string line = text.substr(at, end - at);
        const std::size_t secret = secretIn(line);
        shown += secret == std::string::npos ? line : line.substr(0, secret) + " (not shown)\r\n";
        at = end;
    }
    return shown;
}

int tell(CURL*, curl_infotype type, char* data, std::size_t size, void*) noexcept {
    const std::string_view mark = markOf(type);
    if (mark.empty() || border::relaxedLoad(gdwOutputToStdDebug) == 0) return 0;
    return border::atBorder(0, [&] {
        const std::string text = withoutSecrets(std::string(mark).append(data, size));
        _DbgOutString(0, text.c_str());
        return 0;
    });
}

int errorOfStatus(long status) noexcept {
    switch (status) {
        case 401:
        case 403:
        case 407:
            return EACCES;
        case 404:
        case 410:
            return ENOENT;
        case 416:
            return EINVAL;
        default:
            return EIO;
    }
}

}  // namespace

CURL* newTransfer() noexcept {
    CURL* const transfer = isLibraryReady() ? curl_easy_init() : nullptr;
    if (transfer == nullptr) return nullptr;
    curl_easy_setopt(transfer, CURLOPT_DEBUGFUNCTION, &tell);
    // A server must not send us to a file of this machine, or to services that nobody meant.
    curl_easy_setopt(transfer, CURLOPT_PROTOCOLS_STR, "http,https,ftp");
    curl_easy_setopt(transfer, CURLOPT_REDIR_PROTOCOLS_STR, "http,https,ftp");
    return transfer;
}

long statusOf(CURL* transfer) noexcept {
    long status = 0;
    curl_easy_getinfo(transfer, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

void setErrno(CURL* transfer, CURLcode result) noexcept {
    switch (result) {
        case CURLE_OK:
            return;
        case CURLE_HTTP_RETURNED_ERROR:
            errno = errorOfStatus(statusOf(transfer));
            return;
        case CURLE_REMOTE_FILE_NOT_FOUND:
            errno = ENOENT;
            return;
        case CURLE_LOGIN_DENIED:
        case CURLE_REMOTE_ACCESS_DENIED:
            errno = EACCES;
            return;
        case CURLE_COULDNT_RESOLVE_HOST:
            errno = EHOSTUNREACH;
            return;
        case CURLE_OPERATION_TIMEDOUT:
            errno = ETIMEDOUT;
            return;
        case CURLE_OUT_OF_MEMORY:
            errno = ENOMEM;
            return;
        case CURLE_UNSUPPORTED_PROTOCOL:
            errno = EPROTONOSUPPORT;
            return;
        case CURLE_URL_MALFORMAT:
            errno = EINVAL;
            return;
        default:
            break;
    }
    long system = 0;
    const bool told = curl_easy_getinfo(transfer, CURLINFO_OS_ERRNO, &system) == CURLE_OK && system != 0;
    errno = told ? static_cast<int>(system) : EIO;
}

}  // namespace kv::file
