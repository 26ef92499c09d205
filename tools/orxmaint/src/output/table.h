// A table for people: a header row and aligned columns, two spaces apart.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace orx::orxmaint {

class Table {
  public:
    enum class Align { kLeft, kRight };
    struct Column {
        std::string header;
        Align align = Align::kLeft;
    };

    explicit Table(std::vector<Column> columns);

    // Adds one row. A row with fewer cells than columns is padded with empty cells; extra cells
    // are dropped.
    void AddRow(std::vector<std::string> cells);
    size_t RowCount() const { return rows_.size(); }

    // Prints the header and every row. Widths count UTF-8 characters, not bytes. Lines carry no
    // trailing blanks.
    void Print(std::ostream& out) const;

  private:
    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

// Number of characters of UTF-8 text (continuation bytes do not count).
size_t DisplayWidth(const std::string& text);

}  // namespace orx::orxmaint
