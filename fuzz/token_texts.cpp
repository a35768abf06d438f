// The token file and the answer of a token endpoint, which are whatever somebody wrote.
//
// What must hold: nothing beside the text is read, and every text taken is one of it. The piece is compiled into this
// program. The first byte says which of the two the rest is.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "errlog.h"
#include "file/token.h"
#include "file/token_text.h"
#include "fuzz/input.h"

namespace {

using kv::fuzz::must;

void check(std::string_view text, const char* taken) {
    must(taken == nullptr || text.find(taken) != std::string_view::npos, "a text that was taken stands in the input");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    gdwOutputToStdDebug = 0;
    gfReadReg = 1;
    gfEnableList = 0;
    // Without a terminator, so that the sanitizer sees the first byte too many.
    const std::unique_ptr<char[]> bytes(new char[size]);
    std::memcpy(bytes.get(), data + 1, size - 1);
    const std::string_view text(bytes.get(), size - 1);

    kvOSFileHandle record{};
    if (data[0] % 2 == 0) {
        kv::file::readTokenFile(record, text);
    } else {
        kv::file::readTokenAnswer(record, text);
    }
    for (const char* taken : {record.szClientId, record.szClientSecret, record.szRefreshToken, record.szTokenType,
                              record.szAccessToken, record.szIdToken, record.szUserName, record.szPassword}) {
        check(text, taken);
    }
    kv::file::freeTokenTexts(record);
    return 0;
}
