// Objects of a real store on this machine: read in order, at random and with skips, and written in parts.
//
// The store is Ceph's gateway, a chain of three servers on the same processors: every side of a row waits for it. Peers
// that are programs pay for their start, which is little beside a GiB; they have rows where they are installed.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "bench/delay.h"
#include "bench/peers/peers.h"
#include "bench/peers/ranges.h"
#include "bench/resident.h"
#include "bench/scratch.h"
#include "bench/topics.h"
#include "errlog.h"
#include "kvcfg.h"
#include "kvos/file.h"
#include "kvos/s3.h"
#include "servers/object_store.h"
#include "servers/scripted_store.h"

namespace kv::bench {
namespace {

constexpr std::uint64_t kMiB = 1048576;
constexpr std::uint32_t k64KiB = 65536;

/// Opened without regard to where it lies, closed at the end.
class Clip {
public:
    Clip(const std::string& locator, std::uint32_t access, std::uint32_t creation)
        : handle_(kvOSCreateFile(locator.c_str(), access, 3, nullptr, creation, 0, 0)) {
        require(handle_ != KVFILE_INVALID, "the object can't be opened");
    }
    Clip(const Clip&) = delete;
    Clip& operator=(const Clip&) = delete;
    ~Clip() { kvOSCloseFile(handle_); }

