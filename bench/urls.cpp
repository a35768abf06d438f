// A file on a web server of this machine, read from its start to its end in calls of one size.
//
// The peer is the transfer library by itself: the same ranges, one after the other, on one connection. Ranges of a MiB
// are what small calls share as well, since those go through a cache of that size.
#include <cstdio>
#include <cstring>
#include <curl/curl.h>
#include <memory>
#include <string>
#include <vector>

#include "bench/topics.h"
#include "errlog.h"
#include "kvos/file.h"
#include "servers/nginx.h"

namespace kv::bench {
namespace {

constexpr std::uint64_t kMiB = 1048576;

struct CloseTransfer {
    void operator()(CURL* transfer) const { curl_easy_cleanup(transfer); }
};

/// Where a range's bytes go.
struct Window {
    std::vector<char> bytes = std::vector<char>(kMiB);
    std::size_t used = 0;
};

std::size_t store(char* data, std::size_t size, std::size_t count, void* target) {
    auto& window = *static_cast<Window*>(target);
    const std::size_t amount = size * count;
    if (amount > window.bytes.size() - window.used) return 0;
    std::memcpy(window.bytes.data() + window.used, data, amount);
    window.used += amount;
    return amount;
}

void readByLibrary(const std::string& url, std::uint64_t size, std::uint32_t call) {
    const std::int64_t file = kvOSCreateFile(url.c_str(), KVFILE_READ, 3, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    require(file != KVFILE_INVALID, "the URL can't be opened");
    std::vector<char> buffer(call);
    for (std::uint64_t at = 0; at < size; at += call) {
        std::uint32_t got = 0;
        require(kvOSReadFile(file, buffer.data(), call, &got, nullptr) == 1 && got == call, "a short read");
    }
    kvOSCloseFile(file);
}

/// The header request that an open makes, then the ranges, each handed on in pieces of the call's size.
void readByTransfers(const std::string& url, std::uint64_t size, std::uint32_t call) {
    const std::unique_ptr<CURL, CloseTransfer> transfer(curl_easy_init());
    Window window;
    std::vector<char> buffer(call);
    curl_easy_setopt(transfer.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(transfer.get(), CURLOPT_NOBODY, 1L);
    require(curl_easy_perform(transfer.get()) == CURLE_OK, "the header request failed");
    curl_easy_setopt(transfer.get(), CURLOPT_NOBODY, 0L);
    curl_easy_setopt(transfer.get(), CURLOPT_WRITEFUNCTION, &store);
    curl_easy_setopt(transfer.get(), CURLOPT_WRITEDATA, &window);
    for (std::uint64_t at = 0; at < size; at += kMiB) {
        const std::string range = std::to_string(at) + "-" + std::to_string(at + kMiB - 1);
        curl_easy_setopt(transfer.get(), CURLOPT_RANGE, range.c_str());
        window.used = 0;
        require(curl_easy_perform(transfer.get()) == CURLE_OK && window.used == kMiB, "a short range");
        if (call == kMiB) continue;
        for (std::uint64_t from = 0; from < kMiB; from += call) {
            std::memcpy(buffer.data(), window.bytes.data() + from, call);
            benchmark::DoNotOptimize(buffer.data());
        }
    }
}

}  // namespace

void measureUrls(const Scale& scale) {
    kvtest::Nginx nginx;
    const std::uint64_t size = scale.quick ? 64 * kMiB : 1024 * kMiB;
    {
        const std::string piece(kMiB, 'x');
        std::FILE* const file = std::fopen((nginx.root() + "/clip").c_str(), "wb");
        require(file != nullptr, "the document can't be made");
        for (std::uint64_t at = 0; at < size; at += kMiB) std::fwrite(piece.data(), 1, piece.size(), file);
        require(std::fclose(file) == 0, "the document can't be written");
    }
    const std::string url = nginx.url("/clip");
    gdwOutputToStdDebug = 0;
    {
        Table table("urls: " + sizeText(size) + " over HTTP on this machine", scale);
        for (const std::uint32_t call : {4096u, 65536u, 1048576u}) {
            table.compare(
                {"kvOSReadFile, " + sizeText(call) + " a call", "libcurl, the same ranges", bytesPerPass(size),
                 atLeast(0.95), Clock::wall},
                [&] { readByLibrary(url, size, call); }, [&] { readByTransfers(url, size, call); });
        }
    }
    const std::size_t before = nginx.requests().size();
    const std::size_t connections = nginx.connections();
    readByLibrary(url, size, 4096);
    std::printf("\nOne pass in calls of 4 KiB: %zu requests, of which one for the headers, on %zu connection.\n",
                nginx.requests().size() - before, nginx.connections() - connections);
    gdwOutputToStdDebug = 1;
}

}  // namespace kv::bench
