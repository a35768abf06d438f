// The document of the update server, which is whatever answers there.
//
// What must hold: nothing beside the text is read, what is found is in the text, and no version is newer than itself.
// The piece is compiled into this program. Lines: the product, then the document.
#include "system/version_document.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/input.h"

namespace {

using kv::fuzz::Input;
using kv::fuzz::must;
using kv::system::Release;

std::uint32_t numberOf(const std::string& text) {
    return static_cast<std::uint32_t>(std::strtol(text.c_str(), nullptr, 10)) & 0xFFFF;
}

void compare(const Release& release) {
    const std::uint32_t major = numberOf(release.major);
    const std::uint32_t minor = numberOf(release.minor);
    const std::uint32_t build = numberOf(release.build);
    must(!release.isNewerThan({major, minor, build}), "a version is not newer than itself");
    must(!release.isNewerThan({major + 1, 0, 0}), "a lower major number is never newer");
    must(build == 0 || release.isNewerThan({major, minor, build - 1}), "a higher build number is newer");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string product = input.text();
    std::string document;
    while (!input.isAtEnd()) document += input.text() + "\n";

    // Without a terminator, so that the sanitizer sees the first byte too many.
    const std::unique_ptr<char[]> bytes(new char[document.size()]);
    if (!document.empty()) std::memcpy(bytes.get(), document.data(), document.size());
    const auto release = kv::system::releaseIn({bytes.get(), document.size()}, product);
    if (!release) return 0;
    must(document.find(product) != std::string::npos, "the product is in the text");
    for (const std::string* text :
         {&release->major, &release->minor, &release->build, &release->url, &release->description}) {
        must(document.find(*text) != std::string::npos, "what is found is in the text");
    }
    compare(*release);
    return 0;
}
