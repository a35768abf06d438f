#include "devices/line_calls.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kvtest {

LineCalls& lineCalls() {
    static LineCalls calls;
    return calls;
}

namespace {

template <class Function>
Function systems(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void note(const char* text) { lineCalls().asked.emplace_back(text); }

/// What a driver with all of it answers; false for a request that is not its own.
bool answered(unsigned long request, void* argument) {
    LineCalls& calls = lineCalls();
    switch (request) {
        case TIOCMGET:
            *static_cast<int*>(argument) = calls.modemLines;
            return true;
        case TIOCMBIS:
            calls.modemLines |= *static_cast<const int*>(argument);
            return true;
        case TIOCMBIC:
            calls.modemLines &= ~*static_cast<const int*>(argument);
            return true;
        case TIOCGSERIAL:
            static_cast<serial_struct*>(argument)->flags = calls.driverFlags;
            static_cast<serial_struct*>(argument)->baud_base = 115200;
            return true;
        case TIOCSSERIAL:
            // Whoever sets one thing has to hand back all the others.
            if (static_cast<const serial_struct*>(argument)->baud_base == 115200) {
                calls.driverFlags = static_cast<const serial_struct*>(argument)->flags;
            }
            return true;
        default:
            return false;
    }
}

void noteRequest(unsigned long request, const void* argument) {
    switch (request) {
        case TIOCEXCL:
            return note("alone");
        case TIOCMBIS:
            return note(*static_cast<const int*>(argument) == TIOCM_DTR ? "DTR up" : "lines up");
        case TIOCMBIC:
            return note(*static_cast<const int*>(argument) == TIOCM_DTR ? "DTR down" : "lines down");
        case TIOCGSERIAL:
            return note("latency");
        default:
            return;
    }
}

/// Whether the request stops here; what is left goes on to the system.
bool isTaken(unsigned long request, void* argument) {
    const LineCalls& calls = lineCalls();
    if (request == TIOCOUTQ && calls.unsent) {
        *static_cast<int*>(argument) = *calls.unsent;
        return true;
    }
    return (request == TIOCEXCL && calls.isShared) || (calls.hasDriver && answered(request, argument));
}

bool namesATerminal(const char* path) {
    return std::strncmp(path, "/dev/tty", 8) == 0 || std::strstr(path, "/ttyS") != nullptr;
}

/// The file that is meant by a path; null, with errno set, for a terminal that the test does not have.
const char* meantBy(const char* path) {
    LineCalls& calls = lineCalls();
    if (!calls.hasOwnDevices || !namesATerminal(path)) return path;
    calls.opened.emplace_back(path);
    const auto device = calls.devices.find(path);
    if (device != calls.devices.end()) return device->second.c_str();
    errno = ENOENT;
    return nullptr;
}

}  // namespace
}  // namespace kvtest

// Seen by the library as well, whatever visibility the program is compiled with.
#pragma GCC visibility push(default)

int ioctl(int line, unsigned long request, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    kvtest::noteRequest(request, argument);
    if (kvtest::isTaken(request, argument)) return 0;
    return kvtest::systems<int (*)(int, unsigned long, ...)>("ioctl")(line, request, argument);
}

int tcsetattr(int line, int when, const struct termios* settings) noexcept {
    kvtest::note(when == TCSANOW ? "settings now" : "settings later");
    kvtest::lineCalls().settings = *settings;
    return kvtest::systems<int (*)(int, int, const struct termios*)>("tcsetattr")(line, when, settings);
}

int tcflush(int line, int queues) noexcept {
    switch (queues) {
        case TCIFLUSH:
            kvtest::note("flush input");
            break;
        case TCOFLUSH:
            kvtest::note("flush output");
            break;
        default:
            kvtest::note("flush both");
    }
    return kvtest::systems<int (*)(int, int)>("tcflush")(line, queues);
}

int tcdrain(int line) {
    kvtest::note("drain");
    if (kvtest::lineCalls().onDrain) kvtest::lineCalls().onDrain();
    if (kvtest::lineCalls().isDrainInterrupted) {
        errno = EINTR;
        return -1;
    }
    return kvtest::systems<int (*)(int)>("tcdrain")(line);
}

int poll(struct pollfd* files, nfds_t count, int wait_ms) {
    const kvtest::LineCalls& calls = kvtest::lineCalls();
    if (calls.onWait && count == 1 && files->fd == calls.awaitedLine) {
        if (const auto answer = calls.onWait(wait_ms)) return *answer;
    }
    return kvtest::systems<int (*)(struct pollfd*, nfds_t, int)>("poll")(files, count, wait_ms);
}

int usleep(useconds_t us) {
    if (kvtest::lineCalls().onPause) return kvtest::lineCalls().onPause(us);
    return kvtest::systems<int (*)(useconds_t)>("usleep")(us);
}

int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        std::va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    const char* const meant = kvtest::meantBy(path);
    return meant == nullptr ? -1 : kvtest::systems<int (*)(const char*, int, ...)>("open")(meant, flags, mode);
}

#pragma GCC visibility pop
