/// A table for people: columns side by side, in the width of the terminal.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_TABLE_H
#define ZANENGINE_APPS_ZAN_TABLE_H

#include "apps/zan/Terminal.h"

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace zan::cli {

struct TableColumn {
    std::string title;
    /// How wide it is at least, for rows that come later.
    std::size_t least = 0;
    /// Where it must be cut, the beginning goes: of times the end tells more.
    bool keepsEnd = false;
};

/// A column of that title; those that are known to hold times keep their end.
TableColumn columnOf(std::string const& title, std::size_t room = 0);

struct TableCell {
    std::string text;
    bool isNumber = false;
    Tone tone = Tone::Plain;
};

class Table {
public:
    /// Without a width nothing is cut.
    Table(std::vector<TableColumn> columns, std::optional<std::size_t> width, bool isColored);

    /// Takes a row, one cell for each column. Rows are kept until `flush`, or until there are many.
    void add(std::ostream& out, std::vector<TableCell> row);

    /// Writes what was kept; the first time with the titles before it. Columns are as wide as their
    /// widest cell so far, as far as the width allows; the last one gets what is left.
    void flush(std::ostream& out);

private:
    void measure();
    void fit(std::size_t width);
    std::size_t widthOfOthers() const; // than the last, with the gaps
    std::string line(std::vector<TableCell> const& row) const;

    std::vector<TableColumn> const columns_;
    std::optional<std::size_t> const width_;
    bool const isColored_;
    std::vector<std::size_t> wanted_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<TableCell>> rows_;
    bool hasBegun_ = false;
};

} // namespace zan::cli

#endif
