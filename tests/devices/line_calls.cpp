#include "devices/line_calls.h"

#include <cstdarg>
#include <dlfcn.h>
#include <linux/serial.h>
#include <sys/ioctl.h>

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
    if (kvtest::lineCalls().hasDriver && kvtest::answered(request, argument)) return 0;
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
    return kvtest::systems<int (*)(int)>("tcdrain")(line);
}

#pragma GCC visibility pop
