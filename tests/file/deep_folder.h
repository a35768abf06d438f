// Folders whose paths leave little room: what no path of 4096 bytes reaches can only be made from nearby.
#pragma once

#include <algorithm>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace kvtest {

/// Makes folders below `top` until the path of the last is that many characters long, and gives that path.
inline std::string makeDeepFolder(const std::string& top, std::size_t length) {
    std::string path = top;
    while (path.size() < length) {
        const std::size_t room = length - path.size() - 1;
        std::size_t name = std::min<std::size_t>(room, 100);
        if (room - name == 1) --name;  // a lone "/" would be left
        path += "/" + std::string(name, 'n');
        std::filesystem::create_directory(path);
    }
    return path;
}

/// An empty file in a folder, whose own path may be longer than any call takes. Removed by the way it was made.
class FileNearby {
public:
    FileNearby(const std::string& folder, std::string name)
        : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), name_(std::move(name)) {
        const int file = openat(folder_, name_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        EXPECT_GE(file, 0) << name_;
        close(file);
    }
    ~FileNearby() {
        unlinkat(folder_, name_.c_str(), 0);
        close(folder_);
    }
    FileNearby(const FileNearby&) = delete;
    FileNearby& operator=(const FileNearby&) = delete;

private:
    int folder_;
    std::string name_;
};

}  // namespace kvtest
