// Port numbers: links to the devices that are there, in the directory of the settings.
//
// Nothing is reported: a directory that can't be written to leaves the ports without links, and the devices' own names
// remain.
#include "devices/serial_links.h"

#include <cstdint>
#include <cstdio>
#include <unistd.h>

#include "border/guard.h"
#include "border/text.h"
#include "kvos/attributes.h"
#include "kvos/serial.h"
#include "platform/serial_line.h"

namespace kv::devices {

bool linkPath(char* path, std::uint32_t number) noexcept {
    kvOSGetConfigDir(path, 0);  // named also where it can't be made; empty if it has no name
    char name[16];
    std::snprintf(name, sizeof name, "ttyS%u", number);
    return *path != '\0' && border::appendPath(path, name);
}

namespace {

void removeLinks() {
    for (std::uint32_t number = 0; number < kLinks; ++number) {
        border::PathBuffer link;
        if (linkPath(link, number)) unlink(link);
    }
}

void makeLinks() {
    std::uint32_t number = 0;
    for (const char* device : platform::serialDevices()) {
        if (number == kLinks) return;
        if (kvOSFileExists(device) == 0) continue;
        border::PathBuffer link;
        const bool isMade = linkPath(link, number) && symlink(device, link) == 0;
        static_cast<void>(isMade);  // meant: the number is the device's with or without its link
        ++number;
    }
}

}  // namespace
}  // namespace kv::devices

std::uint32_t kvOSSerialSetupSystem(std::uint32_t fForce) {
    const kv::border::KeepErrno untouched;
    kv::border::PathBuffer first;
    const bool hasLinks = kv::devices::linkPath(first, 0) && kvOSFileExists(first) != 0;
    if (fForce == 0 && hasLinks) return 0;
    kv::devices::removeLinks();
    kv::devices::makeLinks();
    return 0;
}
