// The log list after any messages, read back in every form.
//
// What must hold: the list never holds more than 999, numbers rise, what is put and kept is found with its text, each
// form holds the text once between a head and a tail, no call writes behind its buffer, and a walk from the oldest
// ends. Lines, each one step: "p" and a text (put), "g" and a number (get), "f" and a number (form of all), "m" and a
// number (mode), "r" and a number (so many puts at once), "c" (close).
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "dlist.h"
#include "errlog.h"
#include "fuzz/input.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::Input;
using kv::fuzz::must;

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::uint32_t kCapacity = 999;
constexpr std::size_t kLongestText = 12000;
constexpr std::size_t kRoomForForm = 256;

/// A scratch folder, removed with the object.
class Scratch {
public:
    Scratch() : path_((std::filesystem::temp_directory_path() / "log-forms-XXXXXX").string()) {
        must(mkdtemp(path_.data()) != nullptr, "there is a scratch folder");
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// The one of the whole run.
const std::string& folder() {
    static const Scratch scratch;
    return scratch.path();
}

std::string_view kept(std::string_view text) {
    if (text.size() == 1) return text;
    for (int i = 0; i < 2 && !text.empty() && (text.back() == '\n' || text.back() == '\r'); ++i) text.remove_suffix(1);
    return text;
}

std::string newestText() {
    const auto* newest = reinterpret_cast<const kvErrLogRecord*>(gErrLogList.tail);
    return newest == nullptr ? std::string() : newest->pText;
}

void put(const std::string& line) {
    // A line feed ends a line of the input, so that "\" stands for one.
    std::string text = line.substr(0, kLongestText);
    for (char& c : text) c = c == '\\' ? '\n' : c;
    const auto code = static_cast<std::uint32_t>(text.size()) << 30 | 5;
    const std::uint32_t outcome = ErrLogPut(code, ExactBuffer(text));
    must(outcome != kNone, "there is memory");
    must(d_ListCount(&gErrLogList) <= kCapacity, "the list holds no more than it may");
    const bool repeated = outcome == 0xFFFFFFFE;
    if (repeated) must(newestText() == text, "a repeat is of the newest message");
    if (!repeated && !text.empty()) must(newestText() == kept(text), "what was put is what is kept");
}

/// One message in one form; the number to ask for next.
std::uint32_t get(std::uint32_t index, std::uint32_t form) {
    std::uint32_t number = 0;
    std::uint32_t code = 0;
    std::uint32_t reserved[4] = {1, 1, 1, 1};
    ExactBuffer buffer(kLongestText + kRoomForForm);
    const std::uint32_t next =
        ErrLogGet(index, form, &number, &reserved[0], &reserved[1], &reserved[2], &reserved[3], &code, buffer);
    if (next == kNone || index == kNone) return kNone;
    must(next == number + 1, "the next index is one more");
    for (const std::uint32_t value : reserved) must(value == 0, "reserved outputs are cleared");
    ExactBuffer plain(kLongestText + kRoomForForm);
    must(ErrLogGet(number, 1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, plain) == next,
         "it is found again");
    const std::string_view text = plain.text();
    must(buffer.text().find(text) != std::string_view::npos, "each form holds the text");
    must(buffer.text().size() <= text.size() + kRoomForForm, "a form takes no more room than is told");
    return next;
}

void getAll(std::uint32_t form) {
    std::uint32_t found = 0;
    std::uint32_t previous = 0;
    for (std::uint32_t index = get(0, form); index != kNone; index = get(index, form)) {
        must(index > previous, "numbers rise");
        previous = index;
        must(++found <= kCapacity, "a walk ends");
    }
}

void setMode(std::int32_t mode) {
    char name[4096];
    std::snprintf(name, sizeof name, "%s/%s", folder().c_str(), mode == 4 ? "dump.txt" : "run.log");
    ErrLogSetMode(mode, name);
    gdwOutputToStdDebug = 0;
}

void step(const std::string& line) {
    const std::string rest = line.empty() ? line : line.substr(1);
    const long number = std::strtol(rest.c_str(), nullptr, 10);
    switch (line.empty() ? '\0' : line[0]) {
        case 'p':
            put(rest);
            break;
        case 'g':
            get(static_cast<std::uint32_t>(number), 0);
            break;
        case 'f':
            getAll(static_cast<std::uint32_t>(number));
            break;
        case 'm':
            setMode(static_cast<std::int32_t>(number));
            break;
        case 'r':
            for (long i = 0; i < number % 1200; ++i) put("m" + std::to_string(i));
            break;
        case 'c':
            ErrLogClose();
            break;
        default:
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    gfReadReg = 1;
    gdwOutputToStdDebug = 0;
    Input input(data, size);
    while (!input.isAtEnd()) step(input.text());
    for (const std::uint32_t form : {0u, 50u, 100u, 200u, 300u, 7u}) get(0, form);
    ErrLogSetMode(1, nullptr);
    ErrLogSetMode(-1, nullptr);
    gfEnableLog = 0;
    return 0;
}
