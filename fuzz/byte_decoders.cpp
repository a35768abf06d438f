// Both kinds of base 64 and the keyed scramble, which anybody may have written.
//
// What must hold: no call writes or reads beyond its blocks, what is encoded comes back, and a refusal tells that there
// is no result. The first four bytes are the key, and the first of them chooses the prefix's length too.
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "kvos/encoding.h"
#include "kvos/memory.h"

namespace {

using kv::fuzz::must;

/// What a call handed out.
template <class Byte>
struct Out {
    Byte* bytes = nullptr;
    std::uint64_t length = 0;

    Out() = default;
    ~Out() { KVFree(bytes); }
    Out(const Out&) = delete;
    Out& operator=(const Out&) = delete;

    std::string text() const { return {reinterpret_cast<const char*>(bytes), length}; }
};

std::string padded(std::string bytes) {
    while (bytes.size() % 3 != 0) bytes += '\0';
    return bytes;
}

void decode(std::uint32_t key, const std::string& input) {
    const std::vector<char> exact(input.begin(), input.end());
    Out<std::uint8_t> block;
    block.bytes = base64_decode(exact.data(), exact.size(), &block.length, nullptr);
    const std::unique_ptr<std::uint8_t[]> own(new std::uint8_t[exact.size() / 4 * 3 + 1]);
    std::uint64_t length = 0;
    const bool isRead = base64_decode(exact.data(), exact.size(), &length, own.get()) != nullptr;
    must(isRead == (block.bytes != nullptr), "a buffer of the caller changes nothing");
    if (isRead) must(length == block.length && std::memcmp(own.get(), block.bytes, length) == 0, "nor in what is read");

    Out<std::uint8_t> bare;
    must(b64_decode(exact.data(), exact.size(), &bare.bytes, &bare.length) == bare.length, "the result is the length");
    Out<std::uint8_t> plain;
    must(xor_decrypt(nullptr, key, exact.data(), exact.size(), &plain.bytes, &plain.length) == plain.length,
         "here too");
    must(plain.length <= exact.size(), "a scrambled text is longer than the text");
    Out<std::uint8_t> both;
    kvXCDEcode(nullptr, key, exact.data(), exact.size(), &both.bytes, &both.length);
    must((both.bytes == nullptr) == (both.length == 0), "a result has a length");
    must((both.bytes == nullptr) == (block.bytes == nullptr), "it fails where base 64 does");
}

void encodeAndBack(std::uint32_t key, const std::string& input) {
    Out<char> text;
    text.bytes = base64_encode(input.data(), input.size(), &text.length, nullptr);
    Out<std::uint8_t> back;
    back.bytes = base64_decode(text.bytes, text.length, &back.length, nullptr);
    must(input.empty() ? back.bytes == nullptr : back.text() == input, "base 64 comes back");

    Out<char> bare;
    b64_encode(input.data(), input.size(), &bare.bytes, &bare.length);
    Out<std::uint8_t> bareBack;
    b64_decode(bare.bytes, bare.length, &bareBack.bytes, &bareBack.length);
    must(bareBack.text() == padded(input), "bare base 64 comes back with its zeros");

    const std::string prefix(key % 7, 'p');
    Out<std::uint8_t> hidden;
    kvXCEncode(nullptr, key, input.data(), input.size(), prefix.data(), prefix.size(), &hidden.bytes, &hidden.length);
    Out<std::uint8_t> shown;
    kvXCDEcode(nullptr, key, hidden.bytes, hidden.length, &shown.bytes, &shown.length);
    must(shown.text() == input + '\0', "a keyed text comes back with its zero");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::uint32_t key = 0;
    if (size < sizeof key) return 0;
    std::memcpy(&key, data, sizeof key);
    const std::string input(reinterpret_cast<const char*>(data) + sizeof key, size - sizeof key);
    decode(key, input);
    encodeAndBack(key, input);
    return 0;
}
