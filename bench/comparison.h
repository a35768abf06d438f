// One row of a table: the same work done by the library and by its peer, timed in turn in one run.
//
// Ours and the peer take turns, and the ratio is the median of the ratios of those turns, each of two runs that follow
// each other: a neighbour's burst hits both halves of a turn, or falls out with the median. The shown times are medians
// of their own, so that their quotient may differ from the ratio in its last digit.
#pragma once

#include <benchmark/benchmark.h>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kv::bench {

/// How much of everything is measured; --quick gives the smaller sizes.
struct Scale {
    bool quick = false;

    double secondsPerRun() const { return 0.01; }
    double secondsPerRow() const { return quick ? 0.2 : 2; }
    /// Turns of a row, as many as its time allows, and always an odd number so that the median is one of them.
    int fewestTurns(double secondsPerTurn) const { return quick || secondsPerTurn > 3 ? 5 : 11; }
    int mostTurns() const { return quick ? 11 : 75; }
};

/// What one pass of a row does, and so how its time is shown: as bytes a second or as time a call.
struct Work {
    enum class Unit { bytes, calls };
    Unit unit;
    std::uint64_t count;
};
constexpr Work bytesPerPass(std::uint64_t count) { return {Work::Unit::bytes, count}; }
constexpr Work callsPerPass(std::uint64_t count) { return {Work::Unit::calls, count}; }

/// How ours is to stand beside its peer. Printed and judged in the table; nothing fails by it.
struct Aim {
    enum class Kind { none, ratioAtLeast, nanosecondsAtMost, nanosecondsMoreAtMost };
    Kind kind = Kind::none;
    double value = 0;
};
constexpr Aim atLeast(double ratio) { return {Aim::Kind::ratioAtLeast, ratio}; }
constexpr Aim atMostNanoseconds(double value) { return {Aim::Kind::nanosecondsAtMost, value}; }
constexpr Aim atMostMoreNanoseconds(double value) { return {Aim::Kind::nanosecondsMoreAtMost, value}; }

/// The calling thread's time on a processor, the system's work for it included, so that what else runs on the machine
/// is not counted; or the wall's, for work that waits or has threads of its own.
enum class Clock { thread, wall };

struct Row {
    std::string what;
    std::string peer;  // the calls that do the same without the library
    Work work;
    Aim aim = {};
    Clock clock = Clock::thread;
};

/// Prints a topic's table row by row, each as soon as it is measured.
class Table {
public:
    Table(std::string_view topic, const Scale& scale);
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;
    ~Table();

    /// Times one pass of each, called without arguments, and prints the row.
    template <class Ours, class Peer>
    void compare(const Row& row, Ours ours, Peer peer) {
        measure(row, passesOf(std::move(ours)), passesOf(std::move(peer)));
    }

private:
    using Passes = std::function<void(benchmark::State&)>;

    template <class Pass>
    static Passes passesOf(Pass pass) {
        return [pass = std::move(pass)](benchmark::State& state) mutable {
            for ([[maybe_unused]] const auto turn : state) pass();
        };
    }

    void measure(const Row& row, const Passes& ours, const Passes& peer);

    Scale scale_;
};

/// Ends the program: what was to be measured did not work, so that no number would mean anything.
[[noreturn]] void giveUp(std::string_view why);

inline void require(bool holds, std::string_view what) {
    if (!holds) giveUp(what);
}

/// A size in the largest binary unit that divides it: "64 KiB".
std::string sizeText(std::uint64_t bytes);

}  // namespace kv::bench
