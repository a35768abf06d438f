// A reader of log files and of the list that knows only how they are laid out, nothing of the library's code.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "errlog.h"
#include "support/scratch.h"

namespace kvtest {

/// One stamped line of a log file, and all that stands behind it up to the next one.
struct LogLine {
    int number;
    std::string stamp;
    std::string text;  // with the messages that ran on behind it and the ends of runs
};

struct LogContent {
    std::string start;    // the start line, its line feed left out; empty if there is none
    std::string history;  // what follows it ahead of the first stamped line
    std::vector<LogLine> lines;

    std::string allText() const {
        std::string all = history;
        for (const LogLine& line : lines) all += line.text;
        return all;
    }
};

inline LogContent parseLog(const std::string& content) {
    static const std::regex mark(
        R"(\n(-?[0-9]+)\t([0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3})\t)");
    LogContent log;
    std::string rest = content;
    if (rest.starts_with("LOG STARTED ")) {
        const std::size_t end = rest.find('\n');
        log.start = rest.substr(0, end);
        rest.erase(0, end + 1);
    }
    std::size_t from = 0;
    std::string* text = &log.history;
    for (std::sregex_iterator at(rest.begin(), rest.end(), mark), none; at != none; ++at) {
        const auto position = static_cast<std::size_t>(at->position());
        *text = rest.substr(from, position - from);
        log.lines.push_back({std::stoi((*at)[1]), (*at)[2], {}});
        text = &log.lines.back().text;
        from = position + static_cast<std::size_t>(at->length());
    }
    *text = rest.substr(from);
    return log;
}

inline LogContent readLog(const std::string& path) { return parseLog(contentOf(path)); }

/// The path that the log has now.
inline std::string logPath() {
    char path[4096] = "";
    EXPECT_EQ(ErrLogGetName(path, 0), 0u);
    return path;
}

/// One message as ErrLogGet gives it.
struct Got {
    std::uint32_t next;
    std::uint32_t number;
    std::uint32_t code;
    std::string text;
};

inline Got get(std::uint32_t index, std::uint32_t form = 1) {
    std::string buffer(1 << 16, 'Z');
    Got got{};
    std::uint32_t reserved[4] = {1, 2, 3, 4};
    got.number = 0xDEAD;
    got.next = ErrLogGet(index, form, &got.number, &reserved[0], &reserved[1], &reserved[2], &reserved[3], &got.code,
                         buffer.data());
    if (index != 0xFFFFFFFF && got.next != 0xFFFFFFFF && got.next != 0) {
        for (const std::uint32_t value : reserved) EXPECT_EQ(value, 0u);
        got.text = buffer.c_str();
    }
    return got;
}

/// All texts of the list, oldest first, read as a client reads them.
inline std::vector<std::string> listed() {
    std::vector<std::string> texts;
    for (std::uint32_t index = 0;;) {
        const Got got = get(index);
        if (got.next == 0xFFFFFFFF) return texts;
        texts.push_back(got.text);
        index = got.next;
    }
}

/// The names in a folder, in order.
inline std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

/// A test of the log: no settings are read, nothing goes to standard error, and the log names files in a folder.
class LogTest : public ::testing::Test {
protected:
    LogTest() {
        gfReadReg = 1;
        gdwOutputToStdDebug = 0;
    }
    ~LogTest() override { ErrLogSetMode(1, nullptr); }

    /// Lets the next message open a file named from `base`.
    void nameFile(const char* base = "run") {
        const std::string path = folder / "any.log";
        path.copy(gszLogName, sizeof gszLogName - 1);
        gszLogName[path.size()] = '\0';
        gfEnableLog = 1;
        EXPECT_EQ(ErrLogSetFileName(base), 0u);
    }

    /// The content of the log file, all of it on disk because the file is closed for it.
    std::string closedLog() {
        const std::string path = logPath();
        ErrLogClose();
        return contentOf(path);
    }

    ScratchFolder folder;
};

}  // namespace kvtest
