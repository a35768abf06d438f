// A server's file in ranges, by the transfer library alone: what the same requests cost without the library.
#pragma once

#include <cstdint>
#include <curl/curl.h>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace kv::bench {

/// One connection for all ranges. Whatever fails ends the program.
class RangeReader {
public:
    explicit RangeReader(const std::string& url);

    /// Signs the requests from now on, as an object store wants it.
    void signAs(const std::string& accessKey, const std::string& secretKey);
    /// The request for the headers alone that an open makes.
    void readHead();
    /// The bytes of a range, until the next one.
    std::span<const char> read(std::uint64_t from, std::uint64_t count);

private:
    struct Window {
        std::vector<char> bytes;
        std::size_t used = 0;
    };
    struct CloseTransfer {
        void operator()(CURL* transfer) const { curl_easy_cleanup(transfer); }
    };
    struct FreeHeaders {
        void operator()(curl_slist* headers) const { curl_slist_free_all(headers); }
    };

    static std::size_t store(char* data, std::size_t size, std::size_t count, void* target);

    Window window_;
    std::unique_ptr<curl_slist, FreeHeaders> headers_;
    std::unique_ptr<CURL, CloseTransfer> transfer_;
};

}  // namespace kv::bench
