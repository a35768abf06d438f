// Tables as people read them: columns in line, two blanks between them, no blanks at the end of a line.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kv::tool {

enum class Align { left, right };

class Table {
public:
    explicit Table(std::vector<Align> columns) : columns_(std::move(columns)) {}

    /// One cell a column. Only the last column may hold other than ASCII: widths are counted in bytes.
    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    std::string text() const;

private:
    std::size_t widthOf(std::size_t column) const;

    std::vector<Align> columns_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace kv::tool
