// Folders and files that a test makes for itself.
//
// All of them lie below the test's own temporary folder (main.cpp), so that even a test that crashes leaves nothing
// among the user's files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace kvtest {

/// A new empty folder, removed with all it holds when the object goes.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string text = (std::filesystem::temp_directory_path() / "scratch-XXXXXX").string();
        if (mkdtemp(text.data()) != nullptr) path_ = text;
        EXPECT_FALSE(path_.empty());
    }
    ~ScratchFolder() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }

private:
    std::string path_;
};

inline void makeFile(const std::string& path, std::string_view content = {}) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    ASSERT_TRUE(file.good()) << path;
}

inline std::string contentOf(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return std::move(content).str();
}

}  // namespace kvtest
