// kv sys: how busy this machine is, and what it is.
//
// The load is measured between two looks. A single look waits a moment for the second, since the first of a process
// tells of all the time since the machine's start. What a person reads under --watch is one line a look.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/human_size.h"
#include "kv/json_text.h"
#include "kv/moment.h"
#include "kv/printable.h"
#include "kv/standard_streams.h"
#include "kvos/machine.h"

namespace kv::tool {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kSingleLook{200};
constexpr double kShortest_s = 0.05;
constexpr double kLongest_s = 86400;

struct Request {
    std::string path = ".";
    double interval_s = 1;
    bool watch = false;
    bool json = false;
    std::uint64_t count = 0;  // 0: for ever

    milliseconds interval() const { return milliseconds(std::llround(interval_s * 1000)); }
};

struct Volume {
    std::uint64_t free;
    std::uint64_t total;
};

struct Look {
    std::int64_t time;
    std::string computer;
    std::uint32_t cores;
    std::uint32_t logical;
    std::uint32_t load;
    std::uint64_t memory;
    std::optional<std::uint32_t> memoryOfSystem;
    std::optional<std::uint32_t> memoryOfProcess;
    std::optional<std::uint32_t> gpu;
    std::optional<Volume> volume;
};

// ---- looking -----------------------------------------------------------------------------------------------------

/// Waits whatever signals come that do not end the program.
void wait(milliseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    timespec left{static_cast<time_t>(seconds.count()),
                  static_cast<long>(std::chrono::nanoseconds(time - seconds).count())};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

std::string computerName() {
    char name[128] = "";
    kvOSGetComputerName(name);
    return name;
}

std::optional<std::uint32_t> ifKnown(std::uint32_t value) {
    return value == 0xFFFFFFFF ? std::nullopt : std::optional(value);
}

std::optional<Volume> volumeOf(const std::string& path) {
    const Volume volume{zmwGetDiskFreeSpace(path.c_str()), zmwGetDiskTotalSpace(path.c_str())};
    return volume.free == ~std::uint64_t{0} ? std::nullopt : std::optional(volume);
}

Look look(const Request& request) {
    std::uint32_t process = 0xFFFFFFFF;
    std::uint32_t system = 0xFFFFFFFF;
    std::uint64_t memory = 0;
    GetMemoryUsage(&process, &system, &memory);
    return {.time = static_cast<std::int64_t>(std::time(nullptr)),
            .computer = computerName(),
            .cores = kvOSGetNumCpu(0),
            .logical = kvOSGetNumCpu(1),
            .load = GetCpuUsage(),
            .memory = memory,
            .memoryOfSystem = ifKnown(system),
            .memoryOfProcess = ifKnown(process),
            .gpu = ifKnown(GetGpuUsage()),
            .volume = volumeOf(request.path)};
}

// ---- printing ----------------------------------------------------------------------------------------------------

std::string percent(const std::optional<std::uint32_t>& value) {
    return value ? std::to_string(*value) + "%" : std::string("unknown");
}

std::string gpuText(const Look& seen) { return seen.gpu ? percent(seen.gpu) : "none"; }

std::string asText(const Look& seen, const Request& request) {
    std::string text = "Computer    " + printable(seen.computer) + "\n";
    text += "Processors  " + std::to_string(seen.logical) + " logical, " + std::to_string(seen.cores) + " cores\n";
    text += "Load        " + percent(seen.load) + "\n";
    text += "Memory      " + percent(seen.memoryOfSystem) + " of " + humanSize(seen.memory) +
            " in use, what is kept of files included\n";
    text += "This run    " + percent(seen.memoryOfProcess) + " of it\n";
    text += "GPU         " + gpuText(seen) + "\n";
    if (!seen.volume) return text;
    return text + "Volume      " + humanSize(seen.volume->free) + " free of " + humanSize(seen.volume->total) + " at " +
           printable(request.path) + "\n";
}

std::string asLine(const Look& seen) {
    std::string line = localTime(seen.time) + "  load " + percent(seen.load) + "  memory " +
                       percent(seen.memoryOfSystem) + "  GPU " + gpuText(seen);
    if (seen.volume) line += "  free " + humanSize(seen.volume->free);
    return line + "\n";
}

nlohmann::ordered_json orNull(const std::optional<std::uint32_t>& value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json();
}

std::string asJson(const Look& seen, const Request& request) {
    nlohmann::ordered_json document{
        {"time", utcTime(seen.time)},
        {"computer", seen.computer},
        {"processors", {{"logical", seen.logical}, {"cores", seen.cores}}},
        {"load", seen.load},
        {"memory",
         {{"total", seen.memory}, {"system", orNull(seen.memoryOfSystem)}, {"process", orNull(seen.memoryOfProcess)}}},
        {"gpu", orNull(seen.gpu)},
        {"volume", nullptr}};
    if (seen.volume) {
        document["volume"] = {{"path", request.path}, {"free", seen.volume->free}, {"total", seen.volume->total}};
    }
    return request.watch ? jsonLine(document) : jsonText(document);
}

// ---- the command -------------------------------------------------------------------------------------------------

Exit show(const Request& request) {
    if (!volumeOf(request.path)) {
        complainOf("look at", request.path, static_cast<std::uint32_t>(errno));
        return Exit::failed;
    }
    GetCpuUsage();
    if (!request.watch) {
        wait(kSingleLook);
        const Look seen = look(request);
        return writeOut(request.json ? asJson(seen, request) : asText(seen, request));
    }
    for (std::uint64_t done = 0; request.count == 0 || done < request.count; ++done) {
        wait(done == 0 ? std::min(kSingleLook, request.interval()) : request.interval());
        const Look seen = look(request);
        const Exit written = writeOut(request.json ? asJson(seen, request) : asLine(seen));
        if (written != Exit::ok) return written;
    }
    return Exit::ok;
}

}  // namespace

void declareSys(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("sys", "Show how busy this machine is, and the space of a volume");
    command->footer("Example: kv sys /media/clips --watch 5");
    auto request = std::make_shared<Request>();
    addText(*command, "PATH", request->path, "A file or folder on the volume; the working directory unless told");
    auto* watch = command->add_option_function<double>(
        "-w,--watch",
        [request](const double& seconds) {
            request->watch = true;
            request->interval_s = seconds;
        },
        "Look again and again, one line each; every second unless told, until interrupted");
    watch->type_name("SECONDS")->expected(0, 1)->default_str("1")->check(CLI::Range(kShortest_s, kLongest_s));
    command->add_option("-n,--count", request->count, "End after so many looks")
        ->needs(watch)
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 53));
    command->add_flag("--json", request->json, "Print a JSON object; with --watch one a line");
    command->callback([&chosen, request] { chosen = [request] { return show(*request); }; });
}

}  // namespace kv::tool
