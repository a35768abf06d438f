// The enumeration of objects under a prefix: pages of a listing, read one entry at a time.
//
// Meant: a page is fetched as soon as no object is left to read, so that of a page with common prefixes alone, which is
// not the last one, all but the first are lost. A page with objects is read whole, its common prefixes first.
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "border/text.h"
#include "file/objects.h"
#include "file/s3/object.h"
#include "file/s3/session.h"
#include "file/s3/use_count.h"
#include "file/search.h"
#include "kvos/attributes.h"
#include "kvos/locator.h"

namespace kv::file::s3 {
namespace {

/// What of the key is the folder, with its slash. Meant: a slash is not sought ahead of the third character, so that a
/// folder of one letter is none, and the listing is that of the whole bucket.
std::string prefixOf(const std::string& key) {
    constexpr std::size_t kThird = 2;
    const std::size_t slash = key.rfind('/');
    return slash == std::string::npos || slash < kThird ? std::string() : key.substr(0, slash + 1);
}

class PrefixSearch : public ObjectSearch {
public:
    static std::unique_ptr<PrefixSearch> begin(const char* pattern) {
        auto search = std::make_unique<PrefixSearch>();
        std::string locator = pattern;
        kvOSFixHTTPSeparators(locator.data());
        auto session = beginSession(locator, Settings::asStored, UnknownRegion::isTheFirst);
        if (!session) return nullptr;
        search->client_ = std::move(session->client);
        search->bucket_ = bareBucket(session->address.bucket);
        search->prefix_ = prefixOf(session->address.key);
        return search;
    }

    bool next(kvOSFindData& entry) override {
        for (;;) {
            if (objects_.empty() && !isLastPage_ && !fetchPage()) return false;
            if (prefixes_.empty() && objects_.empty()) return end();
            if (!prefixes_.empty() ? takePrefix(entry) : takeObject(entry)) return true;
        }
    }

private:
    /// What a page holds of one sort, and how much of it was read.
    template <class Element>
    class Unread {
    public:
        void fill(std::vector<Element> elements) {
            elements_ = std::move(elements);
            next_ = 0;
        }
        bool empty() const { return next_ == elements_.size(); }
        const Element& take() { return elements_[next_++]; }

    private:
        std::vector<Element> elements_;
        std::size_t next_ = 0;
    };

    bool fetchPage() {
        auto page = client_->listObjectsV2(
            {.bucket = bucket_, .prefix = prefix_, .delimiter = "/", .continuationToken = continuationToken_});
        if (!page.isSuccess()) {
            isLastPage_ = true;
            return false;
        }
        const Listing& listed = page.result();
        prefixes_.fill(listed.commonPrefixes);
        objects_.fill(listed.contents);
        isLastPage_ = !listed.isTruncated;
        // A store that says there is more, where it was already, would be asked for the same page for ever.
        if (!isLastPage_ && listed.nextContinuationToken == continuationToken_) {
            isLastPage_ = true;
            errno = EBADMSG;
            return false;
        }
        continuationToken_ = isLastPage_ ? std::string() : listed.nextContinuationToken;
        return true;
    }

    bool end() {
        errno = leftOut_ ? ENAMETOOLONG : kEndOfSearch;
        return false;
    }

    std::string_view withoutPrefix(std::string_view key) const {
        return key.substr(std::min(prefix_.size(), key.size()));
    }

    /// False for a name that does not fit, which is passed over.
    bool fill(kvOSFindData& entry, std::string_view name, std::uint64_t size) {
        entry.dwAttributes = name.ends_with('/') ? KVATTR_DIRECTORY : KVATTR_NORMAL;
        entry.ftCreation = entry.ftAccess = entry.ftWrite = {};
        entry.dwSizeHigh = static_cast<std::uint32_t>(size >> 32);
        entry.dwSizeLow = static_cast<std::uint32_t>(size);
        std::ranges::fill(entry.reserved, std::uint8_t{0});
        if (border::copyText(entry.szName, sizeof entry.szName, name)) return true;
        leftOut_ = true;
        return false;
    }

    bool takePrefix(kvOSFindData& entry) {
        const std::string_view name = withoutPrefix(prefixes_.take());
        if (!name.empty()) return fill(entry, name, 0);
        fill(entry, ".", 0);
        entry.dwAttributes = KVATTR_DIRECTORY;
        return true;
    }

    /// False for the object that stands for the folder itself, too.
    bool takeObject(kvOSFindData& entry) {
        const ListedObject& object = objects_.take();
        const std::string_view name = withoutPrefix(object.key);
        return !name.empty() && fill(entry, name, object.size);
    }

    const Use use_;
    std::shared_ptr<Client> client_;
    std::string bucket_;
    std::string prefix_;
    std::string continuationToken_;
    Unread<std::string> prefixes_;
    Unread<ListedObject> objects_;
    bool isLastPage_ = false;
    bool leftOut_ = false;
};

}  // namespace
}  // namespace kv::file::s3

namespace kv::file {

std::unique_ptr<ObjectSearch> beginObjectSearch(const char* pattern) { return s3::PrefixSearch::begin(pattern); }

}  // namespace kv::file
