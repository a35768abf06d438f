// libcurl as a client of the servers: one request, and all that came of it.
#pragma once

#include <cstring>
#include <curl/curl.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kvtest {

struct Fetched {
    CURLcode result = CURLE_OK;
    long status = 0;
    std::string headers;
    std::string body;
};

/// A client that keeps its connection from one request to the next.
class Client {
public:
    struct Options {
        std::string method = "";  // GET
        std::vector<std::string> headers = {};
        std::string body = "";  // the fields of a POST
        const std::string* upload = nullptr;
        std::string range = "";
        std::string certificate = "";  // whom to trust
        std::string user = "";         // "name:password"
        std::string signature = "";    // what an object store's request is signed for: "aws:amz:REGION:s3"
        bool headOnly = false;
        bool follows = false;
        bool unpack = false;
        bool append = false;
    };

    Fetched fetch(const std::string& url) { return fetch(url, Options{}); }

    Fetched fetch(const std::string& url, const Options& options) {
        Fetched fetched;
        CURL* curl = curl_.get();
        curl_easy_reset(curl);
        set(CURLOPT_URL, url.c_str());
        set(CURLOPT_TIMEOUT_MS, 60000L);
        set(CURLOPT_WRITEFUNCTION, &Client::store);
        set(CURLOPT_WRITEDATA, &fetched.body);
        set(CURLOPT_HEADERFUNCTION, &Client::store);
        set(CURLOPT_HEADERDATA, &fetched.headers);
        set(CURLOPT_NOBODY, options.headOnly ? 1L : 0L);
        set(CURLOPT_FOLLOWLOCATION, options.follows ? 1L : 0L);
        set(CURLOPT_MAXREDIRS, 5L);
        set(CURLOPT_APPEND, options.append ? 1L : 0L);
        if (options.unpack) set(CURLOPT_ACCEPT_ENCODING, "gzip");
        if (!options.range.empty()) set(CURLOPT_RANGE, options.range.c_str());
        if (!options.certificate.empty()) set(CURLOPT_CAINFO, options.certificate.c_str());
        if (!options.user.empty()) set(CURLOPT_USERPWD, options.user.c_str());
        if (!options.signature.empty()) set(CURLOPT_AWS_SIGV4, options.signature.c_str());
        if (!options.body.empty()) set(CURLOPT_COPYPOSTFIELDS, options.body.c_str());
        Unsent unsent;
        if (options.upload != nullptr) {
            unsent.left = *options.upload;
            set(CURLOPT_UPLOAD, 1L);
            set(CURLOPT_READFUNCTION, &Client::take);
            set(CURLOPT_READDATA, &unsent);
            set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(unsent.left.size()));
        }
        if (!options.method.empty()) set(CURLOPT_CUSTOMREQUEST, options.method.c_str());
        curl_slist* list = nullptr;
        for (const std::string& header : options.headers) list = curl_slist_append(list, header.c_str());
        set(CURLOPT_HTTPHEADER, list);
        fetched.result = curl_easy_perform(curl);
        curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &fetched.status);
        curl_slist_free_all(list);
        return fetched;
    }

private:
    struct Unsent {
        std::string_view left;
    };

    template <class Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(curl_.get(), option, value);
    }

    static std::size_t store(const char* data, std::size_t size, std::size_t count, std::string* target) {
        target->append(data, size * count);
        return size * count;
    }

    static std::size_t take(char* target, std::size_t size, std::size_t count, Unsent* unsent) {
        const std::size_t taken = std::min(size * count, unsent->left.size());
        std::memcpy(target, unsent->left.data(), taken);
        unsent->left.remove_prefix(taken);
        return taken;
    }

    std::unique_ptr<CURL, void (*)(CURL*)> curl_{curl_easy_init(), curl_easy_cleanup};
};

inline Fetched fetch(const std::string& url) { return Client().fetch(url); }
inline Fetched fetch(const std::string& url, const Client::Options& options) { return Client().fetch(url, options); }

}  // namespace kvtest
