// The token file of a host: where it is sought, and how it is read.
#include <algorithm>
#include <optional>
#include <string>

#include "border/setting.h"
#include "border/text.h"
#include "errlog.h"
#include "file/existence.h"
#include "file/open_reading.h"
#include "file/token.h"
#include "hosts.h"
#include "kvcfg.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/text.h"
#include "kvos/time.h"
#include "kvos/url.h"

namespace kv::file {
namespace {

constexpr std::string_view kDefaultEndpoint = KVUTIL_TOKEN_ENDPOINT;
static_assert(kDefaultEndpoint.starts_with("https://") && kDefaultEndpoint.ends_with("/oauth2/v4/token"));
static_assert(kDefaultEndpoint.size() <= 45);

constexpr std::size_t kLongestHost = 255;

/// Bytes of a token file; no login needs more.
constexpr std::uint64_t kLargestFile = 1 << 20;

/// The host of an HTTP or HTTPS URL, with its port; nothing for any other text.
std::optional<std::string> hostOf(std::string_view url) {
    for (const std::string_view scheme : {"http://", "https://"}) {
        if (!border::beginsWithAnyCase(url, scheme)) continue;
        const std::string_view host = url.substr(scheme.size(), url.find('/', scheme.size()) - scheme.size());
        if (host.size() <= kLongestHost) return std::string(host);
    }
    return std::nullopt;
}

/// The folder of the token files; empty where there is none, which must not stand for the working directory.
std::string tokenFolder() {
    border::PathBuffer folder = "";
    kvOSGetConfigDir(folder, 0);
    return folder;
}

bool isThere(const std::string& candidate) {
    return isOnNameList(candidate.c_str()) || kvOSFileExistsInternal(candidate.c_str()) != 0;
}

struct Found {
    std::string host;  // as it stood when the file was found
    std::string path;
};

/// Meant: of a host that is a number in dots nothing is left, so that one file named ".json" serves all of them.
std::optional<Found> find(std::string host) {
    const std::string folder = tokenFolder();
    if (folder.empty()) return std::nullopt;
    std::string path = folder + host + ".json";
    if (isThere(path)) return Found{host, path};
    host.erase(0, host.find_first_not_of("0123456789."));
    path = folder + host + ".json";
    if (isThere(path)) return Found{host, path};
    return std::nullopt;
}

/// The token endpoint configured for a host. A setting without a text counts as the host. Meant.
std::string endpointOf(const std::string& host) {
    const std::string key = "MediaKiln\\OAuth2\\" + host;
    const auto endpoint = border::storedText(KVSTDCONFIG, key.c_str(), "oauth2server");
    if (!endpoint) return std::string(kDefaultEndpoint);
    return endpoint->empty() ? host : *endpoint;
}

/// The file's text; nothing, and a message if it is wanted, where it can't be had.
std::optional<std::string> readFile(const std::string& path, Unreadable unreadable) {
    const std::int64_t handle = openForReading(path.c_str());
    std::uint64_t size = 0;
    const bool open = handle != KVFILE_INVALID && kvOSGetFileSizeEx(handle, &size) != 0 && size <= kLargestFile;
    std::string text(open ? static_cast<std::size_t>(size) : 0, '\0');
    std::uint32_t got = 0;
    if (open && size > 0) kvOSReadFile(handle, text.data(), static_cast<std::uint32_t>(size), &got, nullptr);
    if (handle != KVFILE_INVALID) kvOSCloseFile(handle);
    if (!open) {
        if (unreadable == Unreadable::reported) ErrOut("Unable to open oauth file <%s>", path.c_str());
        return std::nullopt;
    }
    text.resize(std::min<std::size_t>(got, text.size()));
    return text;
}

/// Sets a mark for a scope.
class UnderWay {
public:
    explicit UnderWay(bool& mark) : mark_(mark) { mark_ = true; }
    ~UnderWay() { mark_ = false; }
    UnderWay(const UnderWay&) = delete;
    UnderWay& operator=(const UnderWay&) = delete;

private:
    bool& mark_;
};

}  // namespace

bool isTokenExpired(const kvOSFileHandle& file) {
    const std::uint32_t now = kvOSGetMs();
    return file.dwTokenExpiry < now || file.dwTokenExpiry < now - 1000;
}

bool haveSameHost(std::string_view one, std::string_view other) { return hostOf(one) == hostOf(other); }

void logIn(kvOSFileHandle& file, std::string_view url, Unreadable unreadable) {
    // A redirect of the settings' folder to a server would ask for the login of that server, and so on.
    static thread_local bool isUnderWay = false;
    if (isUnderWay) return;
    const UnderWay underWay(isUnderWay);
    auto host = hostOf(url);
    if (!host) return;
    const auto found = find(std::move(*host));
    if (!found) return;
    if (!replaceText(file.szOAuthServer, endpointOf(found->host))) return;
    const auto text = readFile(found->path, unreadable);
    if (!text || !replaceText(file.szOAuthJson, *text)) return;
    kvOSOAuthAuthorize(&file);
    kvOSOAuthRefresh(&file);  // a token may come with its time over
}

}  // namespace kv::file
