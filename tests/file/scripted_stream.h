// Local handles over streams that fail on command, for the errors that a real file system will not make when asked.
//
// The record is made by hand and is never closed through the library, unless the test releases it. glibc only: other
// systems name such streams differently.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <utility>

#include "file/handle.h"

namespace kvtest {

class ScriptedStream {
public:
    static constexpr int kPass = 1 << 20;

    explicit ScriptedStream(const char* mode = "rb") {
        cookie_io_functions_t calls{};
        calls.read = [](void* cookie, char* buffer, std::size_t size) -> ssize_t {
            return static_cast<ScriptedStream*>(cookie)->read(buffer, size);
        };
        calls.write = [](void* cookie, const char* bytes, std::size_t size) -> ssize_t {
            return static_cast<ScriptedStream*>(cookie)->write(bytes, size);
        };
        calls.seek = [](void* cookie, off64_t* offset, int) -> int {
            auto& self = *static_cast<ScriptedStream*>(cookie);
            ++self.seeks;
            self.note("seek");
            return *offset < 0 ? -1 : 0;
        };
        calls.close = [](void* cookie) -> int { return static_cast<ScriptedStream*>(cookie)->close(); };
        record_ = static_cast<kvOSFileHandle*>(std::calloc(1, sizeof(kvOSFileHandle)));
        record_->pFile = fopencookie(this, mode, calls);
        record_->dwType = KVFILE_LOCAL;
        record_->dwAccess = KVFILE_READ | KVFILE_WRITE;
        std::setvbuf(stream(), nullptr, _IONBF, 0);
    }
    ~ScriptedStream() {
        if (record_ == nullptr) return;
        std::fclose(stream());
        std::free(record_);
    }
    ScriptedStream(const ScriptedStream&) = delete;
    ScriptedStream& operator=(const ScriptedStream&) = delete;

    std::int64_t handle() const { return reinterpret_cast<std::int64_t>(record_); }
    std::string printedHandle() const { return std::to_string(static_cast<int>(handle())); }
    kvOSFileHandle& record() { return *record_; }
    /// Hands record and stream over to kvOSCloseFile.
    std::int64_t release() { return reinterpret_cast<std::int64_t>(std::exchange(record_, nullptr)); }

    std::deque<int> errors;  // errno of the next reads and writes, one a call; kPass lets the call pass
    std::string toRead;      // what passing reads deliver
    int closeError = 0;      // errno of the close; 0 lets it pass
    bool failsClose = false;
    int seeks = 0;
    std::string name;  // how the calls appear in the journal
    std::string* journal = nullptr;

private:
    std::FILE* stream() const { return static_cast<std::FILE*>(record_->pFile); }

    void note(const char* what) {
        if (journal != nullptr) *journal += name + ":" + what + " ";
    }

    bool fails() {
        if (errors.empty()) return false;
        errno = errors.front();
        errors.pop_front();
        return errno != kPass;
    }

    ssize_t read(char* buffer, std::size_t size) {
        note("read");
        if (fails()) return -1;
        const std::size_t count = std::min(size, toRead.size());
        std::memcpy(buffer, toRead.data(), count);
        toRead.erase(0, count);
        return static_cast<ssize_t>(count);
    }

    ssize_t write(const char*, std::size_t size) {
        note("write");
        return fails() ? 0 : static_cast<ssize_t>(size);
    }

    int close() {
        note("close");
        if (!failsClose) return 0;
        errno = closeError;
        return -1;
    }

    kvOSFileHandle* record_;
};

}  // namespace kvtest
