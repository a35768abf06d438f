// The entry of every test program: each process gets a home, a temporary folder and a working folder of its own, so
// that nothing it does meets the user's files or another test's.
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <unistd.h>

// A request for more memory than there is gives null, with the sanitizers' allocators as with the system's.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options();
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();

    std::string folder = (std::filesystem::temp_directory_path() / "kvutil-test-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::cerr << "no scratch folder at " << folder << "\n";
        return 1;
    }
    for (const char* name : {"home", "tmp", "work"}) std::filesystem::create_directory(folder + "/" + name);
    setenv("HOME", (folder + "/home").c_str(), 1);
    setenv("TMPDIR", (folder + "/tmp").c_str(), 1);
    if (chdir((folder + "/work").c_str()) != 0) return 1;

    const int result = RUN_ALL_TESTS();

    std::error_code ignored;
    std::filesystem::current_path("/", ignored);
    std::filesystem::remove_all(folder, ignored);
    return result;
}
