// The settings that the script prints also lie in the store's folder, where all processes that share it read them.
#include "servers/object_store.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <strings.h>
#include <unistd.h>
#include <utility>

#include "servers/child_process.h"
#include "servers/fetch.h"
#include "servers/server_folder.h"
#include "servers/sockets.h"

namespace kvtest {
namespace {

using Settings = std::map<std::string, std::string>;

constexpr const char* kScript = KVUTIL_SCRIPTS_FOLDER "/object-store";
constexpr const char* kSharedStores = KVUTIL_STORES_FOLDER;

std::string nameOf(ObjectStore::Engine engine) { return engine == ObjectStore::Engine::ceph ? "ceph" : "swift"; }

/// Lines of the form NAME='VALUE'; nothing if there is no such file.
Settings settingsIn(const std::string& path) {
    Settings settings;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const std::size_t equals = line.find('=');
        if (equals + 3 <= line.size())
            settings[line.substr(0, equals)] = line.substr(equals + 2, line.size() - equals - 3);
    }
    return settings;
}

bool isServed(const Settings& settings) {
    const auto host = settings.find("S3_HOST");
    if (host == settings.end()) return false;
    const int port = std::stoi(host->second.substr(host->second.find(':') + 1));
    return connectTo(static_cast<std::uint16_t>(port)).isOpen();
}

/// Unique among all tests that use a store at the same time, and after one another.
std::string newBucketName() {
    static std::atomic<int> count;
    return "test-" + std::to_string(getpid()) + "-" +
           std::to_string(std::chrono::system_clock::now().time_since_epoch().count()) + "-" + std::to_string(++count);
}

std::string plainText(std::string text) {
    const std::pair<std::string_view, char> entities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};
    for (const auto& [entity, character] : entities) {
        for (std::size_t at = 0; (at = text.find(entity, at)) != std::string::npos; ++at) {
            text.replace(at, entity.size(), 1, character);
        }
    }
    return text;
}

std::vector<std::string> elementsOf(const std::string& xml, const std::string& name) {
    std::vector<std::string> found;
    const std::string begin = "<" + name + ">";
    const std::string end = "</" + name + ">";
    for (std::size_t at = 0; (at = xml.find(begin, at)) != std::string::npos;) {
        at += begin.size();
        found.push_back(plainText(xml.substr(at, xml.find(end, at) - at)));
    }
    return found;
}

}  // namespace

std::string encodedForUrl(std::string_view text, bool keepsSlashes) {
    std::string encoded;
    for (const char character : text) {
        const bool isPlain = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
                             (character >= 'a' && character <= 'z') ||
                             std::string_view("-_.~").find(character) != std::string_view::npos ||
                             (character == '/' && keepsSlashes);
        if (isPlain) {
            encoded += character;
        } else {
            constexpr std::string_view kDigits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(character);
            encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
        }
    }
    return encoded;
}

class ObjectStore::Impl {
public:
    explicit Impl(Settings shared) : settings_(std::move(shared)) { request("PUT", "/" + bucket_); }

    Impl(Engine engine, const Options& options) : folder_(std::make_unique<ServerFolder>("object-store")) {
        std::vector<std::string> command{
            kScript,        "run",   "--engine",         nameOf(engine), "--region",
            options.region, "--dir", *folder_ / "store", "--size",       std::to_string(options.sizeMiB)};
        if (options.tls) command.push_back("--tls");
        process_ = std::make_unique<ChildProcess>(std::move(command), *folder_ / "messages");
        process_->readLine("the store does not start");  // it says all at once, when it serves
        settings_ = settingsIn(*folder_ / "store/settings");
        request("PUT", "/" + bucket_);
    }

    std::string setting(const std::string& name) const {
        const auto found = settings_.find(name);
        if (found == settings_.end()) throw std::runtime_error("the store was started without " + name);
        return found->second;
    }

    std::string locator(const std::string& host, const std::string& user, std::string_view key) const {
        return "s3://" + setting(user + "ACCESS_KEY") + ":" + setting(user + "SECRET_KEY") + "@" + setting(host) + "/" +
               bucket_ + "/" + std::string(key);
    }

