// What an object store with one bucket answers to a request that it understood. Knows nothing of threads nor of faults.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "servers/scripted_store.h"

namespace kvtest {

inline constexpr std::string_view kBucket = "bucket";

class StoreService {
public:
    explicit StoreService(std::string region) : region_(std::move(region)) {}

    Answer answerTo(const StoreRequest& request);

    StoredObjects objects;
    std::size_t pageSize = 1000;
    std::size_t openUploads() const { return uploads_.size(); }

private:
    struct Upload {
        std::string key;
        std::string contentType;
        std::map<int, StoredObject> parts;
    };

    Answer location() const;
    Answer listing(const StoreRequest& request) const;
    Answer objectAnswer(const StoreRequest& request);
    Answer uploadAnswer(const StoreRequest& request);
    Answer addPart(const StoreRequest& request, Upload& upload);
    Answer complete(const StoreRequest& request, const std::string& id);

    std::string region_;
    std::map<std::string, Upload> uploads_;
    int lastUpload_ = 0;
};

}  // namespace kvtest
