// The table that the demonstration prints, a line for each thing done, and the count of what went wrong.
#pragma once

#include <cstdint>
#include <string>

#include "demo/timed_file.h"

namespace demo {

class Report {
public:
    void heading(const std::string& title);
    void headingWithoutTransfers(const std::string& title);
    /// One line: what was done, how much of it, how fast, and what was found to be right. `ok` false marks the line
    /// and fails the demonstration.
    void line(const std::string& what, std::uint64_t bytes, Seconds time, const std::string& checked, bool ok);
    /// A line without a transfer.
    void line(const std::string& what, const std::string& checked, bool ok);

    /// Prints the outcome; 0, or 1 if a line failed.
    int conclude() const;

private:
    int lines_ = 0;
    int failed_ = 0;
};

}  // namespace demo
