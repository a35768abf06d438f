// kv verify: whether two files hold the same bytes.
//
// Not by the library's comparison: it takes two empty files for different ones, and a fault for an end.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>

#include <CLI/CLI.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/progress.h"
#include "kv/source.h"

namespace kv::tool {
namespace {

struct Request {
    std::string first;
    std::string second;
};

/// A file block by block, of which any part can be used up.
class Blocks {
public:
    explicit Blocks(Source& source) : source_(source) {}

    /// Looks for bytes where none are left. False on failure, which is told.
    bool fill() {
        if (!left_.empty()) return true;
        const auto block = source_.next();
        if (block) left_ = *block;
        return block.has_value();
    }
    std::span<const char> left() const { return left_; }
    void use(std::size_t bytes) { left_ = left_.subspan(bytes); }

private:
    Source& source_;
    std::span<const char> left_;
};

Exit tellDifference(const Request& request, const std::string& what) {
    complain("'" + request.first + "' and '" + request.second + "' differ: " + what);
    return Exit::failed;
}

Exit compare(const Request& request, Source& first, Source& second) {
    Blocks left(first);
    Blocks right(second);
    Progress progress(first.size());
    for (std::uint64_t done = 0;;) {
        if (!left.fill() || !right.fill()) return Exit::failed;
        const std::size_t count = std::min(left.left().size(), right.left().size());
        if (count == 0) {
            if (left.left().size() == right.left().size()) return Exit::ok;
            const std::string& shorter = left.left().empty() ? request.first : request.second;
            return tellDifference(request, "'" + shorter + "' ends after " + std::to_string(done) + " bytes");
        }
        const auto [at, other] = std::mismatch(
            left.left().begin(), left.left().begin() + static_cast<std::ptrdiff_t>(count), right.left().begin());
        const auto same = static_cast<std::size_t>(at - left.left().begin());
        if (same != count) return tellDifference(request, "byte " + std::to_string(done + same) + " is the first");
        left.use(count);
        right.use(count);
        done += count;
        progress.add(count);
    }
}

Exit verify(const Request& request) {
    auto first = Source::open(request.first);
    auto second = Source::open(request.second);
    if (!first || !second) return Exit::failed;
    if (first->size() && second->size() && *first->size() != *second->size()) {
        return tellDifference(request,
                              std::to_string(*first->size()) + " and " + std::to_string(*second->size()) + " bytes");
    }
    return compare(request, *first, *second);
}

}  // namespace

void declareVerify(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("verify", "Compare two files byte for byte");
    command->footer(
        "Says nothing about files that are the same, and where they differ about others. Bytes are counted from 0.\n"
        "Example: kv verify clip.mov http://media/clip.mov");
    auto request = std::make_shared<Request>();
    addPositional(*command, "A", request->first, "The one file");
    addPositional(*command, "B", request->second, "The other file");
    command->callback([&chosen, request] { chosen = [request] { return verify(*request); }; });
}

}  // namespace kv::tool
