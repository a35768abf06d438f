// Names with numbers: GetBaseName, BuildFileName, MakeNumberedFileName, and the two searches over a small folder.
//
// What must hold: no byte behind a buffer of 4096 is written, what does not fit is refused whole, the base and the
// digits that are found are pieces of the name, and a number that is written is read again. Lines: path, text in the
// target, extension, number, width, pattern (looked up only if it holds no "/").
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

#include "fuzz/input.h"
#include "kvos/locator.h"
#include "kvos/naming.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::Input;
using kv::fuzz::kExtensionSize;
using kv::fuzz::kPathSize;
using kv::fuzz::must;

std::string nameIn(const std::string& path) {
    ExactBuffer name(kPathSize);
    kvOSSplitPath(path.c_str(), nullptr, nullptr, name, nullptr);
    return std::string(name.text());
}

std::string extensionIn(const std::string& path) {
    ExactBuffer ext(kExtensionSize);
    kvOSSplitPath(path.c_str(), nullptr, nullptr, nullptr, ext);
    return std::string(ext.text());
}

bool allDigits(std::string_view text) { return text.find_first_not_of("0123456789") == std::string_view::npos; }

std::int32_t valueOf(std::string_view digits) {
    std::uint64_t value = 0;
    for (const char digit : digits) value = value * 10 + static_cast<std::uint64_t>(digit - '0');
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

void findNumber(const std::string& path) {
    ExactBuffer source(path);
    ExactBuffer base(kPathSize);
    std::uint32_t digits = 77;
    const std::int32_t number = GetBaseName(source, base, &digits);
    const std::string name = nameIn(path);
    must(name.starts_with(base.text()), "the base begins the name");
    must(GetBaseName(source, nullptr, nullptr) == number, "outputs that are not wanted change nothing");

    if (digits == 0) {
        must(number == 0, "without digits there is no number");
    } else if (name != "*") {
        must(base.text().size() + digits == name.size(), "base and digits are the name");
        const std::string_view run = std::string_view(name).substr(base.text().size());
        must(allDigits(run) && (run.size() <= 10 || base.text().empty()), "at most ten digits are taken off a name");
        must(number == (base.text().size() == 1 ? 0 : valueOf(run)), "the number is what its digits say");
    }
    if (path.size() < kPathSize) {
        ExactBuffer inPlace(kPathSize);
        inPlace.put(path);
        must(GetBaseName(inPlace, inPlace, nullptr) == number && inPlace.text() == base.text(),
             "the base may replace the path itself");
    }
}

/// Compares what a call appended with what it had to, or with the target as it was if that does not fit.
void checkAppended(const char* result, ExactBuffer& target, std::string_view before, const std::string& appended) {
    const std::string whole = std::string(before).append(appended);
    const bool fits = whole.size() < kPathSize;
    must(result == (fits ? target.data() : nullptr), "what fits is appended, and what does not is refused");
    must(target.text() == (fits ? std::string_view(whole) : before), "a refused target stays as it was");
    must(fits || errno == ENAMETOOLONG, "a refusal says why");
}

void build(std::string_view before, std::int32_t number, const std::string& ext) {
    ExactBuffer target(kPathSize);
    target.put(before);
    const char* const result = BuildFileName(target, number, ExactBuffer(ext));
    checkAppended(result, target, before, std::to_string(number) + (ext.starts_with('.') ? "" : ".") + ext);
}

void makeNumbered(const std::string& path, std::string_view before, std::uint64_t width, std::int32_t number) {
    if (path.size() >= kPathSize - 1) return;  // refused, or not, by its directory
    ExactBuffer target(kPathSize);
    target.put(before);
    const char* const result = MakeNumberedFileName(ExactBuffer(path), target, width, number);
    const auto characters = static_cast<std::uint32_t>(width);
    if (characters == 0) {
        must(result == target.data() && target.text() == path, "without a width the source is copied");
        return;
    }
    const std::string plain = std::to_string(number);
    const std::size_t zeros =
        std::min<std::size_t>(characters > plain.size() ? characters - plain.size() : 0, kPathSize);
    checkAppended(result, target, before, std::string(zeros, '0') + plain + extensionIn(path));
}

/// A folder of a short sequence beside other names, made once and removed at the end.
class Folder {
public:
    Folder() : path_((std::filesystem::temp_directory_path() / "kvutil-fuzz-XXXXXX").string()) {
        must(mkdtemp(path_.data()) != nullptr, "there is a scratch folder");
        for (const char* name : {"clip0003.tga", "clip0004.tga", "clip0005.tga", "clip12", "xyzw0009", "7", "a[1].b"}) {
            std::ofstream(path_ + "/" + name).put('k');
        }
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(path_); }

    static constexpr std::uint32_t kEntries = 9;  // with "." and ".."
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

void search(const std::string& name) {
    static const Folder folder;
    const std::string pattern = folder.path() + "/" + name;
    if (name.find('/') != std::string::npos || kvOSUseAws(pattern.c_str()) != 0) return;
    ExactBuffer source(pattern);
    std::uint32_t first = 0;
    std::uint32_t digits = 0;
    FindFilesNumber(source, &first, &digits);
    const std::uint32_t count = FindFilesNumber(source, nullptr, nullptr);
    must((count == 0) == (FindFilesNumber(source, nullptr, &digits) == 0), "a search repeated finds the same");
    must(count <= 2 * Folder::kEntries, "a pattern of two forms finds an entry at most twice");

    ExactBuffer found(kPathSize);
    found.put("before");
    const std::uint32_t matches = FindFistFilesNumber(source, found);
    if (matches == 0) must(found.text() == "before", "without a match the target is untouched");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string path = input.text();
    const std::string target = input.text();
    const std::string before(kv::fuzz::fitted(target));
    const std::string ext = input.text();
    const auto number = static_cast<std::int32_t>(input.number());
    const auto width = static_cast<std::uint64_t>(input.number());
    findNumber(path);
    build(before, number, ext);
    makeNumbered(path, before, width, number);
    search(input.text());
    return 0;
}
