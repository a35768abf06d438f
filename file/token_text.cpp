// What the token file and the endpoint's answer say, taken into the record.
//
// Both are read in the same steps but for one: a key of the file that is not known takes its value with it, one of the
// answer does not.
#include "file/token_text.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

#include "errlog.h"
#include "file/token.h"
#include "file/token_json.h"
#include "kvos/time.h"

namespace kv::file {
namespace {

/// A known key and the field that takes its value.
struct Field {
    std::string_view key;
    char* kvOSFileHandle::*text;
};

// In the order in which a key is compared with them.
constexpr std::array<Field, 5> kFileFields{{{"client_id", &kvOSFileHandle::szClientId},
                                            {"client_secret", &kvOSFileHandle::szClientSecret},
                                            {"refresh_token", &kvOSFileHandle::szRefreshToken},
                                            {"username", &kvOSFileHandle::szUserName},
                                            {"password", &kvOSFileHandle::szPassword}}};
constexpr std::array<Field, 3> kAnswerFields{{{"access_token", &kvOSFileHandle::szAccessToken},
                                              {"token_type", &kvOSFileHandle::szTokenType},
                                              {"id_token", &kvOSFileHandle::szIdToken}}};

template <std::size_t N>
const Field* fieldOf(const std::array<Field, N>& fields, std::string_view key) {
    for (const Field& field : fields) {
        if (JsonTokens::matches(key, field.key)) return &field;
    }
    return nullptr;
}

void reportRefusal(const char* what, std::string_view value) {
    const std::string text = std::string(what).append(value);
    ErrFmtOut(KVERR_CLASS_ERROR, nullptr, 0, "ERROR(kvFile): %s\n\r", text.c_str());
}

std::uint32_t expiryAfter(std::string_view seconds) {
    const int count = std::atoi(std::string(seconds).c_str());
    return static_cast<std::uint32_t>(count) * 1000 + kvOSGetMs();
}

/// Takes what one key says; whether its value is behind it and done with.
bool takeKey(kvOSFileHandle& file, std::string_view key, std::string_view value) {
    if (JsonTokens::matches(key, "error")) {
        reportRefusal("ERROR-Type: ", value);
        return false;  // meant: the value is looked at as a key next, here and below
    }
    if (JsonTokens::matches(key, "error_description")) {
        reportRefusal("ERROR-Desc: ", value);
        return false;
    }
    if (const Field* field = fieldOf(kAnswerFields, key)) {
        replaceText(file.*(field->text), value);
        return true;
    }
    if (!JsonTokens::matches(key, "expires_in")) return false;
    file.dwTokenExpiry = expiryAfter(value);
    return true;
}

}  // namespace

bool replaceText(char*& field, std::string_view text) {
    auto* const copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) return false;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    std::free(field);
    field = copy;
    return true;
}

void freeTokenTexts(kvOSFileHandle& file) {
    for (char** text :
         {&file.szOAuthJson, &file.szOAuthServer, &file.szClientId, &file.szClientSecret, &file.szRefreshToken,
          &file.szTokenType, &file.szAccessToken, &file.szIdToken, &file.szUserName, &file.szPassword}) {
        std::free(*text);
        *text = nullptr;
    }
}

void forgetLogin(kvOSFileHandle& file) {
    freeTokenTexts(file);
    file.dwTokenExpiry = 0;
}

void readTokenFile(kvOSFileHandle& file, std::string_view text) {
    const JsonTokens tokens(text);
    for (std::size_t at = 0; tokens.isThere(at); ++at) {
        if (!tokens.isString(at)) continue;
        const Field* field = fieldOf(kFileFields, tokens.text(at));
        ++at;  // behind the value, known or not
        if (field != nullptr && tokens.isThere(at)) replaceText(file.*(field->text), tokens.text(at));
    }
}

void readTokenAnswer(kvOSFileHandle& file, std::string_view answer) {
    const JsonTokens tokens(answer);
    for (std::size_t at = 0; tokens.isThere(at); ++at) {
        if (!tokens.isString(at) || !tokens.isThere(at + 1)) continue;
        if (takeKey(file, tokens.text(at), tokens.text(at + 1))) ++at;
    }
}

}  // namespace kv::file