    void seek(std::uint64_t position) { kvOSSeek(handle_, static_cast<std::int64_t>(position)); }
    void read(std::vector<char>& buffer) {
        std::uint32_t got = 0;
        const auto wanted = static_cast<std::uint32_t>(buffer.size());
        require(kvOSReadFile(handle_, buffer.data(), wanted, &got, nullptr) == 1 && got == wanted, "a short read");
    }
    void write(const std::vector<char>& buffer) {
        std::uint32_t put = 0;
        const auto count = static_cast<std::uint32_t>(buffer.size());
        require(kvOSWriteFile(handle_, buffer.data(), count, &put, nullptr) != 0 && put == count, "a short write");
    }

private:
    std::int64_t handle_;
};

// Reads at places have a peer in GDAL alone, so that a build without it uses none of them.

/// Where reads of 64 KiB begin: the same places for ours and for the peer.
using Places = std::vector<std::uint64_t>;

[[maybe_unused]] Places inOrder(std::uint64_t size, std::uint64_t step) {
    Places places;
    for (std::uint64_t at = 0; at + k64KiB <= size; at += step) places.push_back(at);
    return places;
}

[[maybe_unused]] Places anywhere(std::uint64_t size, int count) {
    std::mt19937_64 random(7);
    Places places;
    for (int i = 0; i < count; ++i) places.push_back(random() % (size / k64KiB) * k64KiB);
    return places;
}

/// An object of the store, and all that the peers need to reach it.
struct Source {
    std::string locator;
    std::string host;
    std::string bucket;
    std::string key;
    std::string accessKey;
    std::string secretKey;
    std::uint64_t size;
};

void readInOrder(const Source& source, std::uint32_t call) {
    Clip clip(source.locator, KVFILE_READ, KVFILE_OPEN_EXISTING);
    std::vector<char> buffer(call);
    for (std::uint64_t left = source.size; left > 0; left -= buffer.size()) {
        buffer.resize(std::min<std::uint64_t>(left, call));
        clip.read(buffer);
    }
}

/// The requests of readInOrder by the transfer library alone, one after the other, each answer handed on in pieces of
/// the call's size. Calls of which two fit in a block share it; each larger one has a range of its own.
void readByRanges(const Source& source, std::uint32_t call) {
    const std::uint64_t block = gdwS3DefaultCacheSize;
    const bool isShared = 2 * std::uint64_t{call} <= block;
    const std::uint64_t step = isShared ? block : call;
    const std::uint64_t wanted = isShared ? block : std::max(call + std::uint64_t{k64KiB}, block);
    RangeReader reader("http://" + source.host + "/" + source.bucket + "/" + source.key);
    reader.signAs(source.accessKey, source.secretKey);
    reader.readHead();
    std::vector<char> buffer(call);
    for (std::uint64_t at = 0; at < source.size; at += step) {
        const auto range = reader.read(at, std::min(wanted, source.size - at));
        const std::uint64_t end = std::min<std::uint64_t>(step, range.size());
        for (std::uint64_t from = 0; from < end; from += call) {
            std::memcpy(buffer.data(), range.data() + from, std::min<std::uint64_t>(call, end - from));
            benchmark::DoNotOptimize(buffer.data());
        }
    }
}

[[maybe_unused]] void readPlaces(const Source& source, const Places& places) {
    Clip clip(source.locator, KVFILE_READ, KVFILE_OPEN_EXISTING);
    std::vector<char> buffer(k64KiB);
    for (const std::uint64_t place : places) {
        clip.seek(place);
        clip.read(buffer);
    }
}

/// Runs a command of the shell, whose environment tells the programs where the store is and which keys to use.
void runProgram(const std::string& command) { require(std::system(command.c_str()) == 0, "failed: " + command); }

bool isInstalled(const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;
}

void tellPrograms(const Source& source) {
    const std::map<std::string, std::string> settings{
        {"AWS_ACCESS_KEY_ID", source.accessKey},  {"AWS_SECRET_ACCESS_KEY", source.secretKey},
        {"AWS_DEFAULT_REGION", "us-east-1"},      {"AWS_REGION", "us-east-1"},
        {"AWS_S3_ENDPOINT", source.host},         {"AWS_HTTPS", "NO"},
        {"AWS_VIRTUAL_HOSTING", "FALSE"},         {"RCLONE_CONFIG", "/dev/null"},
        {"RCLONE_CONFIG_STORE_TYPE", "s3"},       {"RCLONE_CONFIG_STORE_PROVIDER", "Ceph"},
        {"RCLONE_CONFIG_STORE_ENV_AUTH", "true"}, {"RCLONE_CONFIG_STORE_ENDPOINT", "http://" + source.host},
    };
    for (const auto& [name, value] : settings) setenv(name.c_str(), value.c_str(), 1);
    unsetenv("AWS_CA_BUNDLE");  // rclone takes no other authorities, and none are needed here
}

/// The program that moves one object, its start included.
struct Program {
    std::string name;
    std::string shown;
    std::string command;
};

std::string curlCommand(const Source& source) {
    return "curl -sf --aws-sigv4 aws:amz:us-east-1:s3 --user \"$AWS_ACCESS_KEY_ID:$AWS_SECRET_ACCESS_KEY\" "
           "-H 'x-amz-content-sha256: UNSIGNED-PAYLOAD' -o /dev/null http://" +
           source.host + "/" + source.bucket + "/" + source.key;
}

std::string s3cmdOptions(const Source& source) {
    return " -q --no-ssl --config /dev/null --region us-east-1 --host " + source.host + " --host-bucket " +
           source.host + " ";
}

std::vector<Program> readers(const Source& source) {
    const std::string object = source.bucket + "/" + source.key;
    return {{"aws", "aws s3 cp",
             "aws --endpoint-url http://" + source.host + " s3 cp --quiet s3://" + object + " - >/dev/null"},
            {"s3cmd", "s3cmd get", "s3cmd" + s3cmdOptions(source) + "get --force s3://" + object + " - >/dev/null"},
            {"rclone", "rclone cat", "rclone cat store:" + object + " >/dev/null"}};
}

std::vector<Program> writers(const Source& source, const std::string& file) {
    const std::string object = source.bucket + "/copied";
    return {
        {"aws", "aws s3 cp", "aws --endpoint-url http://" + source.host + " s3 cp --quiet " + file + " s3://" + object},
        {"rclone", "rclone copyto", "rclone copyto --ignore-times " + file + " store:" + object}};
}

void compareReads(Table& table, const Source& source, std::uint32_t call) {
    const Row row{"kvOSReadFile, " + sizeText(call) + " a call", "curl, one GET", bytesPerPass(source.size),
                  atLeast(0.8), Clock::wall};
    const auto ours = [&] { readInOrder(source, call); };
    table.compare(row, ours, [command = curlCommand(source)] { runProgram(command); });
    table.compare({row.what, "libcurl, the same ranges", row.work, atLeast(0.95), Clock::wall}, ours,
                  [&] { readByRanges(source, call); });
#ifdef KVUTIL_BENCH_GDAL
    table.compare({row.what, "GDAL, /vsis3/", row.work, atLeast(1.0), Clock::wall}, ours,
                  [&] { readByGdal("/vsis3/" + source.bucket + "/" + source.key, source.size, call); });
#endif
}

void comparePrograms(Table& table, const Source& source) {
    for (const Program& program : readers(source)) {
        if (!isInstalled(program.name)) continue;
        table.compare(
            {"kvOSReadFile, 1 MiB a call", program.shown, bytesPerPass(source.size), {}, Clock::wall},
            [&] { readInOrder(source, kMiB); }, [&] { runProgram(program.command); });
    }
}

#ifdef KVUTIL_BENCH_GDAL
void comparePlaces(Table& table, const Source& source, const std::string& what, const Places& places) {
    table.compare(
        {what, "GDAL, /vsis3/", callsPerPass(places.size()), {}, Clock::wall}, [&] { readPlaces(source, places); },
        [&] { readPlacesByGdal("/vsis3/" + source.bucket + "/" + source.key, places, k64KiB); });
}
#endif

void compareWaysToRead(Table& table, const Source& source) {
    for (const std::uint32_t call : {k64KiB, std::uint32_t{kMiB}, std::uint32_t{6 * kMiB}}) {
        compareReads(table, source, call);
    }
}

void compareSkips(Table& table, const Source& source, int randomReads) {
#ifdef KVUTIL_BENCH_GDAL
    comparePlaces(table, source, "64 KiB anywhere", anywhere(source.size, randomReads));
    comparePlaces(table, source, "64 KiB of each 256 KiB, in order", inOrder(source.size, 4 * k64KiB));
    comparePlaces(table, source, "64 KiB of each 16 MiB, in order", inOrder(source.size, 16 * kMiB));
#else
    (void)table, (void)source, (void)randomReads;
#endif
}

void writeObject(const std::string& locator, std::uint64_t size) {
    Clip clip(locator, KVFILE_WRITE, KVFILE_CREATE_ALWAYS);
    const std::vector<char> piece(kMiB, 'w');
    for (std::uint64_t at = 0; at < size; at += kMiB) clip.write(piece);
}

void compareWrites(const Scale& scale, const Source& source, const kvtest::ObjectStore& store, std::uint64_t size) {
    Table table("objects: " + sizeText(size) + " written and closed", scale);
    const ScratchFolder folder;
    const std::string file = folder.makeFile("clip", size);
    const std::string locator = store.locator("written");
    for (const Program& program : writers(source, file)) {
        if (!isInstalled(program.name)) continue;
        table.compare(
            {"kvOSWriteFile, kvOSCloseFile", program.shown, bytesPerPass(size), {}, Clock::wall},
            [&] { writeObject(locator, size); }, [&] { runProgram(program.command); });
    }
}

/// What a written and a read object cost in requests, counted by a store that does nothing else.
void printRequests() {
    constexpr std::uint64_t kSize = 130 * kMiB;
    kvtest::ScriptedStore store;
    const auto count = [&store](const char* operation) { return store.count(operation); };
    writeObject(store.locator("clip"), kSize);
    std::printf(
        "%s written, three parts: %zu CreateMultipartUpload, %zu PutObject, %zu ListObjectsV2, %zu UploadPartCopy, "
        "%zu CompleteMultipartUpload, %zu ListObjects, %zu DeleteObject, on %d connections.\n",
        sizeText(kSize).c_str(), count("CreateMultipartUpload"), count("PutObject"), count("ListObjectsV2"),
        count("UploadPartCopy"), count("CompleteMultipartUpload"), count("ListObjects"), count("DeleteObject"),
        store.connections());
    const int before = store.connections();
    Source source{};
    source.locator = store.locator("clip");
    source.size = kSize;
    readInOrder(source, k64KiB);
    std::printf("The same read in calls of 64 KiB: %zu HeadObject, %zu GetObject, on %d connections.\n",
                count("HeadObject"), count("GetObject"), store.connections() - before);
}

void printResidentSize(const Source& source, std::uint64_t bytes) {
    Clip clip(source.locator, KVFILE_READ, KVFILE_OPEN_EXISTING);
    std::vector<char> buffer(kMiB);
    const double before = residentMiB();
    double most = 0;
    for (std::uint64_t at = 0; at < bytes; at += buffer.size()) {
        if (at % source.size == 0) clip.seek(0);
        clip.read(buffer);
        most = std::max(most, residentMiB());
    }
    std::printf(
        "%s read through one handle in calls of 1 MiB: %.1f MiB resident before, at most %.1f MiB more then; nine "
        "blocks are 45 MiB.\n\n",
        sizeText(bytes).c_str(), before, most - before);
}

}  // namespace

void measureObjects(const Scale& scale) {
    const ScratchFolder home;  // the settings are this run's own
    setenv("HOME", home.path().c_str(), 1);
    std::uint32_t plainHttp = 1;
    kvCFGValueDword(KVSTDCONFIG, "MediaKiln\\Default", "S3DisableSSL", &plainHttp, 1);
    const std::uint64_t size = scale.quick ? 128 * kMiB : 1024 * kMiB;
    const std::uint64_t delayedSize = scale.quick ? 64 * kMiB : 256 * kMiB;
    kvtest::ObjectStore store(kvtest::ObjectStore::Engine::ceph, {.sizeMiB = 40960});
    gdwOutputToStdDebug = 0;
    const Source source{store.locator("clip"), store.host(), store.bucket(), "clip", store.accessKey(),
                        store.secretKey(),     size};
    writeObject(source.locator, size);
    writeObject(store.locator("far"), delayedSize);
    tellPrograms(source);
    {
        Table table("objects: " + sizeText(size) + " of a store on this machine", scale);
        compareWaysToRead(table, source);
        comparePrograms(table, source);
        compareSkips(table, source, scale.quick ? 20 : 200);
    }
    {
        const DelayingProxy proxy(store.host(), std::chrono::milliseconds(20));
        Source far{store.locator("far"), proxy.host(),      store.bucket(), "far",
                   store.accessKey(),    store.secretKey(), delayedSize};
        far.locator.replace(far.locator.find(store.host()), store.host().size(), proxy.host());
        tellPrograms(far);
        {
            Table table("objects: " + sizeText(delayedSize) + ", each answer 20 ms later", scale);
            compareWaysToRead(table, far);
            compareSkips(table, far, scale.quick ? 10 : 50);
        }
        const std::uint32_t before = gdwS3DefaultCacheSize;
        gdwS3DefaultCacheSize = 32 * kMiB;
        {
            Table table("objects: the same with gdwS3DefaultCacheSize at 32 MiB", scale);
            compareWaysToRead(table, far);
        }
        gdwS3DefaultCacheSize = before;
        tellPrograms(source);
    }
    compareWrites(scale, source, store, size);
    printRequests();
    printResidentSize(source, scale.quick ? 1024 * kMiB : 10240 * kMiB);
    gdwOutputToStdDebug = 1;
}

}  // namespace kv::bench
