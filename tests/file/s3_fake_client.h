// A store without a network: an S3 client that keeps objects in memory, notes every request in the order in which they
// come, and refuses on command. And a handle on it, as an open would make one.
//
// Asynchronous requests are answered at once, before the call that made them returns, unless a Later holds them.
#pragma once

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "file/handle.h"
#include "file/s3/client.h"
#include "file/s3/object.h"
#include "file/s3/transfer.h"
#include "kvos/memory.h"
#include "kvos/s3.h"
#include "servers/stored_objects.h"

namespace kvtest {

namespace s3 = kv::file::s3;

/// In the order in which they came, each as FakeClient notes it.
using Requests = std::vector<std::string>;

/// What a store says that is too busy.
inline s3::Error down() { return {"SlowDown", "Please reduce your request rate.", 503}; }

/// Holds what is to be done, until somebody does it.
class Later {
public:
    ~Later() { stop(); }

    void push(std::function<void()> task) {
        {
            const std::lock_guard guard(lock_);
            tasks_.push_back(std::move(task));
        }
        changed_.notify_one();
    }
    /// Does the first on the calling thread.
    void doOne() {
        std::function<void()> task;
        {
            const std::lock_guard guard(lock_);
            ASSERT_FALSE(tasks_.empty());
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
    /// Throws the first away.
    void dropOne() {
        std::function<void()> task;
        const std::lock_guard guard(lock_);
        ASSERT_FALSE(tasks_.empty());
        task = std::move(tasks_.front());
        tasks_.pop_front();
    }
    std::size_t held() {
        const std::lock_guard guard(lock_);
        return tasks_.size();
    }
    /// Does all of them, also those to come, on threads of their own.
    void start(int threads) {
        for (int i = 0; i < threads; ++i) {
            threads_.emplace_back([this] { work(); });
        }
    }
    /// Ends the threads once nothing is left to do.
    void stop() {
        {
            const std::lock_guard guard(lock_);
            isEnding_ = true;
        }
        changed_.notify_all();
        for (std::thread& thread : threads_) thread.join();
        threads_.clear();
    }

private:
    void work() {
        std::unique_lock guard(lock_);
        while (true) {
            changed_.wait(guard, [this] { return isEnding_ || !tasks_.empty(); });
            if (tasks_.empty()) return;
            std::function<void()> task = std::move(tasks_.front());
            tasks_.pop_front();
            guard.unlock();
            task();
            task = nullptr;
            guard.lock();
        }
    }

    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;
    std::vector<std::thread> threads_;
    bool isEnding_ = false;
};

class FakeClient : public s3::Client {
public:
    static constexpr int kRefused = EACCES;  // what a refused request leaves in errno

    /// With a later, asynchronous requests wait in it.
    explicit FakeClient(Later* later = nullptr) : later_(later) {}

    /// The next requests of the operation fail so.
    void refuse(const std::string& operation, std::size_t times, const s3::Error& error) {
        const std::lock_guard guard(lock_);
        auto& list = refusals_[operation];
        list.insert(list.end(), times, error);
    }
    /// So many requests of the operation pass, ahead of those that are refused next.
    void pass(const std::string& operation, std::size_t times) { refuse(operation, times, {"", "", -1}); }

    void put(const std::string& key, StoredObject object) {
        const std::lock_guard guard(lock_);
        objects_[key] = std::move(object);
    }
    bool has(const std::string& key) {
        const std::lock_guard guard(lock_);
        return objects_.contains(key);
    }
    std::string content(const std::string& key) {
        const std::lock_guard guard(lock_);
        const auto found = objects_.find(key);
        return found == objects_.end() ? std::string{} : found->second.read(0, found->second.size);
    }
    std::uint64_t sizeOf(const std::string& key) {
        const std::lock_guard guard(lock_);
        const auto found = objects_.find(key);
        return found == objects_.end() ? 0 : found->second.size;
    }
    std::vector<std::string> keys() {
        const std::lock_guard guard(lock_);
        std::vector<std::string> all;
        for (const auto& [key, object] : objects_) all.push_back(key);
        return all;
    }
    void setPageSize(std::size_t entries) { pageSize_ = entries; }
    /// Bodies end after so many bytes, though more are announced.
    void setReceived(std::uint64_t bytes) { mostReceived_ = bytes; }

    /// Called once, when half of the next body stands in the destination. What it returns ends the request.
    void atHalf(std::function<std::optional<s3::Error>()> pause) { pause_ = std::move(pause); }

    /// "GetObject clip bytes=0-99", "PutObject part 10", and so on; all so far, or those of one operation.
    Requests requests(std::string_view operation = {}) {
        const std::lock_guard guard(lock_);
        Requests all;
        for (const std::string& request : requests_) {
            if (request.starts_with(operation)) all.push_back(request);
        }
        return all;
    }
    std::size_t count(const std::string& operation) { return requests(operation + ' ').size(); }
    std::vector<s3::CompletedPart> completedWith() {
        const std::lock_guard guard(lock_);
        return completedWith_;
    }

    s3::Answer<s3::BucketLocation> getBucketLocation(const s3::GetBucketLocationRequest&) override {
        return s3::BucketLocation{};
    }
    s3::Answer<s3::ObjectHead> headObject(const s3::HeadObjectRequest&) override { return s3::ObjectHead{}; }

    s3::Answer<s3::ObjectBody> getObject(const s3::GetObjectRequest& request) override {
        std::unique_lock guard(lock_);
        if (auto error = noted("GetObject", request.bucket, request.key + ' ' + request.range)) return *error;
        const auto found = objects_.find(request.key);
        if (found == objects_.end()) return s3::Error{"NoSuchKey", "no " + request.key, 404};
        unsigned long long from = 0;
        unsigned long long to = found->second.size - 1;
        std::sscanf(request.range.c_str(), "bytes=%llu-%llu", &from, &to);
        if (from >= found->second.size) return s3::Error{"InvalidRange", "beyond the end", 416};
        const std::string body = found->second.read(from, std::min<std::uint64_t>(to + 1, found->second.size) - from);
        const std::size_t fits = std::min({body.size(), request.destination.size(), mostReceived_});
        const auto arrive = [&](std::size_t count) {
            std::memcpy(request.destination.data(), body.data(), count);
            if (request.arrived != nullptr) *request.arrived = count;
        };
        if (const auto pause = std::exchange(pause_, nullptr)) {
            arrive(fits / 2);
            guard.unlock();
            if (auto error = pause()) return *error;
        }
        arrive(fits);
        return s3::ObjectBody{body.size(), fits};
    }

    void getObjectAsync(s3::GetObjectRequest request, s3::GetObjectHandler handler,
                        std::shared_ptr<const s3::AsyncCallerContext> context) override {
        auto answer = [self = shared_from_this(), request = std::move(request), handler, context = std::move(context)] {
            handler(*self, request, self->getObject(request), context);
        };
        later_ == nullptr ? answer() : later_->push(answer);
    }

    s3::Answer<s3::StoredObject> putObject(const s3::PutObjectRequest& request) override {
        const std::lock_guard guard(lock_);
        if (auto error = noted("PutObject", request.bucket, request.key + ' ' + std::to_string(request.body.size()))) {
            return *error;
        }
        const auto* bytes = reinterpret_cast<const char*>(request.body.data());
        const auto content = std::make_shared<const std::string>(bytes, request.body.size());
        objects_[request.key] = {
            .size = content->size(),
            .read = [content](std::uint64_t from, std::uint64_t count) { return content->substr(from, count); },
            .contentType = request.contentType,
            .eTag = "\"tag " + std::to_string(++tags_) + '"'};
        return s3::StoredObject{objects_[request.key].eTag};
    }

    s3::Answer<s3::Listing> listObjects(const s3::ListObjectsRequest& request) override {
        const std::lock_guard guard(lock_);
        if (auto error = noted("ListObjects", request.bucket, request.prefix + ' ' + request.marker)) return *error;
        return page(request.prefix, request.marker);
    }
    s3::Answer<s3::Listing> listObjectsV2(const s3::ListObjectsV2Request& request) override {
        const std::lock_guard guard(lock_);
        if (auto error = noted("ListObjectsV2", request.bucket, request.prefix + ' ' + request.continuationToken)) {
            return *error;
        }
        return page(request.prefix, request.continuationToken);
    }

    s3::Answer<s3::Deleted> deleteObject(const s3::DeleteObjectRequest& request) override {
        const std::lock_guard guard(lock_);
        if (auto error = noted("DeleteObject", request.bucket, request.key)) return *error;
        objects_.erase(request.key);
        return s3::Deleted{};
    }

    s3::Answer<s3::MultipartUpload> createMultipartUpload(const s3::CreateMultipartUploadRequest& request) override {
        const std::lock_guard guard(lock_);
        if (auto error = noted("CreateMultipartUpload", request.bucket, request.key + ' ' + request.contentType)) {
            return *error;
        }
        return s3::MultipartUpload{"upload"};
    }

    s3::Answer<s3::CopiedPart> uploadPartCopy(const s3::UploadPartCopyRequest& request) override {
        const std::lock_guard guard(lock_);
        const std::string number = std::to_string(request.partNumber);
        if (auto error = noted("UploadPartCopy", request.bucket,
                               request.key + ' ' + request.uploadId + ' ' + request.copySource + ' ' + number)) {
            return *error;
        }
        const std::string prefix = '/' + request.bucket + '/';
        const auto found = request.copySource.starts_with(prefix)
                               ? objects_.find(request.copySource.substr(prefix.size()))
                               : objects_.end();
        if (found == objects_.end()) return s3::Error{"NoSuchKey", "no such part", 404};
        copies_[request.partNumber] = found->second;
        return s3::CopiedPart{"\"tag of a copy\""};
    }

    s3::Answer<s3::CompletedUpload> completeMultipartUpload(
        const s3::CompleteMultipartUploadRequest& request) override {
        const std::lock_guard guard(lock_);
        if (auto error = noted("CompleteMultipartUpload", request.bucket, request.key + ' ' + request.uploadId)) {
            return *error;
        }
        completedWith_ = request.parts;
        std::vector<StoredObject> parts;
        for (const s3::CompletedPart& part : request.parts) parts.push_back(copies_.at(part.partNumber));
        objects_[request.key] = joined(parts);
        return s3::CompletedUpload{};
    }

private:
    const s3::Error* noted(const std::string& operation, const std::string& bucket, const std::string& what) {
        EXPECT_EQ(bucket, "bucket") << operation;
        requests_.push_back(operation + ' ' + what);
        auto& refusals = refusals_[operation];
        if (refusals.empty()) return nullptr;
        refused_ = refusals.front();
        refusals.pop_front();
        if (refused_.httpStatus == -1) return nullptr;
        errno = kRefused;
        return &refused_;
    }

    s3::Listing page(const std::string& prefix, const std::string& after) const {
        const ListPage found = list(objects_, {prefix, {}, after, pageSize_});
        s3::Listing listing;
        for (const ListPage::Entry& entry : found.contents) {
            listing.contents.push_back({entry.key, entry.object.eTag, entry.object.size, kStoredTime});
        }
        listing.isTruncated = found.next.has_value();
        listing.nextMarker = listing.nextContinuationToken = found.next.value_or("");
        return listing;
    }

    std::mutex lock_;
    StoredObjects objects_;
    std::map<int, StoredObject> copies_;
    std::map<std::string, std::deque<s3::Error>> refusals_;
    s3::Error refused_;
    Requests requests_;
    std::vector<s3::CompletedPart> completedWith_;
    std::size_t pageSize_ = 1000;
    std::uint64_t mostReceived_ = UINT64_MAX;
    std::function<std::optional<s3::Error>()> pause_;
    int tags_ = 0;
    Later* later_;
};

/// A handle on "/bucket" and a key, as an open of an object of this size leaves it.
class FakeHandle {
public:
    FakeHandle(std::shared_ptr<s3::Client> client, const std::string& key, std::uint64_t size)
        : record_(std::make_unique<kvOSFileHandle>()), object_(std::make_unique<s3::Object>()) {
        object_->client = std::move(client);
        object_->bucket = "/bucket";
        object_->key = key;
        object_->contentType = "video/mxf";
        object_->uploadId = "upload of the open";
        record_->dwType = KVFILE_S3;
        record_->dwCreation = KVFILE_CREATE_ALWAYS;
        record_->dwBlockSize = kv::file::kBlockSize;
        record_->qwSize = size;
        record_->pObject = object_.get();
    }
    ~FakeHandle() { close(); }
    FakeHandle(const FakeHandle&) = delete;
    FakeHandle& operator=(const FakeHandle&) = delete;

    std::int64_t handle() const { return kv::file::handleOf(*record_); }
    kvOSFileHandle& record() { return *record_; }
    s3::Object& object() { return *object_; }
    std::string prefix() const { return object_ == nullptr ? std::string{} : object_->partPrefix.value_or(""); }

    /// What a close does, and then the record is gone.
    void close() {
        if (record_ == nullptr) return;
        s3::finishObject(*record_);
        s3::closeBlocks(*object_);
        KVFree(record_->pBlock);
        object_.reset();
        record_.reset();
    }

    struct Read {
        bool succeeded;
        std::string bytes;
    };
    Read read(std::uint32_t count) {
        Read result{false, std::string(count, '?')};
        std::uint32_t got = 77;
        result.succeeded =
            s3::readObject(*record_, result.bytes.data(), {count, &got, nullptr}) == kv::file::Outcome::done;
        result.bytes.resize(got);
        return result;
    }
    void write(std::string_view bytes) {
        std::uint32_t written = 77;
        const auto count = static_cast<std::uint32_t>(bytes.size());
        ASSERT_EQ(s3::writeObject(*record_, bytes.data(), {count, &written, nullptr}), kv::file::Outcome::counted);
        ASSERT_EQ(written, count);
    }
    void writeAt(std::uint64_t position, std::string_view bytes) {
        record_->qwPos = position;
        write(bytes);
    }

private:
    std::unique_ptr<kvOSFileHandle> record_;
    std::unique_ptr<s3::Object> object_;
};

}  // namespace kvtest
