// Control characters are shown after the widths are taken: only the last column can hold any, and it has no width.
#include "kv/table.h"

#include <algorithm>

#include "kv/printable.h"

namespace kv::tool {

std::size_t Table::widthOf(std::size_t column) const {
    std::size_t width = 0;
    for (const auto& row : rows_) width = std::max(width, row[column].size());
    return width;
}

std::string Table::text() const {
    std::vector<std::size_t> widths;
    for (std::size_t column = 0; column < columns_.size(); ++column) widths.push_back(widthOf(column));

    std::string text;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t column = 0; column < columns_.size(); ++column) {
            const std::string blanks(widths[column] - row[column].size(), ' ');
            if (column != 0) line += "  ";
            if (columns_[column] == Align::right) line += blanks;
            line += printable(row[column]);
            if (columns_[column] == Align::left && column + 1 < columns_.size()) line += blanks;
        }
        text += line + "\n";
    }
    return text;
}

}  // namespace kv::tool
