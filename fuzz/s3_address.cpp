// The addresses of S3 objects, taken apart.
//
// What must hold: no buffer is overrun, a part that does not fit empties all of them, what is stored are pieces of the
// locator, and a bucket has the character ahead of it. Nothing is opened. Lines: locator, what stands in the key's
// buffer ahead of the call.
#include <cerrno>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "kvos/s3.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::Input;
using kv::fuzz::kPathSize;
using kv::fuzz::must;

constexpr std::size_t kTextSize = 256;

struct Parts {
    ExactBuffer host{kTextSize}, bucket{kPathSize}, key{kPathSize}, type{kTextSize}, access{kTextSize},
        secret{kTextSize};

    explicit Parts(const std::string& keyBefore) {
        for (ExactBuffer* buffer : {&host, &bucket, &type, &access, &secret}) buffer->put("");
        key.put(keyBefore.substr(0, kPathSize - 1));
    }
};

void parse(const std::string& locator, const std::string& keyBefore) {
    Parts parts(keyBefore);
    errno = 0;
    kvOSAwsParse(ExactBuffer(locator), parts.host, parts.bucket, parts.key, parts.type, parts.access, parts.secret);
    if (errno == ENAMETOOLONG) {
        for (const ExactBuffer* part : {&parts.host, &parts.bucket, &parts.key, &parts.access, &parts.secret}) {
            must(part->text().empty(), "what does not fit empties all");
        }
        return;
    }
    must(parts.key.text().starts_with(std::string_view(keyBefore).substr(0, kPathSize - 1)), "the key is appended");
    for (const ExactBuffer* part : {&parts.host, &parts.access, &parts.secret}) {
        must(locator.find(part->text()) != std::string::npos, "a part is a piece of the locator");
    }
    must(parts.host.text().find('/') == std::string_view::npos, "a host has no slash");
    const std::string_view bucket = parts.bucket.text();
    must(bucket.empty() || bucket.size() > 1, "a bucket has the character ahead of it");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string locator = input.text();
    parse(locator, input.text());
    return 0;
}
