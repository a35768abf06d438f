// A real object store: Ceph's object gateway, or OpenStack Swift with its S3 layer, as scripts/object-store starts
// them.
//
// A start takes seconds, so the tests that ctest runs share one store of each engine (see CMakeLists.txt); a test that
// is run by hand starts its own. Each object of this class has a bucket of its own either way, empty at first.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvtest {

/// A name as it stands in a URL: all but letters, digits, '-', '_', '.', '~' and, where it parts a path, '/' is
/// encoded.
std::string encodedForUrl(std::string_view text, bool keepsSlashes);

class ObjectStore {
public:
    enum class Engine { ceph, swift };
    struct Options {
        std::string region = "us-east-1";
        bool tls = false;
        unsigned sizeMiB = 8192;  // capacity of ceph; taken only as objects come
    };

    /// Starts one for this object alone, which ends with it, and also when the process dies of whatever. Throws
    /// std::runtime_error with the reason if it can't.
    ObjectStore(Engine engine, const Options& options);
    /// The one that the tests share, with TLS, in us-east-1.
    static ObjectStore shared(Engine engine);

    ~ObjectStore();
    ObjectStore(ObjectStore&&) noexcept;
    ObjectStore& operator=(ObjectStore&&) noexcept;

    std::string host() const;         // "127.0.0.1:PORT"
    std::string secureHost() const;   // the same for https
    std::string virtualHost() const;  // "s3.localhost:PORT": buckets are served at BUCKET.s3.localhost as well
    std::string certificate() const;  // the file with that of https, signed by itself
    std::string region() const;
    std::string accessKey() const;
    std::string secretKey() const;
    /// Another user's keys, who has no right to the first one's buckets.
    std::string strangerAccessKey() const;
    std::string strangerSecretKey() const;

    /// This object's own bucket.
    const std::string& bucket() const;
    /// "s3://ACCESS:SECRET@HOST/BUCKET/KEY", the key as it is given.
    std::string locator(std::string_view key) const;
    std::string secureLocator(std::string_view key) const;
    std::string strangerLocator(std::string_view key) const;

    // What a test does on the store itself, past the library. All throw std::runtime_error if the store refuses.
    void makeBucket(const std::string& name);
    void put(std::string_view key, const std::string& content);
    void remove(std::string_view key);
    /// Nothing if there is no such object.
    std::optional<std::string> content(std::string_view key) const;
    /// One header of the object; empty if there is no such object or header.
    std::string header(std::string_view key, const std::string& name) const;
    /// All keys of the bucket, in order; at most the first thousand.
    std::vector<std::string> keys() const;

private:
    class Impl;
    explicit ObjectStore(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace kvtest
