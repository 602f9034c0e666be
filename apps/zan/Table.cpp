#include "apps/zan/Table.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace zan::cli {

namespace {

constexpr std::size_t rowsKept = 500;
constexpr std::size_t gap = 2;
// What the last column gets at least, when others can give something up for it.
constexpr std::size_t leastLast = 12;
constexpr std::size_t least = 4;

} // namespace

TableColumn columnOf(std::string const& title, std::size_t room) {
    bool const holdsTimes = title == "time" || title == "edited" || title == "since";
    return {title, room, holdsTimes};
}

Table::Table(std::vector<TableColumn> columns, std::optional<std::size_t> width, bool isColored)
    : columns_(std::move(columns)), width_(width), isColored_(isColored) {
    for (TableColumn const& column : columns_) {
        wanted_.push_back(widthOf(column.title));
    }
    widths_ = wanted_;
}

void Table::add(std::ostream& out, std::vector<TableCell> row) {
    rows_.push_back(std::move(row));
    if (rows_.size() == rowsKept) {
        flush(out);
    }
}

void Table::flush(std::ostream& out) {
    if (rows_.empty()) {
        return;
    }
    measure();
    if (!std::exchange(hasBegun_, true)) {
        std::vector<TableCell> titles;
        for (TableColumn const& column : columns_) {
            titles.push_back({column.title, false, Tone::Heading});
        }
        out << line(titles) << '\n';
    }
    for (std::vector<TableCell> const& row : std::exchange(rows_, {})) {
        out << line(row) << '\n';
    }
}

// Columns never become narrower: what stands on the terminal already stays in line.
void Table::measure() {
    for (std::vector<TableCell> const& row : rows_) {
        for (std::size_t column = 0; column < wanted_.size(); ++column) {
            wanted_[column] = std::max(wanted_[column], widthOf(row[column].text));
        }
    }
    for (std::size_t column = 0; column < wanted_.size(); ++column) {
        widths_[column] = std::max(wanted_[column], columns_[column].least);
    }
    if (width_) {
        fit(*width_);
    }
}

std::size_t Table::widthOfOthers() const {
    return std::reduce(widths_.begin(), widths_.end() - 1) + gap * (widths_.size() - 1);
}

void Table::fit(std::size_t width) {
    std::size_t const needed = std::min(wanted_.back(), leastLast);
    if (widthOfOthers() + needed > width) {
        // There is no room to spare for rows that come later.
        widths_ = wanted_;
    }
    while (widthOfOthers() + needed > width) {
        auto const widest = std::max_element(widths_.begin(), widths_.end() - 1);
        if (widest == widths_.end() - 1 || *widest <= least) {
            break;
        }
        --*widest;
    }
    widths_.back() = std::max(least, width - std::min(width, widthOfOthers()));
}

std::string Table::line(std::vector<TableCell> const& row) const {
    std::string text;
    for (std::size_t column = 0; column < row.size(); ++column) {
        TableCell const& cell = row[column];
        bool const isLast = column + 1 == row.size();
        std::string const shown = columns_[column].keepsEnd
                                      ? cutBeginning(cell.text, widths_[column])
                                      : cut(cell.text, widths_[column]);
        std::string const colored = toned(shown, cell.tone, isColored_);
        std::string const room(isLast ? 0 : widths_[column] - widthOf(shown), ' ');
        text += cell.isNumber ? room + colored : colored + room;
        text += isLast ? "" : std::string(gap, ' ');
    }
    // What is empty at the end of a row needs no room.
    text.resize(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace zan::cli
