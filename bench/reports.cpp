// Reports into the log beside a logging library that writes into a file as they come, both without standard error.
//
// A pass of several threads starts and joins them, for ours and for the peer alike. No message is like the one before,
// so that none of ours is folded into a count.
#include <cstdio>
#include <memory>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <string>
#include <thread>
#include <vector>

#include "bench/scratch.h"
#include "bench/topics.h"
#include "errlog.h"

namespace kv::bench {
namespace {

constexpr int kMessages = 20000;

/// The same work on so many threads, all of it done when this returns.
template <class Report>
void onThreads(int threads, Report report) {
    const int each = kMessages / threads;
    if (threads == 1) {
        for (int i = 0; i < each; ++i) report(0, i);
        return;
    }
    std::vector<std::jthread> all;
    for (int t = 0; t < threads; ++t) {
        all.emplace_back([&report, t, each] {
            for (int i = 0; i < each; ++i) report(t, i);
        });
    }
}

void ours(int thread, int i) { ErrOut("channel %d: frame %d written to %s\n", thread, i, "/media/clip.mov"); }

/// The same with a line of its own for each message, as the peer writes them.
void oursStamped(int thread, int i) { ErrOut("\nchannel %d: frame %d written to %s", thread, i, "/media/clip.mov"); }

void measure(Table& table, const std::string& what, void (*report)(int, int), spdlog::logger& peer) {
    for (const int threads : {1, 8}) {
        const std::string on = threads == 1 ? ", 1 thread" : ", 8 threads";
        table.compare(
            {what + on, "spdlog, file sink", callsPerPass(kMessages), atLeast(1.0), Clock::wall},
            [threads, report] { onThreads(threads, report); },
            [threads, &peer] {
                onThreads(threads, [&peer](int thread, int i) {
                    peer.info("channel {}: frame {} written to {}", thread, i, "/media/clip.mov");
                });
            });
    }
}

void openLog(const ScratchFolder& folder) {
    std::snprintf(gszLogName, sizeof gszLogName, "%s/ours.log", folder.path().c_str());
    gfEnableLog = 1;
    ErrLogSetFileName("ours");
    ErrOut("first");
    char name[4096];
    ErrLogGetName(name, 0);
    std::FILE* const made = std::fopen(name, "r");
    require(made != nullptr, "the log file can't be opened");
    std::fclose(made);
}

}  // namespace

void measureReports(const Scale& scale) {
    const ScratchFolder folder;
    spdlog::logger peer("peer", std::make_shared<spdlog::sinks::basic_file_sink_mt>(folder.path() + "/peer.log", true));
    gfReadReg = 1;  // no settings: what is measured does not hang on the machine's
    gdwOutputToStdDebug = 0;
    {
        Table table("reports: messages into the log", scale);
        measure(table, "ErrOut, list alone", ours, peer);
        openLog(folder);
        measure(table, "ErrOut, list and file", ours, peer);
        measure(table, "ErrOut, list and file, a stamped line each", oursStamped, peer);
    }
    ErrLogClose();
    gfEnableLog = 0;
    gdwOutputToStdDebug = 1;
}

}  // namespace kv::bench
