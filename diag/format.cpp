// Most messages need no more than %s, and whole numbers with leading zeros or none. One conversion that is not made
// here, a null text, or a message that does not fit, and the whole of it goes to vsnprintf: there is no other way for
// the two to agree.
#include "diag/format.h"

#include <charconv>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace kv::diag {
namespace {

/// What stands between "%" and the letter of a conversion.
struct Directive {
    std::size_t zeroPaddedTo = 0;
    int longs = 0;
    char letter = '\0';
};

/// Arguments in the order of the format. A copy: the caller's own are still whole when this one gave up.
class Arguments {
public:
    explicit Arguments(std::va_list given) { va_copy(list_, given); }
    ~Arguments() { va_end(list_); }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    const char* text() { return va_arg(list_, const char*); }
    char character() { return static_cast<char>(va_arg(list_, int)); }
    std::int64_t number(int longs) {
        if (longs == 0) return va_arg(list_, int);
        return longs == 1 ? va_arg(list_, long) : va_arg(list_, long long);
    }
    std::uint64_t unsignedNumber(int longs) {
        if (longs == 0) return va_arg(list_, unsigned);
        return longs == 1 ? va_arg(list_, unsigned long) : va_arg(list_, unsigned long long);
    }

private:
    std::va_list list_;
};

class Formatter {
public:
    Formatter(char* out, std::size_t size) : begin_(out), at_(out), end_(out + size - 1) {}

    /// False as soon as something is not for here.
    bool format(const char* text, Arguments& arguments) {
        for (;;) {
            const char* percent = text;
            while (*percent != '%' && *percent != '\0') ++percent;
            if (!add(text, static_cast<std::size_t>(percent - text))) return false;
            if (*percent == '\0') break;
            const Directive directive = read(++percent);
            if (!convert(directive, arguments)) return false;
            text = percent + 1;
        }
        *at_ = '\0';
        return true;
    }

    std::size_t length() const { return static_cast<std::size_t>(at_ - begin_); }

private:
    std::size_t room() const { return static_cast<std::size_t>(end_ - at_); }

    /// Leaves `text` on the letter.
    static Directive read(const char*& text) {
        Directive directive;
        if (*text == '0') {
            for (++text; *text >= '0' && *text <= '9' && directive.zeroPaddedTo < 100; ++text) {
                directive.zeroPaddedTo = directive.zeroPaddedTo * 10 + static_cast<std::size_t>(*text - '0');
            }
        }
        for (; *text == 'l' && directive.longs < 2; ++text) ++directive.longs;
        directive.letter = *text;
        return directive;
    }

    bool convert(const Directive& directive, Arguments& arguments) {
        switch (directive.letter) {
            case 's':
                return isPlain(directive) && addText(arguments.text());
            case 'c':
                return isPlain(directive) && addCharacter(arguments.character());
            case 'd':
            case 'i':
                return addNumber(directive, arguments.number(directive.longs), 10);
            case 'u':
                return addNumber(directive, arguments.unsignedNumber(directive.longs), 10);
            case 'x':
            case 'X':
                return addNumber(directive, arguments.unsignedNumber(directive.longs), 16);
            case '%':
                return isPlain(directive) && addCharacter('%');
            default:
                return false;
        }
    }

    static bool isPlain(const Directive& directive) { return directive.zeroPaddedTo == 0 && directive.longs == 0; }

    bool add(const char* bytes, std::size_t count) {
        if (count > room()) return false;
        std::memcpy(at_, bytes, count);
        at_ += count;
        return true;
    }

    bool addText(const char* text) { return text != nullptr && add(text, strnlen(text, room() + 1)); }

    bool addCharacter(char c) { return c != '\0' && add(&c, 1); }

    template <std::integral Number>
    bool addNumber(const Directive& directive, Number value, int base) {
        char digits[24] = {};
        char* last = std::to_chars(digits, digits + sizeof digits, value, base).ptr;
        const char* first = digits;
        if (*first == '-') {
            if (!add(first++, 1)) return false;
        }
        if (directive.letter == 'X') {
            for (char* digit = digits; digit != last; ++digit) {
                if (*digit >= 'a') *digit = static_cast<char>(*digit - 'a' + 'A');
            }
        }
        // Only the digits are left to count; a sign took its place of the width.
        const auto width = static_cast<std::size_t>(last - digits);
        for (std::size_t filled = width; filled < directive.zeroPaddedTo; ++filled) {
            if (!add("0", 1)) return false;
        }
        return add(first, static_cast<std::size_t>(last - first));
    }

    char* begin_;
    char* at_;
    char* end_;  // where the terminator stands at the latest
};

/// A conversion can fail, as that of a wide letter that the locale can't write. What came ahead of it is the message,
/// or where nothing did, the format.
std::size_t lengthOfFailed(char* out, std::size_t size, const char* format) {
    out[size - 1] = '\0';
    if (*out == '\0') {
        const std::size_t length = strnlen(format, size - 1);
        std::memcpy(out, format, length);
        out[length] = '\0';
    }
    return std::strlen(out);
}

}  // namespace

std::size_t formatMessage(char* out, std::size_t size, const char* format, std::va_list arguments) {
    Formatter formatter(out, size);
    Arguments copied(arguments);
    if (formatter.format(format, copied)) return formatter.length();
    *out = '\0';
    const int length = std::vsnprintf(out, size, format, arguments);
    if (length < 0) return lengthOfFailed(out, size, format);
    return static_cast<std::size_t>(length) < size ? static_cast<std::size_t>(length) : size - 1;
}

}  // namespace kv::diag
