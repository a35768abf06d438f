// One line is one write, so that the lines of two processes on one terminal do not mix.
#include "kv/complaint.h"

#include <cstdio>
#include <cstring>

#include "kv/printable.h"
#include "kv/secrets.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

constexpr std::uint32_t kEndOfSearch = 0xFFFFFFFF;  // what the find calls leave as the last error

}  // namespace

void complain(std::string_view text) {
    const std::string line = "kv: " + printable(withoutSecrets(text)) + "\n";
    std::fputs(line.c_str(), stderr);
}

void complainOf(std::string_view action, std::string_view name, std::uint32_t error) {
    complain("cannot " + std::string(action) + " '" + std::string(name) + "': " + reasonOf(error));
}

void complainOf(std::string_view action, std::string_view name) { complainOf(action, name, kvOSGetLastError()); }

std::string reasonOf(std::uint32_t error) {
    if (error == 0) return "refused";
    if (error == kEndOfSearch) return "nothing found";
    return std::strerror(static_cast<int>(error));
}

}  // namespace kv::tool