    /// An answer of 404 is left to the caller, all others that are no success are errors.
    Fetched request(const std::string& method, const std::string& target, const std::string* content = nullptr) const {
        static const std::string nothing;
        const bool isHead = method == "HEAD";
        const Fetched got = kvtest::fetch("http://" + setting("S3_HOST") + target,
                                          {.method = isHead ? "" : method,
                                           .headers = {"x-amz-content-sha256: UNSIGNED-PAYLOAD"},
                                           .upload = method == "PUT" && content == nullptr ? &nothing : content,
                                           .user = setting("S3_ACCESS_KEY") + ":" + setting("S3_SECRET_KEY"),
                                           .signature = "aws:amz:" + setting("S3_REGION") + ":s3",
                                           .headOnly = isHead});
        if (got.result != CURLE_OK || (got.status / 100 != 2 && got.status != 404)) {
            throw std::runtime_error(method + " " + target + ": " + curl_easy_strerror(got.result) + ", " +
                                     std::to_string(got.status) + " " + got.body);
        }
        return got;
    }

    std::string targetOf(std::string_view key) const { return "/" + bucket_ + "/" + encodedForUrl(key, true); }

    std::unique_ptr<ServerFolder> folder_;  // of a store that is not shared
    std::unique_ptr<ChildProcess> process_;
    Settings settings_;
    std::string bucket_ = newBucketName();
};

ObjectStore::ObjectStore(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
ObjectStore::ObjectStore(Engine engine, const Options& options) : impl_(std::make_unique<Impl>(engine, options)) {}
ObjectStore::~ObjectStore() = default;
ObjectStore::ObjectStore(ObjectStore&&) noexcept = default;
ObjectStore& ObjectStore::operator=(ObjectStore&&) noexcept = default;

ObjectStore ObjectStore::shared(Engine engine) {
    Settings settings = settingsIn(std::string(kSharedStores) + "/" + nameOf(engine) + "/settings");
    if (isServed(settings)) return ObjectStore(std::make_unique<Impl>(std::move(settings)));
    return ObjectStore(engine, {.tls = true});
}

std::string ObjectStore::host() const { return impl_->setting("S3_HOST"); }
std::string ObjectStore::secureHost() const { return impl_->setting("S3_SECURE_HOST"); }
std::string ObjectStore::virtualHost() const { return impl_->setting("S3_VIRTUAL_HOST"); }
std::string ObjectStore::certificate() const { return impl_->setting("S3_CERTIFICATE"); }
std::string ObjectStore::region() const { return impl_->setting("S3_REGION"); }
std::string ObjectStore::accessKey() const { return impl_->setting("S3_ACCESS_KEY"); }
std::string ObjectStore::secretKey() const { return impl_->setting("S3_SECRET_KEY"); }
std::string ObjectStore::strangerAccessKey() const { return impl_->setting("S3_STRANGER_ACCESS_KEY"); }
std::string ObjectStore::strangerSecretKey() const { return impl_->setting("S3_STRANGER_SECRET_KEY"); }
const std::string& ObjectStore::bucket() const { return impl_->bucket_; }

std::string ObjectStore::locator(std::string_view key) const { return impl_->locator("S3_HOST", "S3_", key); }
std::string ObjectStore::secureLocator(std::string_view key) const {
    return impl_->locator("S3_SECURE_HOST", "S3_", key);
}
std::string ObjectStore::strangerLocator(std::string_view key) const {
    return impl_->locator("S3_HOST", "S3_STRANGER_", key);
}

void ObjectStore::makeBucket(const std::string& name) { impl_->request("PUT", "/" + name); }

void ObjectStore::put(std::string_view key, const std::string& content) {
    impl_->request("PUT", impl_->targetOf(key), &content);
}

void ObjectStore::remove(std::string_view key) { impl_->request("DELETE", impl_->targetOf(key)); }

std::optional<std::string> ObjectStore::content(std::string_view key) const {
    Fetched got = impl_->request("GET", impl_->targetOf(key));
    if (got.status == 404) return std::nullopt;
    return std::move(got.body);
}

std::string ObjectStore::header(std::string_view key, const std::string& name) const {
    const Fetched got = impl_->request("HEAD", impl_->targetOf(key));
    if (got.status == 404) return {};
    std::istringstream headers(got.headers);
    for (std::string line; std::getline(headers, line);) {
        const std::size_t colon = line.find(": ");
        if (colon == name.size() && strncasecmp(line.c_str(), name.c_str(), colon) == 0) {
            return line.substr(colon + 2, line.find('\r') - colon - 2);
        }
    }
    return {};
}

std::vector<std::string> ObjectStore::keys() const {
    return elementsOf(impl_->request("GET", "/" + impl_->bucket_ + "?list-type=2").body, "Key");
}

}  // namespace kvtest
