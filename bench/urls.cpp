// A file on a web server of this machine, read from its start to its end in calls of one size.
//
// The peer is the transfer library by itself: the same ranges, one after the other, on one connection. Ranges of a MiB
// are what small calls share as well, since those go through a cache of that size.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include "bench/delay.h"
#include "bench/peers/peers.h"
#include "bench/peers/ranges.h"
#include "bench/resident.h"
#include "bench/topics.h"
#include "errlog.h"
#include "kvos/file.h"
#include "servers/nginx.h"

namespace kv::bench {
namespace {

constexpr std::uint64_t kMiB = 1048576;

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
    RangeReader reader(url);
    std::vector<char> buffer(call);
    reader.readHead();
    for (std::uint64_t at = 0; at < size; at += kMiB) {
        const auto range = reader.read(at, kMiB);
        if (call == kMiB) continue;
        for (std::uint64_t from = 0; from < kMiB; from += call) {
            std::memcpy(buffer.data(), range.data() + from, call);
            benchmark::DoNotOptimize(buffer.data());
        }
    }
}

/// A document of zeros that takes no room on the disk.
void makeHollowDocument(const std::string& path, std::uint64_t size) {
    require(std::fclose(std::fopen(path.c_str(), "wb")) == 0 && truncate(path.c_str(), static_cast<off_t>(size)) == 0,
            "the document can't be made");
}

void compareReads(Table& table, const std::string& url, std::uint64_t size, std::uint32_t call) {
    const Row row{"kvOSReadFile, " + sizeText(call) + " a call", "libcurl, the same ranges", bytesPerPass(size),
                  atLeast(0.95), Clock::wall};
    const auto ours = [&] { readByLibrary(url, size, call); };
    table.compare(row, ours, [&] { readByTransfers(url, size, call); });
#ifdef KVUTIL_BENCH_GDAL
    table.compare({row.what, "GDAL, /vsicurl/", row.work, atLeast(1.0), Clock::wall}, ours,
                  [&] { readByGdal("/vsicurl/" + url, size, call); });
#endif
#ifdef KVUTIL_BENCH_AVIO
    table.compare({row.what, "libavformat, one stream", row.work, {}, Clock::wall}, ours,
                  [&] { readByAvio(url, size, call); });
#endif
}

void printRequests(const kvtest::Nginx& nginx, const std::string& url, std::uint64_t size) {
    const std::size_t before = nginx.requests().size();
    const std::size_t connections = nginx.connections();
    readByLibrary(url, size, 4096);
    std::printf("One pass in calls of 4 KiB: %zu requests, of which one for the headers, on %zu connection.\n",
                nginx.requests().size() - before, nginx.connections() - connections);
}

void printResidentSize(const std::string& url, std::uint64_t size) {
    constexpr std::uint32_t kCall = 65536;
    const std::int64_t file = kvOSCreateFile(url.c_str(), KVFILE_READ, 3, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    require(file != KVFILE_INVALID, "the URL can't be opened");
    std::vector<char> buffer(kCall);
    double first = 0;
    double most = 0;
    for (std::uint64_t at = 0; at < size; at += kCall) {
        std::uint32_t got = 0;
        require(kvOSReadFile(file, buffer.data(), kCall, &got, nullptr) == 1 && got == kCall, "a short read");
        if (at % (64 * kMiB) != 0) continue;
        if (at == 0) first = residentMiB();
        most = std::max(most, residentMiB());
    }
    kvOSCloseFile(file);
    std::printf("A read of %s: %.1f MiB resident after the first call, at most %.1f MiB later.\n",
                sizeText(size).c_str(), first, most);
}

}  // namespace

void measureUrls(const Scale& scale) {
    kvtest::Nginx nginx;
    const std::uint64_t size = scale.quick ? 64 * kMiB : 1024 * kMiB;
    const std::uint64_t delayedSize = scale.quick ? 8 * kMiB : 64 * kMiB;
    const std::uint64_t longSize = scale.quick ? 1024 * kMiB : 10240 * kMiB;
    nginx.makeDocument("clip", std::string(size, 'x'));
    nginx.makeDocument("far", std::string(delayedSize, 'x'));
    makeHollowDocument(nginx.root() + "/long", longSize);
    gdwOutputToStdDebug = 0;
    constexpr std::uint32_t kCalls[] = {4096, 65536, 1048576};
    {
        Table table("urls: " + sizeText(size) + " over HTTP on this machine", scale);
        for (const std::uint32_t call : kCalls) compareReads(table, nginx.url("/clip"), size, call);
    }
    printRequests(nginx, nginx.url("/clip"), size);
    printResidentSize(nginx.url("/long"), longSize);
    std::printf("\n");
    {
        const DelayingProxy proxy(nginx.host(), std::chrono::milliseconds(20));
        Table table("urls: " + sizeText(delayedSize) + ", each answer 20 ms later", scale);
        for (const std::uint32_t call : kCalls) {
            compareReads(table, "http://" + proxy.host() + "/far", delayedSize, call);
        }
    }
    gdwOutputToStdDebug = 1;
}

}  // namespace kv::bench
