// The start of other programs. Nobody here waits for their end.
#include <cerrno>
#include <cstdint>
#include <spawn.h>
#include <sys/types.h>

#include "border/guard.h"
#include "border/text.h"
#include "errlog.h"
#include "kvos/process.h"
#include "platform/environment.h"
#include "system/command_line.h"

namespace kv::system {
namespace {

void log(const CommandLine& line) {
    ErrOut("Process Launch\n");
    for (char* const* argument = line.arguments(); *argument != nullptr; ++argument) ErrOut("%s ", *argument);
    ErrOut("Process Launch\n");
}

constexpr int kNoMemory = -1;

/// 0, or an error number.
int start(const char* application, const char* commandLine, pid_t& process) {
    if (application == nullptr) return EINVAL;
    const CommandLine line(application, border::orEmpty(commandLine));
    log(line);
    pid_t started = 0;
    const int error = posix_spawn(&started, application, nullptr, nullptr, line.arguments(), platform::environment());
    if (error == 0) process = started;  // a failed start may leave the number of what was to become the program
    return error;
}

}  // namespace
}  // namespace kv::system

std::uint32_t kvOSCreateProcess(const char* pApplication, const char* pCommandLine, void*, void*, std::uint32_t,
                                std::uint32_t, void*, const char*, void*, kvOSProcessInformation* pProcessInformation) {
    pid_t process = 0;
    const int error = kv::border::atBorder(kv::system::kNoMemory,
                                           [&] { return kv::system::start(pApplication, pCommandLine, process); });
    if (error == kv::system::kNoMemory) {
        errno = ENOMEM;
    } else if (error != 0) {
        errno = error;  // starting a program tells its failure by the result alone
        ErrOut("\nkvOSCreateProcess(FAILED) rtn=%d, lasterr=%d ", error, errno);
    }
    if (pProcessInformation != nullptr) {
        pProcessInformation->dwProcessId = static_cast<std::uint32_t>(process);
        pProcessInformation->dwThreadId = static_cast<std::uint32_t>(process);
    }
    return error == 0 ? 1 : 0;
}
