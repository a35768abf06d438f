// The names of locales that the library asks for.
//
// setlocale is replaced in this program (asked_locales.cpp), and the library finds the replacement first; it hands on
// to the system's.
#pragma once

#include <string>
#include <vector>

namespace kvtest {

/// Every name that setlocale was given in this process, in order; the questions without a name are left out.
std::vector<std::string>& askedLocales();

}  // namespace kvtest
