// Answers of an object store, which may be anybody's: any bytes as the XML of each kind.
//
// What must hold: an answer is a result or an error that has a name and a message; no entry of a listing is without a
// key; what goes on says where. The pieces are compiled into this program. The first byte says which kind the rest is.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "file/s3/answers.h"
#include "fuzz/input.h"

namespace {

using namespace kv::file::s3;
using kv::fuzz::must;

void check(const Error& error) {
    must(!error.exceptionName.empty() && !error.message.empty(), "an error has a name and a message");
}

template <class Result>
void check(const Answer<Result>& answer) {
    if (!answer.isSuccess()) check(answer.error());
}

void checkListing(std::string_view body) {
    const Answer<Listing> answer = listingIn(body);
    check(answer);
    if (!answer.isSuccess()) return;
    const Listing& page = answer.result();
    for (const ListedObject& object : page.contents) must(!object.key.empty(), "an entry has a key");
    must(page.isTruncated || page.nextMarker.empty(), "only a page with a next one says where that is");
    must(!page.isTruncated || page.contents.empty() || !page.nextMarker.empty(),
         "a page with entries and a next one says where that is");
}

void checkUpload(std::string_view body) {
    const Answer<MultipartUpload> answer = uploadIn(body);
    check(answer);
    must(!answer.isSuccess() || !answer.result().uploadId.empty(), "an upload has an id");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    // Without a terminator, so that the sanitizer sees the first byte too many.
    const std::unique_ptr<char[]> bytes(new char[size]);
    std::memcpy(bytes.get(), data + 1, size - 1);
    const std::string_view body(bytes.get(), size - 1);
    switch (data[0]) {
        case 'e':
            check(errorIn(500, body));
            break;
        case 'o':
            check(locationIn(body));
            break;
        case 'u':
            checkUpload(body);
            break;
        case 'p':
            check(copiedPartIn(body));
            break;
        case 'c':
            check(completedUploadIn(body));
            break;
        default:
            checkListing(body);
    }
    return 0;
}
