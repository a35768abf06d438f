// HTTP, HTTPS and FTP URLs. Their transfers are not part of this build yet: an open is refused with the message of a
// failed one. The texts of a login that a URL handle owns are freed here.
#include <cerrno>
#include <cstdlib>
#include <optional>

#include "border/guard.h"
#include "errlog.h"
#include "file/kinds.h"
#include "file/openers.h"
#include "kvos/locator.h"

namespace kv::file {
namespace {

void freeTokenTexts(kvOSFileHandle& file) {
    for (char* text : {file.szOAuthJson, file.szOAuthServer, file.szClientId, file.szClientSecret, file.szRefreshToken,
                       file.szTokenType, file.szAccessToken, file.szIdToken, file.szUserName, file.szPassword}) {
        std::free(text);
    }
}

bool closeUrl(kvOSFileHandle& file) {
    freeTokenTexts(file);
    freeRecord(file);
    return true;
}

}  // namespace

std::optional<std::int64_t> openUrl(const OpenRequest& request) {
    if (kvOSFUseCurl(request.redirected) == 0) return std::nullopt;
    errno = EPROTONOSUPPORT;
    ErrOut("Error: opening <%s> ", request.redirected);
    return kInvalidHandle;
}

constinit const FileKind kUrlFile{.close = closeUrl, .repeatsWrites = true, .seeksWhenWriting = false};

}  // namespace kv::file
