#include "demo/log.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "errlog.h"
#include "kvos/file.h"

namespace demo {
namespace {

constexpr const char* kMessage = "kvOSCreateFile(";
constexpr std::uint32_t kTextAlone = 1;  // any form but the named ones

void openMissing(const Clip& clip, Report& report) {
    const std::string missing = clip.path("missing.yuv");
    const std::int64_t handle = kvOSCreateFile(missing.c_str(), KVFILE_READ, 3, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    const std::uint32_t error = kvOSGetLastError();
    std::fputs("\n", stderr);
    const std::string told = "handle " + std::to_string(handle) + ", last error " + std::to_string(error) + ", " +
                             std::strerror(static_cast<int>(error));
    report.line("open missing.yuv", told, handle == KVFILE_INVALID && error == 2);
}

void findInList(Report& report) {
    const std::uint32_t last = ErrLogGet(0xFFFFFFFF, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    char text[4096 + 256] = "";
    std::uint32_t number = 0;
    ErrLogGet(last - 1, kTextAlone, &number, nullptr, nullptr, nullptr, nullptr, nullptr, text);
    const bool found = std::string_view(text).starts_with(kMessage);
    report.line("read the list of messages", "its last, number " + std::to_string(number) + ", is that one", found);
}

void findInFile(const std::string& path, Report& report) {
    std::string content(4096, '\0');
    const std::int64_t file = kvOSCreateFile(path.c_str(), KVFILE_READ, 3, nullptr, KVFILE_OPEN_EXISTING, 0, 0);
    std::uint32_t got = 0;
    kvOSReadFile(file, content.data(), static_cast<std::uint32_t>(content.size()), &got, nullptr);
    kvOSCloseFile(file);
    content.resize(got);
    const bool found = content.starts_with("LOG STARTED ") && content.find(kMessage) != std::string::npos;
    report.line("read " + path.substr(path.rfind('/') + 1), "it holds the message as well", found);
}

}  // namespace

void showLog(const Clip& clip, Report& report) {
    report.headingWithoutTransfers("The log");
    gfReadReg = 1;  // as if they had been read: what the demonstration logs is not for the machine's settings to say
    std::string name = clip.path("demo.log");
    ErrLogSetMode(KVERRLOG_MODE_FILE, name.data());
    char path[4096];
    ErrLogGetName(path, 0);
    report.line("begin a log file", "stamped with the time", kvErrLog_IsOpen() != 0);

    std::printf("Opening a file that is not there sends this message to standard error:\n");
    std::fflush(stdout);
    openMissing(clip, report);
    findInList(report);
    ErrLogClose();
    findInFile(path, report);
}

}  // namespace demo
