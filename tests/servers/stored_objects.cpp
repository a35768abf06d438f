#include "servers/stored_objects.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace kvtest {
namespace {

/// Like a store's in its form; its value only tells contents apart.
std::string eTagOf(std::string_view text) {
    std::array<char, 40> tag;
    const std::size_t hash = std::hash<std::string_view>()(text);
    std::snprintf(tag.data(), tag.size(), "\"%016zx%016zx\"", hash, text.size());
    return tag.data();
}

}  // namespace

StoredObject makeObject(std::string content, std::string contentType) {
    const auto shared = std::make_shared<const std::string>(std::move(content));
    return {.size = shared->size(),
            .read = [shared](std::uint64_t from, std::uint64_t count) { return shared->substr(from, count); },
            .contentType = std::move(contentType),
            .eTag = eTagOf(*shared)};
}

// Tests make gigabytes of it, and are compiled without optimisation: hence the loop without a call.
std::string patternFrom(std::uint64_t offset, std::uint64_t count) {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15u;
    std::string text(count, '\0');
    std::uint64_t product = offset * kFactor;
    char* const end = text.data() + count;
    for (char* at = text.data(); at != end; ++at, product += kFactor) *at = static_cast<char>(product >> 56);
    return text;
}

char patternAt(std::uint64_t offset) { return patternFrom(offset, 1).front(); }

StoredObject makePattern(std::uint64_t size) {
    return {
        .size = size, .read = patternFrom, .contentType = "binary/octet-stream", .eTag = eTagOf(std::to_string(size))};
}

StoredObject joined(const std::vector<StoredObject>& parts) {
    StoredObject whole;
    std::string tags;
    for (const StoredObject& part : parts) {
        whole.size += part.size;
        tags += part.eTag;
    }
    whole.eTag = eTagOf(tags);
    whole.eTag.insert(whole.eTag.size() - 1, "-" + std::to_string(parts.size()));
    whole.read = [parts](std::uint64_t from, std::uint64_t count) {
        std::string text;
        for (const StoredObject& part : parts) {
            if (from < part.size && count > 0) {
                const std::uint64_t taken = std::min(count, part.size - from);
                text += part.read(from, taken);
                count -= taken;
                from += taken;
            }
            from -= std::min(from, part.size);
        }
        return text;
    };
    return whole;
}

ListPage list(const StoredObjects& objects, const ListQuery& query) {
    ListPage page;
    std::string last;
    for (auto at = objects.lower_bound(query.prefix); at != objects.end() && at->first.starts_with(query.prefix);
         ++at) {
        const std::string& key = at->first;
        const std::size_t end =
            query.delimiter.empty() ? std::string::npos : key.find(query.delimiter, query.prefix.size());
        const bool isGroup = end != std::string::npos;
        const std::string name = isGroup ? key.substr(0, end + query.delimiter.size()) : key;
        // Behind a group means behind all that it stands for.
        if (name <= query.after || (isGroup && !page.commonPrefixes.empty() && page.commonPrefixes.back() == name))
            continue;
        if (page.contents.size() + page.commonPrefixes.size() == query.pageSize) {
            page.next = last;
            break;
        }
        last = name;
        if (isGroup) {
            page.commonPrefixes.push_back(name);
        } else {
            page.contents.push_back({key, at->second});
        }
    }
    return page;
}

}  // namespace kvtest
