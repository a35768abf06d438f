// Scratch files: "mem://" and any text, then any calls on the handle, beside a model of what the file must hold.
//
// What must hold: no call crashes or touches memory that is not the file's; bytes written are read again, size and
// position follow what the calls said they did. Bytes in a gap that a write skipped are not looked at. Lines: the text
// behind "mem://", access (1 read, 2 write, else both), creation, then one call a line: a letter and its argument.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "errlog.h"
#include "fuzz/input.h"
#include "kvos/file.h"

// A write far beyond any memory is refused by the heap, as it would be without the sanitizer.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::Input;
using kv::fuzz::must;

/// Positions between these can be had only at the cost of gigabytes, so that nothing is written there.
constexpr std::uint64_t kCheap = 8u << 20;
constexpr std::uint64_t kOutOfReach = std::uint64_t{1} << 42;

class File {
public:
    File(const std::string& path, std::uint32_t access, std::uint32_t creation)
        : handle_(kvOSCreateFile(ExactBuffer(path), access, 1, nullptr, creation, 0, 0)) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (isOpen()) must(kvOSCloseFile(handle_) == 1, "a scratch file closes");
    }

    bool isOpen() const { return handle_ != KVFILE_INVALID; }
    std::int64_t handle() const { return handle_; }
    std::uint64_t position() const { return static_cast<std::uint64_t>(kvOSTell(handle_)); }
    bool canBeWrittenHere() const { return position() < kCheap || position() > kOutOfReach; }

    void read(std::uint32_t count) {
        const std::uint64_t at = position();
        const std::uint64_t expected = at > bytes_.size() ? 0 : std::min<std::uint64_t>(count, bytes_.size() - at);
        ExactBuffer buffer(count);
        std::uint32_t got = 77;
        const std::uint32_t result = kvOSReadFile(handle_, buffer, count, &got, nullptr);
        must(got == expected && (result == 1 || got == 0), "a read gives what is there");
        for (std::uint32_t i = 0; i < got; ++i) {
            const int known = bytes_[at + i];
            must(known == kUnknown || known == static_cast<unsigned char>(buffer.data()[i]), "bytes written are read");
        }
        must(position() == at + got, "a read moves the position on");
    }

    void write(const std::string& text) {
        if (!canBeWrittenHere()) return;
        const std::uint64_t at = position();
        std::uint32_t written = 77;
        ExactBuffer buffer(text);
        const auto count = static_cast<std::uint32_t>(text.size());
        if (kvOSWriteFile(handle_, buffer, count, &written, nullptr) == 0) {
            must(written == 0 && position() == at, "a refused write moves nothing");
            return;
        }
        must(written == count, "a write is whole");
        noteWritten(at, text);
    }

    void writeText(const std::string& text) {
        if (!canBeWrittenHere()) return;
        const std::uint64_t at = position();
        if (kvOSfputs(ExactBuffer(text), handle_) == 1) noteWritten(at, text);
    }

    void writeFormatted(const std::string& text) {
        if (text.empty() || !canBeWrittenHere()) return;  // of an empty text, 0 is success and failure
        const std::uint64_t at = position();
        const std::uint32_t written = kvOSfprintf(handle_, "%s", text.c_str());
        must(written == 0 || written == text.size(), "formatted text is written whole");
        if (written != 0) noteWritten(at, text);
    }

    void writeCharacter(char character) {
        if (!canBeWrittenHere()) return;
        const std::uint64_t at = position();
        if (kvOSfputc(character, handle_) == 1) noteWritten(at, std::string(1, character));
    }

    void readLine(std::uint32_t size) {
        const std::uint64_t at = position();
        ExactBuffer line(std::max<std::uint32_t>(size, 1));
        line.put("");
        if (kvOSfgets(line, size, handle_) == nullptr) return;
        must(line.text().size() < size && line.text().find('\n') == std::string_view::npos, "a line has no ending");
        must(position() >= at, "a line moves the position on");
    }

    void cut() {
        const std::uint64_t at = position();
        const bool shortens = at < bytes_.size();
        must(kvOSSetEndOfFile(handle_) == (shortens ? 1u : 0u), "a file is cut only to less than it has");
        if (shortens) bytes_.resize(at);
    }

    void checkSize() const {
        std::uint64_t size = 0;
        must(kvOSGetFileSizeEx(handle_, &size) == 1 && size == bytes_.size(), "the size is what was written");
        must(kvOSfeof(handle_) == (position() >= size ? 1u : 0u), "the end is at the size");
    }

