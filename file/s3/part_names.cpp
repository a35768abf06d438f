// The keys of part objects. A handle makes its prefix once, with the first name that is asked for.
#include <cerrno>
#include <string>

#include "border/text.h"
#include "file/s3/object.h"
#include "file/s3/parts.h"
#include "kvos/guid.h"
#include "kvos/naming.h"

namespace kv::file::s3 {
namespace {

constexpr std::size_t kExtensionSize = 256;

std::string newIdentifier() {
    uuid4122_t identifier;
    uuid4122_create(&identifier);
    char text[40];
    strSetGUID(text, &identifier, 0, KVGUID_NO_BRACES);
    return text;
}

}  // namespace

std::string PartNames::file(std::uint64_t number) const { return name + '_' + std::to_string(number) + extension; }

std::optional<PartNames> partNames(Object& object) {
    if (object.key.size() >= border::kPathSize) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    border::PathBuffer directory;
    border::PathBuffer name;
    char extension[kExtensionSize];
    kvOSSplitPath(object.key.c_str(), nullptr, directory, name, extension);
    if (!object.partPrefix) {
        std::string prefix = directory;
        prefix.append(name).append("_").append(newIdentifier()).append("/");
        object.partPrefix = std::move(prefix);
    }
    return PartNames{*object.partPrefix, name, extension};
}

std::optional<std::string> partKey(Object& object, std::uint64_t part) {
    const auto names = partNames(object);
    if (!names) return std::nullopt;
    std::string key = names->prefix + names->file(part + 1);
    if (key.size() < border::kPathSize) return key;
    errno = ENAMETOOLONG;
    return std::nullopt;
}

}  // namespace kv::file::s3
