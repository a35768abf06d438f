// S3 addresses as text: which locators name an object.
//
// The order of the tests is the contract: the first answer wins, and the last test can only repeat the one ahead of it
// as long as the global host lies in the service domain. Both are settings of the build, so it stays.
#include <string_view>

#include "border/text.h"
#include "hosts.h"
#include "kvos/locator.h"

namespace kv::file::s3 {
namespace {

/// Paths that can't be an address: absolute ones, shares, and those with a drive or a one-letter scheme.
bool isPlainPath(std::string_view text) {
    const char first = text.front();
    const char second = text.size() > 1 ? text[1] : '\0';
    if (first == '/') return true;
    return second == ':' || (first == '\\' && second == '\\');
}

bool isAddress(std::string_view text) {
    const auto holds = [text](std::string_view part) { return text.find(part) != std::string_view::npos; };
    if (text.empty() || isPlainPath(text)) return false;
    if (holds("s3://") || holds("glacier://")) return true;
    if (holds("X-Amz-Credential=")) return false;  // presigned: an ordinary URL to whoever holds it
    if (border::beginsWithAnyCase(text, "https://s3.") || border::beginsWithAnyCase(text, "http://s3.")) return true;
    return holds(hosts::kS3ServiceDomain) || holds(hosts::kS3GlobalHost);
}

}  // namespace
}  // namespace kv::file::s3

extern "C" uint32_t kvOSUseAws(const char* pText) {
    return kv::file::s3::isAddress(kv::border::orEmpty(pText)) ? 1 : 0;
}
