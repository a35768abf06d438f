// The locale in which the small "I" is no "i", for tests of what must not depend on the host's locale.
//
// Few machines have it: it is made from the system's own description, in a folder that goes with the object. Where even
// that can't be done, isInForce() says so, and the test is to be skipped.
#pragma once

#include <clocale>
#include <cstdlib>
#include <string>
#include <strings.h>

#include "support/scratch.h"

namespace kvtest {

/// In force for the whole process while this lives.
class TurkishLocale {
public:
    TurkishLocale() {
        const std::string made = folder_ / "tr_TR.UTF-8";
        const std::string command = "localedef -i tr_TR -f UTF-8 '" + made + "' >/dev/null 2>&1";
        [[maybe_unused]] const int status = std::system(command.c_str());
        setenv("LOCPATH", folder_.path().c_str(), 1);
        std::setlocale(LC_ALL, "tr_TR.UTF-8");
    }
    ~TurkishLocale() {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }
    TurkishLocale(const TurkishLocale&) = delete;
    TurkishLocale& operator=(const TurkishLocale&) = delete;

    static bool isInForce() { return strcasecmp("I", "i") != 0; }

private:
    ScratchFolder folder_;
};

}  // namespace kvtest
