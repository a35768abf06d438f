// All that the connections' threads share is under one mutex; an answer is made under it, and a fault changes it
// outside.
#include "servers/scripted_store.h"

#include <algorithm>
#include <condition_variable>
#include <list>
#include <mutex>
#include <utility>

#include "servers/store_request.h"
#include "servers/store_service.h"

namespace kvtest {
namespace {

constexpr std::chrono::seconds kLongestWait{30};

}  // namespace

class ScriptedStore::Impl {
public:
    explicit Impl(std::string region)
        : service_(std::move(region)), server_([this](const Request& request) { return handle(request); }) {}
    ~Impl() { release(); }  // ahead of the server's end, which waits for all that are held
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    template <class Action>
    auto locked(Action&& action) const {
        const std::lock_guard lock(mutex_);
        return action();
    }

    void hold(Which which) {
        const std::lock_guard lock(mutex_);
        holds_.push_back(std::move(which));
    }

    bool waitForHeld(std::size_t count) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kLongestWait, [&] { return held_ >= count; });
    }

    void release() {
        {
            const std::lock_guard lock(mutex_);
            holds_.clear();
            ++releases_;
        }
        changed_.notify_all();
    }

    void addFault(Which which, std::size_t times, Fault fault) {
        const std::lock_guard lock(mutex_);
        faults_.push_back({std::move(which), times, std::move(fault)});
    }

    mutable std::mutex mutex_;
    StoreService service_;
    std::vector<StoreRequest> requests_;

private:
    struct Scripted {
        Which which;
        std::size_t times;
        Fault fault;
    };

    Answer handle(const Request& http) {
        const StoreRequest request = understood(http);
        std::unique_lock lock(mutex_);
        requests_.push_back(request);
        Fault fault = faultFor(request);
        waitWhileHeld(lock, request);
        Answer answer = service_.answerTo(request);
        lock.unlock();
        if (fault) fault(answer);
        return answer;
    }

    Fault faultFor(const StoreRequest& request) {
        for (auto at = faults_.begin(); at != faults_.end(); ++at) {
            if (!at->which(request)) continue;
            Fault fault = at->fault;
            if (at->times != kAlways && --at->times == 0) faults_.erase(at);
            return fault;
        }
        return {};
    }

    void waitWhileHeld(std::unique_lock<std::mutex>& lock, const StoreRequest& request) {
        if (std::ranges::none_of(holds_, [&](const Which& which) { return which(request); })) return;
        ++held_;
        changed_.notify_all();
        changed_.wait(lock, [this, before = releases_] { return releases_ != before; });
        --held_;
    }

    std::list<Scripted> faults_;
    std::vector<Which> holds_;
    std::size_t held_ = 0;
    std::size_t releases_ = 0;
    mutable std::condition_variable changed_;

public:
    ScriptedServer server_;  // the last: its threads use all of the above
};

namespace {

ScriptedStore::Which isOperation(const std::string& operation) {
    return [operation](const StoreRequest& request) { return request.operation == operation; };
}

}  // namespace

ScriptedStore::ScriptedStore(const std::string& region) : impl_(std::make_unique<Impl>(region)) {}
ScriptedStore::~ScriptedStore() = default;

std::string ScriptedStore::host() const { return impl_->server_.host(); }
std::string ScriptedStore::virtualHost() const { return std::string(kDomain) + host().substr(host().find(':')); }
std::string ScriptedStore::bucket() const { return std::string(kBucket); }
std::string ScriptedStore::locator(std::string_view key) const {
    return "s3://ACCESS:SECRET@" + host() + "/" + bucket() + "/" + std::string(key);
}

void ScriptedStore::put(const std::string& key, const std::string& content) {
    impl_->locked([&] { impl_->service_.objects[key] = makeObject(content); });
}
void ScriptedStore::putPattern(const std::string& key, std::uint64_t size) {
    impl_->locked([&] { impl_->service_.objects[key] = makePattern(size); });
}
void ScriptedStore::remove(const std::string& key) {
    impl_->locked([&] { impl_->service_.objects.erase(key); });
}

std::optional<std::string> ScriptedStore::content(const std::string& key) const {
    return impl_->locked([&]() -> std::optional<std::string> {
        const auto found = impl_->service_.objects.find(key);
        if (found == impl_->service_.objects.end()) return std::nullopt;
        return found->second.read(0, found->second.size);
    });
}

std::string ScriptedStore::contentType(const std::string& key) const {
    return impl_->locked([&] {
        const auto found = impl_->service_.objects.find(key);
        return found == impl_->service_.objects.end() ? std::string() : found->second.contentType;
    });
}

std::vector<std::string> ScriptedStore::keys() const {
    return impl_->locked([&] {
        std::vector<std::string> keys;
        for (const auto& [key, object] : impl_->service_.objects) keys.push_back(key);
        return keys;
    });
}

std::size_t ScriptedStore::openUploads() const {
    return impl_->locked([&] { return impl_->service_.openUploads(); });
}

void ScriptedStore::setPageSize(std::size_t entries) {
    impl_->locked([&] { impl_->service_.pageSize = entries; });
}

void ScriptedStore::next(const std::string& operation, std::size_t times, Fault fault) {
    next(isOperation(operation), times, std::move(fault));
}
void ScriptedStore::next(Which which, std::size_t times, Fault fault) {
    if (times > 0) impl_->addFault(std::move(which), times, std::move(fault));
}

void ScriptedStore::hold(const std::string& operation) { hold(isOperation(operation)); }
void ScriptedStore::hold(Which which) { impl_->hold(std::move(which)); }
bool ScriptedStore::waitForHeld(std::size_t count) const { return impl_->waitForHeld(count); }
void ScriptedStore::release() { impl_->release(); }

std::vector<StoreRequest> ScriptedStore::requests() const {
    return impl_->locked([&] { return impl_->requests_; });
}

std::vector<StoreRequest> ScriptedStore::requests(const std::string& operation) const {
    std::vector<StoreRequest> chosen = requests();
    std::erase_if(chosen, [&](const StoreRequest& request) { return request.operation != operation; });
    return chosen;
}

std::size_t ScriptedStore::count(const std::string& operation) const { return requests(operation).size(); }
int ScriptedStore::connections() const { return impl_->server_.connections(); }

}  // namespace kvtest
