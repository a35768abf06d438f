// kv rm: deletes files.
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/file_type.h"
#include "kv/redirected.h"
#include "kvos/attributes.h"
#include "kvos/file.h"

namespace kv::tool {
namespace {

/// The call says 1 for a deleted local file and 0 for a deleted object.
bool deleted(const std::string& locator) {
    const std::uint32_t result = kvOSDeleteFile(locator.c_str());
    return isObject(locator) ? result == 0 : result == 1;
}

bool remove(const std::string& locator) {
    kvOSSetLastError(0);
    if (deleted(locator)) return true;
    const std::uint32_t error = kvOSGetLastError();
    // Asked only now: a link to a folder is deleted like any link.
    if (!isOnNetwork(locator) && fileType(kvOSGetFileAttributes(locator.c_str())) == FileType::folder) {
        complain("cannot delete '" + locator + "': it is a folder, and kv rm deletes files only");
    } else {
        complainOf("delete", locator, error);
    }
    return false;
}

Exit removeAll(const std::vector<std::string>& locators) {
    Exit result = Exit::ok;
    for (const std::string& locator : locators) {
        if (!remove(locator)) result = Exit::failed;
    }
    return result;
}

}  // namespace

void declareRm(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("rm", "Delete files; folders are refused");
    command->footer("Example: kv rm copy.mov clip0000.yuv");
    auto locators = std::make_shared<std::vector<std::string>>();
    addPositional(*command, "LOCATOR", *locators, "Files to delete");
    command->callback([&chosen, locators] { chosen = [locators] { return removeAll(*locators); }; });
}

}  // namespace kv::tool
