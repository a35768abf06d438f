// The provider tells a bucket's region by refusing a request that was signed for another one: the refusal's message
// names the right one. The answer of a request that it accepts is not used, but that none is set.
#include "file/s3/region.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "border/setting.h"
#include "file/s3/object.h"
#include "kvcfg.h"
#include "kvos/s3.h"

char gszAwsRegion[32] = "us-east-1";

namespace kv::file::s3 {
namespace {

constexpr const char* kKey = "MediaKiln\\Default";
constexpr const char* kName = "AWSRegion";

/// What stands in the variable, of which a host may not have ended the text.
std::string regionText() {
    std::string text;
    for (char& place : gszAwsRegion) {
        const char letter = border::relaxedLoad(place);
        if (letter == '\0') break;
        text += letter;
    }
    return text;
}

void storeRegion(std::string_view text) {
    for (std::size_t i = 0; i < sizeof gszAwsRegion; ++i) {
        border::relaxedStore(gszAwsRegion[i], i < text.size() ? text[i] : '\0');
    }
}

/// True while the thread fills the variable. The settings may lie in a store behind a redirect: the open of theirs
/// comes back here.
thread_local bool isFilling = false;

struct Filling {
    Filling() { isFilling = true; }
    ~Filling() { isFilling = false; }
    Filling(const Filling&) = delete;
    Filling& operator=(const Filling&) = delete;
};

bool fillFromSettings() {
    if (isFilling) return false;
    const Filling filling;
    const auto stored = border::storedText(KVSTDCONFIG, kKey, kName);
    if (stored && stored->size() < sizeof gszAwsRegion) {
        storeRegion(*stored);
        return true;
    }
    storeRegion(kFirstRegion);
    if (stored) return true;  // one that does not fit stays as it stands
    std::string text = kFirstRegion;
    kvCFGValueString(KVSTDCONFIG, kKey, kName, text.data(), nullptr, 1);
    kvCFGSave(KVSTDCONFIG, nullptr, 0);
    return true;
}

/// A region becomes part of host names and signatures.
bool isRegion(std::string_view text) {
    const auto isPart = [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || letter == '-' || letter == '_';
    };
    return !text.empty() && std::ranges::all_of(text, isPart);
}

std::string regionIn(const std::string& message, const std::string& unknown) {
    constexpr std::string_view kMark = "is wrong; expecting '";
    const std::size_t at = message.find(kMark);
    if (at == std::string::npos) return unknown;
    std::string region = message.substr(at + kMark.size());
    if (!region.empty()) region.pop_back();
    return isRegion(region) ? region : unknown;
}

}  // namespace

std::string preferredRegion() {
    getAwsRegion();
    std::string region = regionText();
    return region.empty() ? kFirstRegion : region;
}

std::string regionOf(Client& client, const std::string& bucket, const std::string& asked, const std::string& unknown) {
    const auto location = client.getBucketLocation({.bucket = bareBucket(bucket)});
    if (!location.isSuccess()) return regionIn(location.error().message, unknown);
    return location.result().constraint.empty() ? kFirstRegion : asked;
}

}  // namespace kv::file::s3

namespace s3 = kv::file::s3;

char* getAwsRegion(void) {
    if (s3::regionText().empty()) kv::border::atBorder(false, s3::fillFromSettings);
    return gszAwsRegion;
}
