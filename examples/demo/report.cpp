// Each line is flushed, so that it stands ahead of the messages that the next step may send to standard error.
#include "demo/report.h"

#include <cstdio>

namespace demo {
namespace {

constexpr double kMebibyte = 1048576;

const char* mark(bool ok) { return ok ? "" : "FAILED: "; }

}  // namespace

void Report::heading(const std::string& title) {
    std::printf("\n%-38s %8s %8s %8s  %s\n", title.c_str(), "MiB", "ms", "MiB/s", "checked");
}

void Report::headingWithoutTransfers(const std::string& title) {
    std::printf("\n%-65s  %s\n", title.c_str(), "checked");
}

void Report::line(const std::string& what, std::uint64_t bytes, Seconds time, const std::string& checked, bool ok) {
    const double mebibytes = static_cast<double>(bytes) / kMebibyte;
    const double rate = time.count() > 0 ? mebibytes / time.count() : 0;
    std::printf("  %-36s %8.1f %8.1f %8.0f  %s%s\n", what.c_str(), mebibytes, time.count() * 1000, rate, mark(ok),
                checked.c_str());
    std::fflush(stdout);
    ++lines_;
    if (!ok) ++failed_;
}

void Report::line(const std::string& what, const std::string& checked, bool ok) {
    std::printf("  %-36s %8s %8s %8s  %s%s\n", what.c_str(), "", "", "", mark(ok), checked.c_str());
    std::fflush(stdout);
    ++lines_;
    if (!ok) ++failed_;
}

int Report::conclude() const {
    if (failed_ == 0) {
        std::printf("\nAll %d steps passed.\n", lines_);
    } else {
        std::printf("\n%d of %d steps FAILED.\n", failed_, lines_);
    }
    return failed_ == 0 ? 0 : 1;
}

}  // namespace demo
