// The folder in which a server keeps its documents and all that it writes; it goes with the object.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kvtest {

class ServerFolder {
public:
    explicit ServerFolder(std::string_view name)
        : path_((std::filesystem::temp_directory_path() / (std::string(name) + "-XXXXXX")).string()) {
        if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder like " + path_);
    }
    ~ServerFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ServerFolder(const ServerFolder&) = delete;
    ServerFolder& operator=(const ServerFolder&) = delete;

    /// Makes a folder in it.
    std::string makeFolder(std::string_view name) const {
        std::filesystem::create_directories(*this / name);
        return *this / name;
    }
    std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

}  // namespace kvtest
