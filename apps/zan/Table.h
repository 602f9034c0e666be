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

struct TableCell {
    std::string text;
    bool isNumber = false;
    Tone tone = Tone::Plain;
};

class Table {
public:
    /// Without a width nothing is cut.
    Table(std::vector<std::string> titles, std::optional<std::size_t> width, bool isColored);

    /// Takes a row, one cell for each title. Rows are kept until `flush`, or until there are many.
    void add(std::ostream& out, std::vector<TableCell> row);

    /// Writes what was kept; the first time with the titles before it. Columns are as wide as their
    /// widest cell so far, as far as the width allows; the last one gets what is left.
    void flush(std::ostream& out);

private:
    void measure();
    void fit(std::size_t width);
    std::string line(std::vector<TableCell> const& row) const;

    std::vector<std::string> const titles_;
    std::optional<std::size_t> const width_;
    bool const isColored_;
    std::vector<std::size_t> wanted_;
    std::vector<std::size_t> widths_;
    std::vector<std::vector<TableCell>> rows_;
    bool hasBegun_ = false;
};

} // namespace zan::cli

#endif
