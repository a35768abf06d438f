// The question for a newer version: the document is fetched here, and read in version_document.cpp.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "border/guard.h"
#include "hosts.h"
#include "kvos/memory.h"
#include "kvos/rest.h"
#include "kvos/system.h"
#include "system/version_document.h"

namespace kv::system {
namespace {

constexpr const char* kMainDocument = "https://" KVUTIL_UPDATE_HOST "/versions.json";
constexpr const char* kSecondDocument = "https://" KVUTIL_SECOND_UPDATE_HOST "/versions.json";
constexpr const char* kProductOfSecond = "mediaferry";

constexpr const char* kUpToDate = "Up to date with the latest version";
constexpr const char* kNoAnswer = "Error: No information returned from server";
constexpr const char* kNotFound = "Error: could not find product name or operating system";

/// For the outputs, which take texts of both kinds: the caller must not write to this one.
char* constant(const char* text) { return const_cast<char*>(text); }

struct Free {
    void operator()(char* text) const noexcept { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

/// Where the three texts of the answer go.
struct Outputs {
    char** version;
    char** url;
    char** description;

    bool areAll() const { return version != nullptr && url != nullptr && description != nullptr; }

    std::int32_t fail(const char* reason) const {
        if (version != nullptr) *version = constant("");
        if (url != nullptr) *url = constant("");
        if (description != nullptr) *description = constant(reason);
        return -1;
    }
};

/// A copy for the caller; null without memory.
Text copyOf(const std::string& text) {
    Text copy(static_cast<char*>(KVAlloc(static_cast<std::uint32_t>(text.size() + 1))));
    if (copy) std::memcpy(copy.get(), text.c_str(), text.size() + 1);
    return copy;
}

/// The answer of the server that knows the product; null if none came.
Text fetch(const char* product) {
    const bool isSecond = std::strcmp(product, kProductOfSecond) == 0;
    char headers[256] = "application/json";  // meant: the line has no name of a header ahead of it
    char* answer = nullptr;
    std::uint32_t length = 0;
    kvOSHTTPCommand(isSecond ? kSecondDocument : kMainDocument, "GET", headers, nullptr, 0, &answer, &length, 0);
    return Text(answer);
}

std::int32_t check(const char* product, const Version& held, const Outputs& outputs) {
    const Text document = fetch(product);
    if (!document) return outputs.fail(kNoAnswer);
    const auto release = releaseIn(document.get(), product);
    if (!release) return outputs.fail(kNotFound);
    const bool isNewer = release->isNewerThan(held);
    Text version = copyOf(release->version());
    Text url = copyOf(release->url);
    Text description = isNewer ? copyOf(release->description) : nullptr;
    if (!version || !url || (isNewer && !description)) return outputs.fail(kNoAnswer);
    *outputs.version = version.release();
    *outputs.url = url.release();
    *outputs.description = isNewer ? description.release() : constant(kUpToDate);
    return isNewer ? 1 : 0;
}

}  // namespace
}  // namespace kv::system

std::int32_t kvOSGetAppVersion(const char* pProduct, std::uint32_t dwMajor, std::uint32_t dwMinor,
                               std::uint32_t dwBuild, char** ppVersion, char** ppUrl, char** ppDescription) {
    using namespace kv::system;
    const Outputs outputs{ppVersion, ppUrl, ppDescription};
    outputs.fail(kNoAnswer);
    if (pProduct == nullptr || !outputs.areAll()) {
        errno = EINVAL;
        return -1;
    }
    return kv::border::atBorder(-1, [&] { return check(pProduct, {dwMajor, dwMinor, dwBuild}, outputs); });
}
