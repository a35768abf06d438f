// The REST command: one request on a transfer and a record of its own, which nobody else sees.
//
// The options of each method are set in an order that is part of the contract: a later one changes what an earlier one
// made of the request. "GET" thus ends as a POST. Do not tidy them.
#include "kvos/rest.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "border/guard.h"
#include "border/text.h"
#include "file/curl.h"
#include "file/handle.h"
#include "file/token.h"
#include "kvos/url.h"

namespace kv::file {
namespace {

constexpr const char* kSectionSign = "\xC2\xA7";

/// What the options of a method are made of.
struct Command {
    Command() = default;
    ~Command() {
        const border::KeepErrno keep;
        if (record.pFile != nullptr) curl_easy_cleanup(record.pFile);
        curl_slist_free_all(record.pHeaders);
        freeTokenTexts(record);
        std::free(record.pBuf);
    }
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    CURL* transfer() const { return record.pFile; }

    kvOSFileHandle record{};  // its buffer takes the answer
    kvOSFileHandle upload{};  // its buffer is the body, for the read function, which takes what it is given as a record
    std::string url;
    const char* body = nullptr;
    std::uint32_t bodyLength = 0;
};

// A line an option, so that a list can be read beside the contract.
template <class Value>
void set(const Command& command, CURLoption option, Value value) {
    curl_easy_setopt(command.transfer(), option, value);
}

void setPost(Command& command) {
    set(command, CURLOPT_POST, 1L);
    set(command, CURLOPT_POSTFIELDSIZE, static_cast<long>(command.bodyLength));
    set(command, CURLOPT_POSTFIELDS, command.body);
    set(command, CURLOPT_READDATA, &command.record);
    set(command, CURLOPT_READFUNCTION, &read_callback_write);
    set(command, CURLOPT_VERBOSE, 0L);
    set(command, CURLOPT_URL, command.url.c_str());
    set(command, CURLOPT_HTTPHEADER, command.record.pHeaders);
    set(command, CURLOPT_SSL_VERIFYPEER, 0L);
}

/// Meant: the one method that verifies who signed the certificate.
void setPatch(Command& command) {
    set(command, CURLOPT_CUSTOMREQUEST, "PATCH");
    set(command, CURLOPT_POST, 1L);
    set(command, CURLOPT_READDATA, &command.record);
    set(command, CURLOPT_READFUNCTION, &read_callback_write);
    set(command, CURLOPT_VERBOSE, 0L);
    set(command, CURLOPT_URL, command.url.c_str());
    set(command, CURLOPT_HTTPHEADER, command.record.pHeaders);
    set(command, CURLOPT_POSTFIELDS, command.body);
    set(command, CURLOPT_POSTFIELDSIZE, static_cast<long>(command.bodyLength));
}

/// The second source of the upload is the one that stands.
void setPut(Command& command) {
    set(command, CURLOPT_UPLOAD, 1L);
    set(command, CURLOPT_READDATA, &command.record);
    set(command, CURLOPT_READFUNCTION, &read_callback_write);
    set(command, CURLOPT_VERBOSE, 0L);
    set(command, CURLOPT_URL, command.url.c_str());
    set(command, CURLOPT_HTTPHEADER, command.record.pHeaders);
    set(command, CURLOPT_READDATA, &command.upload);
    set(command, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(command.bodyLength));
    set(command, CURLOPT_SSL_VERIFYPEER, 0L);
}

/// Meant: the fields make a POST of it, also where they are none, and the transfer tells its steps.
void setGet(Command& command) {
    set(command, CURLOPT_HTTPGET, 1L);
    set(command, CURLOPT_URL, command.url.c_str());
    set(command, CURLOPT_HTTPHEADER, command.record.pHeaders);
    set(command, CURLOPT_VERBOSE, 0L);
    set(command, CURLOPT_POSTFIELDS, command.body);
    set(command, CURLOPT_POSTFIELDSIZE, static_cast<long>(command.bodyLength));
    set(command, CURLOPT_SSL_VERIFYPEER, 0L);
    set(command, CURLOPT_VERBOSE, 1L);
}

void setDelete(Command& command) {
    set(command, CURLOPT_CUSTOMREQUEST, "DELETE");
    set(command, CURLOPT_URL, command.url.c_str());
    set(command, CURLOPT_POSTFIELDS, command.body);
    set(command, CURLOPT_POSTFIELDSIZE, static_cast<long>(command.bodyLength));
    set(command, CURLOPT_HTTPHEADER, command.record.pHeaders);
    set(command, CURLOPT_SSL_VERIFYPEER, 0L);
    set(command, CURLOPT_VERBOSE, 0L);
}

struct Method {
    std::string_view prefix;
    void (&set)(Command&);
};
constexpr Method kMethods[]{
    {"POST", setPost}, {"PATCH", setPatch}, {"PUT", setPut}, {"GET", setGet}, {"DELETE", setDelete}};

/// Meant: without a known method the transfer gets no URL, so that it fails.
void setMethod(Command& command, const char* name) {
    for (const Method& method : kMethods) {
        if (border::beginsWithAnyCase(name, method.prefix)) return method.set(command);
    }
}

/// Meant: these two characters alone, and each of them wherever it stands.
std::string escaped(std::string_view url) {
    std::string text;
    text.reserve(url.size());
    for (const char c : url) {
        if (c == '#') {
            text += "%23";
        } else if (c == '+') {
            text += "%2b";
        } else {
            text += c;
        }
    }
    return text;
}

/// Either byte of the section sign parts, since strtok takes a set of bytes.
void addHeaders(kvOSFileHandle& record, char* headers) {
    char* rest = nullptr;
    for (const char* line = strtok_r(headers, kSectionSign, &rest); line != nullptr;
         line = strtok_r(nullptr, kSectionSign, &rest)) {
        curl_slist* const list = curl_slist_append(record.pHeaders, line);
        if (list != nullptr) record.pHeaders = list;
    }
}

bool isDelivered(CURLcode result, long status) {
    return result == CURLE_OK || status == 200 || status == 201 || status == 216;
}

/// The arguments of the exported call that come back to the caller, and those that need no turning.
struct Exchange {
    const char* method;
    char* headers;
    char** answer;
    std::uint32_t* answerLength;
    std::uint32_t timeout_ms;
};

std::uint32_t perform(Command& command, const Exchange& exchange) {
    kvOSFileHandle& record = command.record;
    record.dwType = KVFILE_CURL;
    record.pFile = newTransfer();
    if (record.pFile == nullptr) return 0;
    logIn(record, command.url, Unreadable::passedOver);
    kvOSOAuthAddHeader(&record, command.transfer());
    set(command, CURLOPT_WRITEDATA, &record);
    set(command, CURLOPT_WRITEFUNCTION, &kvOSHTTPWriteCommandCallback);
    addHeaders(record, exchange.headers);
    set(command, CURLOPT_TIMEOUT_MS, static_cast<long>(exchange.timeout_ms));
    setMethod(command, exchange.method);

    const CURLcode result = curl_easy_perform(command.transfer());
    setErrno(command.transfer(), result);
    if (!isDelivered(result, statusOf(command.transfer())) || exchange.answerLength == nullptr) return 1;
    *exchange.answerLength = static_cast<std::uint32_t>(record.qwBufLen);
    if (record.pBuf == nullptr) return 1;  // meant: an empty answer leaves what the caller set
    *exchange.answer = static_cast<char*>(record.pBuf);
    record.pBuf = nullptr;  // the caller's now
    return 1;
}

}  // namespace
}  // namespace kv::file

namespace file = kv::file;

std::uint32_t kvOSHTTPCommand(const char* pUrl, const char* pMethod, char* pHeaders, const void* pBody,
                              std::uint32_t dwBodyLength, char** ppResult, std::uint32_t* pdwResultLength,
                              std::uint32_t dwTimeoutMs) {
    if (pUrl == nullptr || pMethod == nullptr || pHeaders == nullptr ||
        (ppResult == nullptr && pdwResultLength != nullptr)) {
        errno = EINVAL;
        return 0;
    }
    return kv::border::atBorder(0u, [&] {
        file::Command command;
        command.url = file::escaped(pUrl);
        command.body = static_cast<const char*>(pBody);
        command.bodyLength = pBody == nullptr ? 0 : dwBodyLength;
        command.upload.pBuf = const_cast<void*>(pBody);
        command.upload.qwBufLen = command.bodyLength;
        return file::perform(command, {pMethod, pHeaders, ppResult, pdwResultLength, dwTimeoutMs});
    });
}
