// Reports and settings at once: eight threads report while eight others read, write and save, and each of the two locks
// is taken while the other is held by somebody else.
//
// It runs for two seconds, or for as many as KVUTIL_TEST_SECONDS says.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "config/open_store.h"
#include "diag/log_reader.h"
#include "errlog.h"
#include "kvcfg.h"

namespace {

using namespace kvtest;
using Clock = std::chrono::steady_clock;

constexpr int kThreads = 8;
constexpr int kReportsPerSecond = 300;  // of each thread; the files are read whole afterwards
constexpr const char* kDebug = "ZMW\\Advanced\\Debug";

class LogAndSettings : public DefaultStore {
protected:
    ScratchFolder folder;
};

std::chrono::seconds duration() {
    const char* told = std::getenv("KVUTIL_TEST_SECONDS");
    return std::chrono::seconds(told == nullptr ? 2 : std::atoi(told));
}

/// Reports at its pace until the end; returns how often.
int report(int thread, Clock::time_point begin, Clock::time_point end) {
    int sent = 0;
    for (;;) {
        const auto now = Clock::now();
        if (now >= end) return sent;
        const auto due = (now - begin).count() * kReportsPerSecond / Clock::duration(std::chrono::seconds(1)).count();
        if (sent > due) {
            std::this_thread::yield();
        } else {
            ErrOut("\n<%d:%d>", thread, sent++);
        }
    }
}

/// Writes, reads back and now and then saves a value of its own; false if one came back otherwise.
bool useSettings(int thread, Clock::time_point end) {
    const std::string name = "Joint" + std::to_string(thread);
    for (std::uint32_t turn = 1; Clock::now() < end; ++turn) {
        if (setDword(KVSTDCONFIG, kDebug, name.c_str(), turn) != 0) return false;
        if (dwordOf(KVSTDCONFIG, kDebug, name.c_str()) != turn) return false;
        if (turn % 16 == 0 && kvCFGSave(KVSTDCONFIG, nullptr, 0) != 0) return false;
        // The store reports this one, from inside its own calls.
        if (turn % 8 == 0) dwordOf(KVSTDCONFIG, "ZMW\\No\\Such\\Key", "None");
    }
    return true;
}

}  // namespace

TEST_F(LogAndSettings, EightThreadsReportWhileEightUseTheSettingsAndNothingIsLost) {
    gdwOutputToStdDebug = 0;
    ErrOut("the settings are read");
    const std::string name = folder / "any.log";
    name.copy(gszLogName, sizeof gszLogName - 1);
    gszLogName[name.size()] = '\0';
    gfEnableLog = 1;
    gfEnableList = 1;
    ErrLogSetFileName("joint");

    std::vector<int> sent(kThreads);
    std::atomic<int> broken{0};
    {
        const auto begin = Clock::now();
        const auto end = begin + duration();
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t) {
            const auto at = static_cast<std::size_t>(t);
            threads.emplace_back([&sent, at, t, begin, end] { sent[at] = report(t, begin, end); });
            threads.emplace_back([&broken, t, end] { broken += useSettings(t, end) ? 0 : 1; });
        }
    }
    EXPECT_EQ(broken, 0);
    ErrLogClose();

    // A successor begins with the history, so that a number may be seen twice, with the same text.
    std::map<int, std::string> byNumber;
    for (const std::string& file : kvtest::namesIn(folder.path())) {
        for (const LogLine& line : readLog(folder / file).lines) {
            const auto [known, added] = byNumber.emplace(line.number, line.text);
            EXPECT_TRUE(added || known->second.substr(0, 8) == line.text.substr(0, 8)) << line.text;
        }
    }
    std::vector<std::set<int>> seen(kThreads);
    static const std::regex message("<([0-9]):([0-9]+)>");
    for (const auto& [number, text] : byNumber) {
        for (std::sregex_iterator at(text.begin(), text.end(), message), none; at != none; ++at) {
            const auto thread = static_cast<std::size_t>(std::stoi((*at)[1]));
            EXPECT_TRUE(seen[thread].insert(std::stoi((*at)[2])).second) << text;
        }
    }
    for (std::size_t t = 0; t < kThreads; ++t) EXPECT_EQ(static_cast<int>(seen[t].size()), sent[t]);
}
