#include "output/table.h"

#include <algorithm>
#include <utility>

namespace orx::orxmaint {

namespace {

constexpr const char* kGap = "  ";

void AppendCell(std::string& line, const std::string& text, size_t width, Table::Align align) {
    const std::string padding(width - DisplayWidth(text), ' ');
    if (align == Table::Align::kRight) {
        line += padding;
        line += text;
    } else {
        line += text;
        line += padding;
    }
}

}  // namespace

size_t DisplayWidth(const std::string& text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

void Table::AddRow(std::vector<std::string> cells) {
    cells.resize(columns_.size());
    rows_.push_back(std::move(cells));
}

void Table::Print(std::ostream& out) const {
    std::vector<size_t> widths;
    widths.reserve(columns_.size());
    for (const Column& column : columns_) {
        widths.push_back(DisplayWidth(column.header));
    }
    for (const auto& row : rows_) {
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    std::string line;
    const auto printRow = [&](const auto& cellAt) {
        line.clear();
        for (size_t i = 0; i < columns_.size(); ++i) {
            if (i > 0) {
                line += kGap;
            }
            AppendCell(line, cellAt(i), widths[i], columns_[i].align);
        }
        // Empty or short cells at the end leave blanks that nobody wants to see or diff.
        line.erase(line.find_last_not_of(' ') + 1);
        line += '\n';
        out << line;
    };
    printRow([this](size_t i) -> const std::string& { return columns_[i].header; });
    for (const auto& row : rows_) {
        printRow([&row](size_t i) -> const std::string& { return row[i]; });
    }
}

}  // namespace orx::orxmaint
