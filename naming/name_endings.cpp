// Names tested against lists of endings: CheckFileExtension, CheckFileExtensions, CheckFileName.
#include <cstdint>
#include <string_view>

#include "border/text.h"
#include "kvos/media_names.h"
#include "naming/letters.h"
#include "naming/tokens.h"

namespace kv::naming {
namespace {

/// The first token ends at `first`, all later ones at a dot.
bool endsInAnyOf(std::string_view name, std::string_view list, char first) noexcept {
    for (auto token = nextToken(list, first); token; token = nextToken(list, '.')) {
        if (endsWithAnyCase(name, *token)) return true;
    }
    return false;
}

}  // namespace
}  // namespace kv::naming

namespace naming = kv::naming;
using kv::border::orEmpty;

std::uint32_t CheckFileExtension(const char* pName, const char* pExt) {
    return pName != nullptr && pExt != nullptr && naming::endsWithAnyCase(pName, pExt) ? 1 : 0;
}

// A name that is null ends in nothing, as an empty one does: no token is empty.
std::uint32_t CheckFileExtensions(const char* pName, const char* pList) {
    return naming::endsInAnyOf(orEmpty(pName), orEmpty(pList), '.') ? 1 : 0;
}

std::uint32_t CheckFileName(const char* pName, const char* pList) {
    return naming::endsInAnyOf(orEmpty(pName), orEmpty(pList), ';') ? 1 : 0;
}
