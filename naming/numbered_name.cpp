// Numbers at the end of names: found by GetBaseName, put there by BuildFileName and MakeNumberedFileName.
//
// The search never takes the first character of a name for part of a run, and decides about it afterwards: that is
// where the odd results of short names come from.
#include "naming/numbered_name.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

#include "border/text.h"
#include "kvos/naming.h"
#include "naming/append.h"
#include "naming/path_parts.h"

namespace kv::naming {
namespace {

constexpr std::size_t kLongestRun = 10;

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
bool isWildcard(char c) noexcept { return c == '*' || c == '?'; }

/// The value of a run of at most eleven digits, cut to 32 bits: such a number wraps, it does not saturate.
std::int32_t valueOf(std::string_view digits) noexcept {
    std::uint64_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

/// The run at the end: digits, or wildcards and what digits stand behind them. Never the first character.
std::string_view trailingRun(std::string_view name) noexcept {
    std::size_t start = name.size();
    bool wild = false;
    while (start > 1 && name.size() - start < kLongestRun) {
        const char c = name[start - 1];
        if (!isWildcard(c) && (wild || !isDigit(c))) break;
        wild = wild || isWildcard(c);
        --start;
    }
    return name.substr(start);
}

NumberedName readSingle(std::string_view name) noexcept {
    if (isDigit(name[0])) return {valueOf(name), {}, 1};
    if (name[0] == '*') return {0, {}, 1};  // meant: a lone star stands for a number of one digit
    return {0, name, 0};
}

/// A decimal number with zeros ahead of it, ahead of its sign as well, up to `width` characters.
struct PaddedNumber {
    border::PathBuffer buffer;
    std::size_t length;

    PaddedNumber(std::int32_t number, std::size_t width) noexcept {
        char plain[16];
        const auto plainLength =
            static_cast<std::size_t>(std::to_chars(plain, plain + sizeof plain, number).ptr - plain);
        const std::size_t zeros = width > plainLength ? width - plainLength : 0;
        std::fill_n(buffer, zeros, '0');
        std::memcpy(buffer + zeros, plain, plainLength);
        length = zeros + plainLength;
    }
    std::string_view text() const noexcept { return {buffer, length}; }
};

}  // namespace

NumberedName readNumber(std::string_view name) noexcept {
    if (name.empty()) return {};
    if (name.size() == 1) return readSingle(name);
    const std::string_view run = trailingRun(name);
    const std::string_view before = name.substr(0, name.size() - run.size());
    if (!run.empty() && isWildcard(run[0])) return {0, before, 0};
    if (before.size() > 1) return {valueOf(run), before, static_cast<std::uint32_t>(run.size())};
    if (isDigit(name[0])) return {valueOf(name), {}, static_cast<std::uint32_t>(name.size())};
    return {0, before, static_cast<std::uint32_t>(run.size())};  // meant: the digits are counted and not read
}

}  // namespace kv::naming

namespace naming = kv::naming;
namespace border = kv::border;

char* BuildFileName(char* pTarget, std::int32_t nNumber, const char* pExtension) {
    if (pTarget == nullptr) return nullptr;
    const std::string_view ext = border::orEmpty(pExtension);
    const std::string_view dot = pExtension == nullptr || ext.starts_with('.') ? "" : ".";
    const naming::PaddedNumber number(nNumber, 0);
    return naming::appendPieces(pTarget, {number.text(), dot, ext}) ? pTarget : nullptr;
}

char* MakeNumberedFileName(const char* pSource, char* pTarget, std::uint64_t nWidth, std::int32_t nNumber) {
    if (pSource == nullptr || pTarget == nullptr) return nullptr;
    const auto width = static_cast<std::uint32_t>(nWidth);
    if (width == 0) return naming::replaceText(pTarget, pSource) ? pTarget : nullptr;
    const auto source = naming::splitPath(pSource, naming::DriveRule::keep);
    if (!source) return nullptr;
    if (width >= border::kPathSize) {
        errno = ENAMETOOLONG;
        return nullptr;
    }
    const naming::PaddedNumber number(nNumber, width);
    return naming::appendPieces(pTarget, {number.text(), source->ext}) ? pTarget : nullptr;
}

std::int32_t GetBaseName(const char* pPath, char* pBase, std::uint32_t* pdwDigits) {
    const auto parts = naming::splitPath(pPath, naming::DriveRule::keep);
    const naming::NumberedName found = parts ? naming::readNumber(parts->name) : naming::NumberedName{};
    if (pBase != nullptr) border::copyText(pBase, border::kPathSize, found.base);
    if (pdwDigits != nullptr) *pdwDigits = found.digits;
    return found.number;
}
