// kv seq: numbered files as sequences, with what is missing from each.
//
// A sequence is the names that agree but for the number at their end, whatever its width. The library counts by the
// lengths of names instead, which is fast and mixes what happens to be as long.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/file_type.h"
#include "kv/find_pattern.h"
#include "kv/json_text.h"
#include "kv/redirected.h"
#include "kv/standard_streams.h"
#include "kv/table.h"
#include "kvos/attributes.h"
#include "kvos/file.h"
#include "kvos/find.h"
#include "kvos/naming.h"

namespace kv::tool {
namespace {

struct Request {
    std::string pattern;
    bool json = false;
};

/// A name around its number.
struct Numbered {
    std::string base, ext;
    std::uint64_t number;
    std::uint32_t digits;
};

struct Gap {
    std::uint64_t first, last;
};

struct Sequence {
    std::string base, ext;
    std::uint32_t width;                 // of its narrowest number
    std::vector<std::uint64_t> numbers;  // sorted; one twice is two files, as "1" and "01" are
};

// ---- reading names -----------------------------------------------------------------------------------------------

/// Nothing for a name without a number. The number is read here: the library's own reading passes over one that follows
/// a single letter.
std::optional<Numbered> numbered(const std::string& path) {
    char base[4096], name[4096], ext[256];
    std::uint32_t digits = 0;
    kvOSSplitPath(path.c_str(), nullptr, nullptr, name, ext);
    GetBaseName(path.c_str(), base, &digits);
    const std::string whole = name;
    const std::size_t start = std::string_view(base).size();
    if (digits == 0 || start + digits != whole.size()) return std::nullopt;
    const std::string text = whole.substr(start);
    if (text.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    return Numbered{base, ext, std::strtoull(text.c_str(), nullptr, 10), digits};
}

void add(std::vector<Sequence>& sequences, const Numbered& entry) {
    auto place = std::ranges::find_if(
        sequences, [&](const Sequence& known) { return known.base == entry.base && known.ext == entry.ext; });
    if (place == sequences.end()) place = sequences.insert(place, {entry.base, entry.ext, entry.digits, {}});
    place->width = std::min(place->width, entry.digits);
    place->numbers.push_back(entry.number);
}

std::vector<Gap> gapsIn(const Sequence& sequence) {
    std::vector<Gap> gaps;
    std::uint64_t next = sequence.numbers.front();
    for (const std::uint64_t number : sequence.numbers) {
        if (number > next) gaps.push_back({next, number - 1});
        next = number + 1;
    }
    return gaps;
}

/// As a pattern that finds it.
std::string nameOf(const Sequence& sequence) { return sequence.base + std::string(sequence.width, '?') + sequence.ext; }

// ---- finding files -----------------------------------------------------------------------------------------------

/// What to look for: a pattern, and the one sequence of it that counts, if the name of a member was given.
struct Search {
    std::string pattern;
    std::optional<Numbered> member;
};

Search searchFor(const std::string& given) {
    const std::string locator = redirected(given);
    if (!isOnNetwork(locator) && fileType(kvOSGetFileAttributes(locator.c_str())) == FileType::folder) {
        return {withFolder(insideOf(withoutQuotes(locator))), std::nullopt};
    }
    const std::size_t name = locator.rfind('/') + 1;  // 0 without a folder
    const bool hasWildcard = locator.find_first_of("*?", name) != std::string::npos;
    const auto member = hasWildcard ? std::nullopt : numbered(locator.substr(name));
    if (!member) return {withFolder(withName(locator)), std::nullopt};
    const std::string family = withoutQuotes(locator.substr(0, name) + member->base) + "*" + withoutQuotes(member->ext);
    return {withFolder(withName(family)), member};
}

/// Nothing if the enumeration did not even begin.
std::optional<std::vector<Sequence>> sequencesOf(const Search& search) {
    kvOSFindData entry;
    const std::int64_t find = kvOSFindFirstFile(search.pattern.c_str(), &entry);
    if (find == KVFIND_INVALID) return std::nullopt;
    std::vector<Sequence> sequences;
    do {
        if (fileType(entry.dwAttributes) != FileType::file) continue;
        const auto found = numbered(entry.szName);
        if (!found) continue;
        const bool counts = !search.member || (found->base == search.member->base && found->ext == search.member->ext);
        if (counts) add(sequences, *found);
    } while (kvOSFindNextFile(find, &entry) != 0);
    kvOSFindClose(find);
    for (Sequence& sequence : sequences) std::ranges::sort(sequence.numbers);
    return sequences;
}

// ---- showing -----------------------------------------------------------------------------------------------------

std::string asText(const std::vector<Gap>& gaps) {
    std::string text;
    for (const Gap& gap : gaps) {
        if (!text.empty()) text += ",";
        text += std::to_string(gap.first);
        if (gap.last != gap.first) text += "-" + std::to_string(gap.last);
    }
    return text.empty() ? "none" : text;
}

std::string asTable(const std::vector<Sequence>& sequences) {
    Table table({Align::right, Align::right, Align::right, Align::right, Align::left, Align::left});
    table.add({"FIRST", "LAST", "COUNT", "WIDTH", "GAPS", "NAME"});
    for (const Sequence& sequence : sequences) {
        table.add({std::to_string(sequence.numbers.front()), std::to_string(sequence.numbers.back()),
                   std::to_string(sequence.numbers.size()), std::to_string(sequence.width), asText(gapsIn(sequence)),
                   nameOf(sequence)});
    }
    return table.text();
}

std::string asJson(const std::vector<Sequence>& sequences) {
    auto document = nlohmann::ordered_json::array();
    for (const Sequence& sequence : sequences) {
        auto gaps = nlohmann::ordered_json::array();
        for (const Gap& gap : gapsIn(sequence)) gaps.push_back({{"first", gap.first}, {"last", gap.last}});
        document.push_back({{"name", nameOf(sequence)},
                            {"first", sequence.numbers.front()},
                            {"last", sequence.numbers.back()},
                            {"count", sequence.numbers.size()},
                            {"width", sequence.width},
                            {"gaps", gaps}});
    }
    return jsonText(document);
}

Exit tellNothing(const Request& request, const std::string& why) {
    complain("cannot find a sequence in '" + request.pattern + "': " + why);
    if (request.json) writeOut(asJson({}));
    return Exit::failed;
}

Exit show(const Request& request) {
    kvOSSetLastError(0);
    if (redirected(request.pattern).empty() && kvOSGetLastError() != 0) {
        return tellNothing(request, reasonOf(kvOSGetLastError()));
    }
    if (isUrl(request.pattern)) return tellNothing(request, "a URL has no listing");
    const auto sequences = sequencesOf(searchFor(request.pattern));
    if (!sequences) return tellNothing(request, reasonOf(kvOSGetLastError()));
    if (sequences->empty()) return tellNothing(request, "no file there has a number at the end of its name");
    return writeOut(request.json ? asJson(*sequences) : asTable(*sequences));
}

}  // namespace

void declareSeq(CLI::App& app, Chosen& chosen) {
    auto* command = app.add_subcommand("seq", "Tell the sequences of numbered files, and what is missing from them");
    command->footer("Example: kv seq '/media/clip*.tga'");
    auto request = std::make_shared<Request>();
    addPositional(*command, "PATTERN", request->pattern,
                  "A file of the sequence, a folder, or a name in one with * and ? in it");
    command->add_flag("--json", request->json, "Print one JSON array");
    command->callback([&chosen, request] { chosen = [request] { return show(*request); }; });
}

}  // namespace kv::tool
