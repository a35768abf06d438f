#include "kv/content.h"

#include "kv/source.h"

namespace kv::tool {

std::optional<std::string> contentOf(const std::string& locator) {
    auto source = Source::open(locator);
    if (!source) return std::nullopt;
    std::string content;
    for (;;) {
        const auto block = source->next();
        if (!block) return std::nullopt;
        if (block->empty()) return content;
        content.append(block->data(), block->size());
    }
}

}  // namespace kv::tool
