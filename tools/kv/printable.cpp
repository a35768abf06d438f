// A name may hold a line end or a terminal's command. Neither reaches the screen.
#include "kv/printable.h"

namespace kv::tool {

std::string printable(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string shown;
    shown.reserve(text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0x20 && byte != 0x7F) {
            shown += character;
        } else {
            shown += "\\x";
            shown += kDigits[byte >> 4];
            shown += kDigits[byte & 0xF];
        }
    }
    return shown;
}

}  // namespace kv::tool
