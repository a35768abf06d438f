#include "file/curl.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "border/secrets.h"
#include "border/text.h"
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
std::size_t loginIn(std::string_view line) {
    for (const std::string_view name : {"authorization:", "> PASS "}) {
        const std::size_t found = border::findAnyCase(line, name);
        if (found != std::string_view::npos) return found + name.size();
    }
    return std::string_view::npos;
}

/// The text without what a login is, in headers and in locators: whoever reads the messages must not be able to use it.
std::string withoutLogins(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view line = text.substr(0, length);
        const std::size_t login = loginIn(line);
        shown += border::withoutSecrets(line.substr(0, login));
        if (login != std::string_view::npos) shown += " (not shown)\r\n";
        text.remove_prefix(length);
    }
    return shown;
}

int tell(CURL*, curl_infotype type, char* data, std::size_t size, void*) noexcept {
    const std::string_view mark = markOf(type);
    if (mark.empty() || border::relaxedLoad(gdwOutputToStdDebug) == 0) return 0;
    return border::atBorder(0, [&] {
        const std::string text = withoutLogins(std::string(mark).append(data, size));
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

/// A program that is started while a transfer is open would keep its connection.
int keepFromPrograms(void*, curl_socket_t socket, curlsocktype) noexcept {
    fcntl(socket, F_SETFD, FD_CLOEXEC);
    return CURL_SOCKOPT_OK;
}

}  // namespace

CURL* newTransfer() noexcept {
    CURL* const transfer = isLibraryReady() ? curl_easy_init() : nullptr;
    if (transfer == nullptr) return nullptr;
    curl_easy_setopt(transfer, CURLOPT_DEBUGFUNCTION, &tell);
    curl_easy_setopt(transfer, CURLOPT_SOCKOPTFUNCTION, &keepFromPrograms);
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
