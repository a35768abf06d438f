// kvOSSplitPath, kvOSMakePath and the small calls that take a path apart or change it in place.
//
// What must hold: no byte behind a buffer of 4096 (an extension: 256, ExtractFileExtension: 5) is written, nor one
// behind the terminator of a text read. The parts of a path are pieces of it that join to the path again, and what does
// not fit is refused whole. Lines: path, drive, directory, name, extension, further path.
#include <cerrno>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "kvos/locator.h"
#include "kvos/naming.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::Input;
using kv::fuzz::kExtensionSize;
using kv::fuzz::kPathSize;
using kv::fuzz::must;

struct Parts {
    ExactBuffer drive{kPathSize};
    ExactBuffer dir{kPathSize};
    ExactBuffer name{kPathSize};
    ExactBuffer ext{kExtensionSize};

    std::string joined() const {
        return std::string(drive.text()).append(dir.text()).append(name.text()).append(ext.text());
    }
};

/// The part of a path that kvOSSplitPath takes apart.
std::string_view withoutQuery(const std::string& path) {
    return kvOSIsNetworkFile(path.c_str()) != 0 ? std::string_view(path).substr(0, path.find('?')) : path;
}

bool hasSlashBehindFirst(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash != std::string_view::npos && slash > 0;
}

void checkParts(const std::string& path, const Parts& parts) {
    const std::string_view whole = withoutQuery(path);
    const std::string_view name = parts.name.text();
    const std::string_view ext = parts.ext.text();
    const std::string file = std::string(name).append(ext);
    must(whole.ends_with(file), "name and extension end the path");
    must(file.find('/') == std::string::npos, "name and extension hold no slash");
    must(ext.empty() || (ext[0] == '.' && ext.find('.', 1) == std::string_view::npos),
         "an extension has one dot, first");
    must(parts.dir.text().empty() || parts.dir.text().ends_with('/'), "a directory ends in a slash");
    must(parts.drive.text().empty() || (parts.drive.text().size() == 2 && whole.starts_with(parts.drive.text())),
         "a drive is the first two characters");
    if (hasSlashBehindFirst(whole)) must(parts.joined() == whole, "the parts in a row are the path");
}

void splitAndJoin(const std::string& path) {
    ExactBuffer source(path);
    Parts parts;
    errno = 0;
    kvOSSplitPath(source, parts.drive, parts.dir, parts.name, parts.ext);
    if (errno == ENAMETOOLONG) {
        must(path.size() >= kPathSize - 1, "only a path near the limit is refused");
        must(parts.joined().empty(), "a refused path has no parts");
        return;
    }
    must(errno == 0, "last error is left alone");
    checkParts(path, parts);

    ExactBuffer joined(kPathSize);
    kvOSMakePath(joined, parts.drive, parts.dir, parts.name, parts.ext);
    // Of two dots that meet, one is dropped.
    if (!hasSlashBehindFirst(withoutQuery(path)) || parts.name.text().ends_with('.')) return;
    must(joined.text() == withoutQuery(path), "a path taken apart and joined is the path");
}

/// Outputs that are not wanted change nothing in those that are.
void splitSingly(const std::string& path) {
    ExactBuffer source(path);
    Parts together;
    kvOSSplitPath(source, nullptr, together.dir, together.name, together.ext);
    Parts single;
    kvOSSplitPath(source, nullptr, single.dir, nullptr, nullptr);
    kvOSSplitPath(source, nullptr, nullptr, single.name, nullptr);
    kvOSSplitPath(source, nullptr, nullptr, nullptr, single.ext);
    single.drive.put("");
    together.drive.put("");
    must(single.joined() == together.joined(), "each output is the same with the others and alone");
}

std::string joinedByHand(std::string_view drive, std::string_view dir, std::string_view name, std::string_view ext) {
    std::string path = std::string(drive).append(dir);
    if (!path.empty() && !path.ends_with('/')) path += '/';
    path += name;
    if (ext.empty()) return path;
    if (path.ends_with('.') && ext.starts_with('.'))
        ext.remove_prefix(1);
    else if (!path.ends_with('.') && !ext.starts_with('.'))
        path += '.';
    return path.append(ext);
}

void join(const std::string& drive, const std::string& dir, const std::string& name, const std::string& ext) {
    ExactBuffer target(kPathSize);
    errno = 0;
    kvOSMakePath(target, ExactBuffer(drive), ExactBuffer(dir), ExactBuffer(name), ExactBuffer(ext));
    const std::string expected = joinedByHand(drive, dir, name, ext);
    if (expected.size() < kPathSize) {
        must(target.text() == expected && errno == 0, "parts that fit are joined");
    } else {
        must(target.text().empty() && errno == ENAMETOOLONG, "parts that do not fit are refused whole");
    }
}

void checkPointers(const std::string& path) {
    ExactBuffer source(path);
    const char* const end = source.data() + path.size();

    const char* const name = SplitPathName(source);
    must(name >= source.data() && name <= end, "the name lies in the path");
    must(name == source.data() || name[-1] == '/' || name[-1] == ':', "a name follows a separator");
    must(std::string_view(name).find_first_of("/:") == std::string_view::npos, "a name holds no separator");

    const char* const ext = SplitPathExt(source);
    must(ext >= name && ext <= end, "the extension lies in the name");
    must(ext == end || *ext == '.', "an extension begins with a dot");
    must(ext == end || std::string_view(ext + 1).find('.') == std::string_view::npos, "the last dot counts");
}

void changeInPlace(const std::string& path, const std::string& name, const std::string& ext) {
    ExactBuffer fixed(path);
    must(FixPathName(fixed) == fixed.data(), "the path itself is returned");
    must(fixed.text().size() == path.size() && fixed.text().find('\\') == std::string_view::npos,
         "every backslash is turned, and nothing else moves");

    const std::string_view first = kv::fuzz::fitted(path);
    ExactBuffer merged(kPathSize);
    merged.put(first);
    const bool needsSlash = !first.empty() && !first.ends_with('/') && !first.ends_with(':');
    const std::string whole = std::string(first).append(needsSlash ? "/" : "").append(name);
    const bool fits = whole.size() < kPathSize;
    must(MergePath(merged, ExactBuffer(name)) == (fits ? merged.data() : nullptr),
         "a merge that does not fit is refused");
    must(merged.text() == (fits ? whole : first), "a refused merge leaves the path");

    ExactBuffer changed(kPathSize);
    changed.put(first);
    const std::int32_t result = ChangeFileExtension(changed, ExactBuffer(ext));
    must(result == 0 || (result == -1 && changed.text() == first), "a refused extension leaves the path");
}

void takeOut(const std::string& path) {
    ExactBuffer source(path);
    ExactBuffer root(kPathSize);
    root.put("before");
    if (SplitPathRoot(root, source) == nullptr) {
        must(root.text() == "before", "without a root the target is untouched");
    } else {
        must(root.text().ends_with('/') && root.text().size() <= path.size() + 2, "a root ends in a slash");
    }

    ExactBuffer ext(5);
    const bool hasDot = path.find('.') != std::string::npos;
    must(ExtractFileExtension(source, ext) == (hasDot ? 0 : -1), "an extension is found where there is a dot");
    if (hasDot) must(path.find(ext.text()) != std::string::npos, "an extension is a piece of the name");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string path = input.text();
    const std::string drive = input.text();
    const std::string dir = input.text();
    const std::string name = input.text();
    const std::string ext = input.text();
    splitAndJoin(path);
    splitSingly(path);
    join(drive, dir, name, ext);
    checkPointers(path);
    changeInPlace(path, name, ext);
    takeOut(path);
    return 0;
}
