// The store has a certificate that it signed itself, so the library is told not to verify it. Plain HTTP would do for
// all but the deletion, which always talks TLS.
#include "demo/object_store.h"

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "demo/frames.h"
#include "demo/timed_file.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/find.h"
#include "kvos/s3.h"
#include "servers/object_store.h"

namespace demo {
namespace {

using kvtest::ObjectStore;

constexpr std::uint64_t kPartSize = 60u << 20;
constexpr const char* kKey = "clips/clip.yuv";

struct Service {
    ObjectStore store;
    std::string name;
};

/// Ceph is the faster one, where its packages are installed.
Service startStore() {
    try {
        return {ObjectStore::shared(ObjectStore::Engine::ceph), "Ceph"};
    } catch (const std::runtime_error&) {
        return {ObjectStore::shared(ObjectStore::Engine::swift), "OpenStack Swift"};
    }
}

std::string countOf(std::uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// The store tells in an object's tag of how many parts it was joined.
bool isJoinedOf(std::uint64_t parts, const std::string& tag) {
    return tag.ends_with("-" + std::to_string(parts) + "\"");
}

void write(const Clip& clip, const ObjectStore& store, Report& report) {
    TimedFile file(store.secureLocator(kKey), TimedFile::Use::write);
    bool whole = writeFrames(clip, file);
    const Seconds time = file.takeTime();
    const std::uint64_t parts = (clip.bytes() + kPartSize - 1) / kPartSize;
    whole = whole && isJoinedOf(parts, store.header(kKey, "ETag"));
    report.line("write clip.yuv", clip.bytes(), time, whole ? "joined of " + countOf(parts, "part") : "bytes were lost",
                whole);
}

/// Names and sizes in the folder of the clip, as the library lists them.
std::vector<std::string> entries(const ObjectStore& store) {
    std::vector<std::string> found;
    kvOSFindData data{};
    const std::int64_t listing = kvOSFindFirstFile(store.secureLocator("clips/*").c_str(), &data);
    if (listing == -1) return found;
    do {
        const std::uint64_t size = std::uint64_t{data.dwSizeHigh} << 32 | data.dwSizeLow;
        found.push_back(std::string(data.szName) + ", " + std::to_string(size) + " bytes");
    } while (kvOSFindNextFile(listing, &data) != 0);
    kvOSFindClose(listing);
    return found;
}

void list(const Clip& clip, const ObjectStore& store, Report& report) {
    const std::vector<std::string> found = entries(store);
    const bool right = found == std::vector<std::string>{"clip.yuv, " + std::to_string(clip.bytes()) + " bytes"};
    report.line("list its folder", found.size() == 1 ? found[0] : std::to_string(found.size()) + " entries", right);
}

void readInOrder(const Clip& clip, const ObjectStore& store, Report& report) {
    TimedFile file(store.secureLocator(kKey), TimedFile::Use::read);
    Frame frame(clip.size.bytes());
    std::uint32_t right = 0;
    for (std::uint32_t number = 0; number < clip.frames; ++number) {
        if (file.read(frame) && isFrame(number, frame)) ++right;
    }
    const bool sized = file.size() == clip.bytes();
    report.line("read in order", clip.bytes(), file.takeTime(), countText(right, clip.frames),
                right == clip.frames && sized);
}

void readAtRandom(const Clip& clip, const ObjectStore& store, Report& report) {
    TimedFile file(store.secureLocator(kKey), TimedFile::Use::read);
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<std::uint32_t> anyFrame(0, clip.frames - 1);
    Frame frame(clip.size.bytes());
    std::uint32_t right = 0;
    for (std::uint32_t seeks = 0; seeks < clip.frames; ++seeks) {
        const std::uint32_t number = anyFrame(random);
        if (file.seek(number * std::uint64_t{frame.size()}) && file.read(frame) && isFrame(number, frame)) ++right;
    }
    report.line("seek to random frames and read", clip.bytes(), file.takeTime(), countText(right, clip.frames),
                right == clip.frames);
}

void remove(const ObjectStore& store, Report& report) {
    const bool gone = kvOSDeleteFile(store.secureLocator(kKey).c_str()) == 0 && store.keys().empty();
    report.line("delete it", gone ? "the bucket is empty" : "something is left in the bucket", gone);
}

}  // namespace

void showObjectStore(const Clip& clip, Report& report) {
    const Service service = startStore();
    report.heading("An object store, " + service.name);
    sdwS3VerifySSL = 0;
    ErrLogSetMode(KVERRLOG_MODE_NO_STANDARD_ERROR, nullptr);  // a close tells there what it does with the parts
    write(clip, service.store, report);
    list(clip, service.store, report);
    readInOrder(clip, service.store, report);
    readAtRandom(clip, service.store, report);
    remove(service.store, report);
    ErrLogSetMode(KVERRLOG_MODE_STANDARD_ERROR, nullptr);
}

}  // namespace demo
