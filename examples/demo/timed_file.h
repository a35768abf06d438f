// A file of the library that knows how long the library took for it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace demo {

using Seconds = std::chrono::duration<double>;

/// Runs the work and adds the time that it took.
template <class Work>
auto timed(Seconds& total, Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    const auto result = std::forward<Work>(work)();
    total += std::chrono::steady_clock::now() - start;
    return result;
}

class TimedFile {
public:
    enum class Use { read, write, readAndWrite };

    /// Opens what is there for reading; the two other uses begin with an empty file.
    TimedFile(const std::string& locator, Use use);
    ~TimedFile() { close(); }
    TimedFile(const TimedFile&) = delete;
    TimedFile& operator=(const TimedFile&) = delete;

    bool isOpen() const;
    bool attachOutput(const std::string& locator);
    /// All bytes or none count: a short transfer is a failure here.
    bool read(std::span<std::byte> bytes);
    bool write(std::span<const std::byte> bytes);
    /// Up to that many bytes; how many there were.
    std::size_t readSome(std::span<std::byte> bytes);
    bool seek(std::uint64_t position);
    std::uint64_t size();
    /// Whether the data have arrived.
    bool close();

    /// The time spent in the library since the last call of this.
    Seconds takeTime() { return std::exchange(time_, Seconds{}); }

private:
    Seconds time_{};
    std::int64_t handle_;
};

}  // namespace demo
