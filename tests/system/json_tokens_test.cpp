// What the library hands on to its users: the JSON tokenizer and the MD5 digests, as a program finds them that opens
// the library at run time and asks for the names.
#include <array>
#include <cstdio>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <mbedtls/md5.h>
#include <string>
#include <string_view>

#define JSMN_HEADER
#include <jsmn.h>

namespace {

class LibraryHandedOn : public ::testing::Test {
protected:
    LibraryHandedOn() : library_(dlopen(KVUTIL_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(library_, nullptr) << dlerror();
    }
    ~LibraryHandedOn() override {
        if (library_ != nullptr) dlclose(library_);
    }

    template <class Function>
    Function* find(const char* name) {
        auto* found = reinterpret_cast<Function*>(dlsym(library_, name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

private:
    void* library_;
};

std::string inHex(const std::array<unsigned char, 16>& digest) {
    std::string text;
    char pair[3];
    for (const unsigned char byte : digest) {
        std::snprintf(pair, sizeof pair, "%02x", byte);
        text += pair;
    }
    return text;
}

TEST_F(LibraryHandedOn, TokenizerParsesADocument) {
    auto* init = find<void(jsmn_parser*)>("jsmn_init");
    auto* parse = find<int(jsmn_parser*, const char*, size_t, jsmntok_t*, unsigned int)>("jsmn_parse");
    ASSERT_TRUE(init != nullptr && parse != nullptr);

    constexpr std::string_view kDocument = R"({"name":"clip","frames":[25,50]})";
    jsmn_parser parser;
    std::array<jsmntok_t, 8> token{};
    init(&parser);
    ASSERT_EQ(parse(&parser, kDocument.data(), kDocument.size(), token.data(), 8), 7);
    EXPECT_EQ(token[0].type, JSMN_OBJECT);
    EXPECT_EQ(token[0].size, 2);
    const auto textOf = [&](const jsmntok_t& part) {
        return kDocument.substr(static_cast<size_t>(part.start), static_cast<size_t>(part.end - part.start));
    };
    EXPECT_EQ(textOf(token[1]), "name");
    EXPECT_EQ(textOf(token[2]), "clip");
    EXPECT_EQ(token[4].type, JSMN_ARRAY);
    EXPECT_EQ(textOf(token[6]), "50");
}

TEST_F(LibraryHandedOn, TokenizerTellsABrokenDocument) {
    auto* init = find<void(jsmn_parser*)>("jsmn_init");
    auto* parse = find<int(jsmn_parser*, const char*, size_t, jsmntok_t*, unsigned int)>("jsmn_parse");
    ASSERT_TRUE(init != nullptr && parse != nullptr);
    jsmn_parser parser;
    std::array<jsmntok_t, 1> token{};
    init(&parser);
    EXPECT_EQ(parse(&parser, "{\"a\"", 4, token.data(), 1), JSMN_ERROR_NOMEM);
    init(&parser);
    EXPECT_EQ(parse(&parser, "{\"a", 3, token.data(), 1), JSMN_ERROR_PART);
}

// The digests are those that RFC 1321 prints in its appendix A.5.
constexpr std::string_view kDigestOfNothing = "d41d8cd98f00b204e9800998ecf8427e";
constexpr std::string_view kDigestOfAbc = "900150983cd24fb0d6963f7d28e17f72";

TEST_F(LibraryHandedOn, DigestsOfOneCall) {
    using InOneCall = void(const unsigned char*, size_t, unsigned char*);
    auto* digest = find<InOneCall>("mbedtls_md5");
    ASSERT_NE(digest, nullptr);
    std::array<unsigned char, 16> result{};
    digest(reinterpret_cast<const unsigned char*>(""), 0, result.data());
    EXPECT_EQ(inHex(result), kDigestOfNothing);
    digest(reinterpret_cast<const unsigned char*>("abc"), 3, result.data());
    EXPECT_EQ(inHex(result), kDigestOfAbc);
}

TEST_F(LibraryHandedOn, DigestsInSteps) {
    auto* init = find<void(mbedtls_md5_context*)>("mbedtls_md5_init");
    auto* starts = find<int(mbedtls_md5_context*)>("mbedtls_md5_starts_ret");
    auto* update = find<int(mbedtls_md5_context*, const unsigned char*, size_t)>("mbedtls_md5_update_ret");
    auto* finish = find<int(mbedtls_md5_context*, unsigned char*)>("mbedtls_md5_finish_ret");
    auto* release = find<void(mbedtls_md5_context*)>("mbedtls_md5_free");
    ASSERT_TRUE(init != nullptr && starts != nullptr && update != nullptr && finish != nullptr && release != nullptr);

    mbedtls_md5_context context;
    std::array<unsigned char, 16> result{};
    init(&context);
    EXPECT_EQ(starts(&context), 0);
    EXPECT_EQ(finish(&context, result.data()), 0);
    EXPECT_EQ(inHex(result), kDigestOfNothing);
    EXPECT_EQ(starts(&context), 0);
    EXPECT_EQ(update(&context, reinterpret_cast<const unsigned char*>("a"), 1), 0);
    EXPECT_EQ(update(&context, reinterpret_cast<const unsigned char*>("bc"), 2), 0);
    EXPECT_EQ(finish(&context, result.data()), 0);
    EXPECT_EQ(inHex(result), kDigestOfAbc);
    release(&context);
}

}  // namespace