private:
    static constexpr int kUnknown = -1;

    void noteWritten(std::uint64_t at, const std::string& text) {
        must(position() == at + text.size(), "a write moves the position on");
        if (bytes_.size() < at + text.size()) bytes_.resize(at + text.size(), kUnknown);
        std::ranges::transform(text, bytes_.begin() + static_cast<std::ptrdiff_t>(at),
                               [](char c) { return static_cast<unsigned char>(c); });
    }

    std::int64_t handle_;
    std::vector<int> bytes_;  // kUnknown where a gap was left
};

void move(const File& file, char how, std::int64_t distance) {
    const auto method = static_cast<std::uint32_t>(how - '0');
    std::int64_t position = 0;
    std::int32_t high = static_cast<std::int32_t>(distance >> 32);
    switch (how) {
        case 's':
            kvOSSeek(file.handle(), distance);
            break;
        case 'e':
            must(kvOSSeekEnd(file.handle()) >= 0, "the end can be sought");
            break;
        case '0':
        case '1':
        case '2':
            must(kvOSSetFilePointerEx(file.handle(), distance, &position, method) == 1, "meant: it always succeeds");
            must(static_cast<std::uint64_t>(position) == file.position(), "the position told is the position");
            break;
        case '3':
        case '4':
        case '5':
            kvOSSetFilePointer(file.handle(), static_cast<std::int32_t>(distance), &high, method - 3);
            break;
        default:
            kvOSSetFilePointer(file.handle(), static_cast<std::int32_t>(distance), nullptr, 1);
            break;
    }
}

/// A size for a buffer out of any number.
std::uint32_t sizeFrom(std::int64_t number) {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(number) % 70000);
}

void call(File& file, const std::string& line) {
    const char what = line.empty() ? 'r' : line[0];
    const std::string rest = line.empty() ? "" : line.substr(1);
    Input argument(reinterpret_cast<const std::uint8_t*>(rest.data()), rest.size());
    switch (what) {
        case 'r':
            file.read(sizeFrom(argument.number()));
            break;
        case 'w':
            file.write(rest);
            break;
        case 'p':
            file.writeText(rest);
            break;
        case 'f':
            file.writeFormatted(rest);
            break;
        case 'c':
            file.writeCharacter(rest.empty() ? '\0' : rest[0]);
            break;
        case 'l':
            file.readLine(sizeFrom(argument.number()));
            break;
        case 'x':
            file.cut();
            break;
        case 'o':
            must(kvOSAddOutputFile(file.handle(), "mem://") == 0, "a scratch file takes no outputs");
            break;
        case 'b':
            kvOSFlushFileBuffers(file.handle());
            break;
        default:
            move(file, what, argument.number());
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    gdwOutputToStdDebug = 0;  // refused calls say so, thousands of times
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string path = "mem://" + input.text();
    const std::int64_t access = input.number();
    const auto creation = static_cast<std::uint32_t>(input.number());
    File file(path, access == 1 ? KVFILE_READ : access == 2 ? KVFILE_WRITE : KVFILE_READ | KVFILE_WRITE, creation);
    must(file.isOpen() == (path.size() < kv::fuzz::kPathSize), "every text that fits opens");
    while (file.isOpen() && !input.isAtEnd()) {
        call(file, input.text());
        file.checkSize();
    }
    return 0;
}
