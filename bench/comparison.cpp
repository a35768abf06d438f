// Timing and printing of a row. Google Benchmark runs the passes and takes the time.
#include "bench/comparison.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace kv::bench {
namespace {

/// Keeps what one benchmark of one repetition reports, and prints nothing.
class SilentReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& report) override { run_ = report.front(); }
    const Run& run() const { return run_; }

private:
    Run run_;
};

struct Timing {
    benchmark::IterationCount passes;
    double nanosecondsPerPass;
    double seconds() const { return static_cast<double>(passes) * nanosecondsPerPass / 1e9; }
};

/// One of the two sides of a row.
struct Side {
    const std::function<void(benchmark::State&)>& passes;
    Clock clock;

    /// As many passes as fill `seconds`, after a few that warm the caches.
    Timing runFor(double seconds) const {
        registered()->MinTime(seconds);
        return runRegistered();
    }
    Timing runTimes(benchmark::IterationCount count) const {
        registered()->Iterations(count);
        return runRegistered();
    }

private:
    benchmark::internal::Benchmark* registered() const {
        auto* const one = benchmark::RegisterBenchmark("passes", passes)->Unit(benchmark::kNanosecond);
        return clock == Clock::wall ? one->UseRealTime() : one;
    }

    Timing runRegistered() const {
        SilentReporter reporter;
        benchmark::RunSpecifiedBenchmarks(&reporter, ".");
        benchmark::ClearRegisteredBenchmarks();
        const auto& run = reporter.run();
        return {run.iterations, clock == Clock::wall ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime()};
    }
};

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// What the turns of one row gave, medians all of them.
struct Found {
    double ours;  // nanoseconds a pass
    double peer;
    double ratio;  // of the peer's time to ours: above 1, ours is the faster
    double more;   // nanoseconds a pass that ours takes above the peer
};

Found takeTurns(const Side& ours, const Side& peer, const Scale& scale) {
    const Timing oursFirst = ours.runFor(scale.secondsPerRun());
    const Timing peerFirst = peer.runFor(scale.secondsPerRun());
    const double turnSeconds = oursFirst.seconds() + peerFirst.seconds();
    const int affordable = static_cast<int>(std::min(scale.secondsPerRow() / turnSeconds, 1e6)) | 1;
    const int turns = std::clamp(affordable, scale.fewestTurns(turnSeconds), scale.mostTurns());
    std::vector<double> oursTimes, peerTimes, ratios, differences;
    for (int turn = 0; turn < turns; ++turn) {
        const bool oursBegins = turn % 2 == 0;
        double oursTime = oursBegins ? ours.runTimes(oursFirst.passes).nanosecondsPerPass : 0;
        const double peerTime = peer.runTimes(peerFirst.passes).nanosecondsPerPass;
        if (!oursBegins) oursTime = ours.runTimes(oursFirst.passes).nanosecondsPerPass;
        oursTimes.push_back(oursTime);
        peerTimes.push_back(peerTime);
        ratios.push_back(peerTime / oursTime);
        differences.push_back(oursTime - peerTime);
    }
    return {medianOf(oursTimes), medianOf(peerTimes), medianOf(ratios), medianOf(differences)};
}

template <class... Arguments>
__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, Arguments... arguments) {
    char text[128];
    std::snprintf(text, sizeof text, format, arguments...);
    return text;
}

std::string speedText(const Work& work, double nanosecondsPerPass) {
    const auto count = static_cast<double>(work.count);
    if (work.unit == Work::Unit::bytes) return formatted("%.2f GiB/s", count / nanosecondsPerPass * 1e9 / (1 << 30));
    const double nanoseconds = nanosecondsPerPass / count;
    return nanoseconds < 1000 ? formatted("%.1f ns", nanoseconds) : formatted("%.2f us", nanoseconds / 1000);
}

std::string aimText(const Aim& aim) {
    switch (aim.kind) {
        case Aim::Kind::ratioAtLeast:
            return formatted("ratio >= %.2f", aim.value);
        case Aim::Kind::nanosecondsAtMost:
            return formatted("<= %.0f ns", aim.value);
        case Aim::Kind::nanosecondsMoreAtMost:
            return formatted("<= %.0f ns more", aim.value);
        case Aim::Kind::none:
            break;
    }
    return "-";
}

std::string verdictText(const Row& row, const Found& found) {
    const auto calls = static_cast<double>(row.work.count);
    const auto verdict = [](bool met) { return met ? "met" : "MISSED"; };
    switch (row.aim.kind) {
        case Aim::Kind::ratioAtLeast:
            return verdict(found.ratio >= row.aim.value);
        case Aim::Kind::nanosecondsAtMost:
            return verdict(found.ours / calls <= row.aim.value);
        case Aim::Kind::nanosecondsMoreAtMost:
            return formatted("%s, %+.1f ns", verdict(found.more / calls <= row.aim.value), found.more / calls);
        case Aim::Kind::none:
            break;
    }
    return "-";
}

void printRow(const char* what, const char* ours, const char* peer, const char* ratio, const char* aim,
              const char* verdict) {
    std::printf("| %-54s | %13s | %-32s | %5s | %-15s | %-15s |\n", what, ours, peer, ratio, aim, verdict);
    std::fflush(stdout);
}

}  // namespace

Table::Table(std::string_view topic, const Scale& scale) : scale_(scale) {
    std::printf("%.*s\n\n", static_cast<int>(topic.size()), topic.data());
    printRow("what", "ours", "peer", "ratio", "aim", "verdict");
    printRow("---", "---:", "---", "----:", "---", "---");
}

Table::~Table() { std::printf("\n"); }

void Table::measure(const Row& row, const Passes& ours, const Passes& peer) {
    const Found found = takeTurns({ours, row.clock}, {peer, row.clock}, scale_);
    const std::string peerText = speedText(row.work, found.peer) + ", " + row.peer;
    printRow(row.what.c_str(), speedText(row.work, found.ours).c_str(), peerText.c_str(),
             formatted("%.2f", found.ratio).c_str(), aimText(row.aim).c_str(), verdictText(row, found).c_str());
}

void giveUp(std::string_view why) {
    std::fprintf(stderr, "kvutil_bench: %.*s (%s)\n", static_cast<int>(why.size()), why.data(), std::strerror(errno));
    std::exit(1);
}

std::string sizeText(std::uint64_t bytes) {
    if (bytes >= (1 << 20) && bytes % (1 << 20) == 0) return std::to_string(bytes >> 20) + " MiB";
    if (bytes >= (1 << 10) && bytes % (1 << 10) == 0) return std::to_string(bytes >> 10) + " KiB";
    return std::to_string(bytes) + " B";
}

}  // namespace kv::bench
