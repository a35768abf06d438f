// Which files the library asks the system for, in their order: this program's own stat stands ahead of the system's and
// passes the question on.
#pragma once

#include <string>
#include <vector>

namespace kvtest {

/// The paths asked for since the list was last emptied.
std::vector<std::string>& askedFor();

}  // namespace kvtest
