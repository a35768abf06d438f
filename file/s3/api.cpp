// Start and stop of what the client stands on.
//
// The count of starts belongs to the callers, and stops come late or never; so only the first start and the stop that
// follows it do anything here.
#include <curl/curl.h>
#include <mutex>
#include <utility>

#include "file/s3/client.h"

namespace kv::file::s3 {
namespace {

struct Library {
    std::mutex lock;
    bool isHeld = false;
};

/// Never destroyed: files may be closed while the process ends.
Library& library() {
    static Library& state = *new Library;
    return state;
}

}  // namespace

void initApi() {
    const std::lock_guard locked(library().lock);
    if (!library().isHeld) library().isHeld = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
}

void shutdownApi() {
    const std::lock_guard locked(library().lock);
    // Transfers hold the library by a start of their own (file/curl.h): those in flight keep it.
    if (std::exchange(library().isHeld, false)) curl_global_cleanup();
}

}  // namespace kv::file::s3
