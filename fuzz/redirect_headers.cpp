// The headers of a redirect, which a server wrote.
//
// What must hold: nothing beside the text is read, the last answer is its end, and a location is one line of it.
#include <cstdint>
#include <cstring>
#include <memory>

#include "file/url_headers.h"
#include "fuzz/input.h"

using kv::fuzz::must;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Without a terminator, so that the sanitizer sees the first byte too many.
    const std::unique_ptr<char[]> bytes(new char[size]);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    const std::string_view headers(bytes.get(), size);

    const std::string_view last = kv::file::lastAnswer(headers);
    must(headers.ends_with(last), "the last answer ends the headers");
    must(kv::file::lastAnswer(last) == last, "there is nothing behind the last answer");
    if (const auto location = kv::file::locationIn(last)) {
        must(location->find_first_of("\r\n") == std::string::npos, "a location is one line");
        must(last.find(*location) != std::string_view::npos, "a location stands in the headers");
    }
    return 0;
}
