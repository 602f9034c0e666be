/// Where the results of a command go: a table for people, an object a line for programs, or the
/// bytes of messages as they are.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_OUTPUT_H
#define ZANENGINE_APPS_ZAN_OUTPUT_H

#include "apps/zan/Record.h"
#include "apps/zan/Table.h"

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace zan::cli {

enum class OutputFormat { Table, Json, Raw };

struct OutputSettings {
    OutputFormat format = OutputFormat::Table;
    /// Of the terminal; nothing when the output is none.
    std::optional<std::size_t> width;
    bool isColored = false;
};

class Output {
public:
    /// Writes to this stream, which must live as long.
    Output(std::ostream& out, OutputSettings const& settings);

    OutputFormat format() const { return settings_.format; }
    bool isColored() const { return settings_.isColored; }
    bool isTerminal() const { return settings_.width.has_value(); }
    /// Whether nothing was printed so far.
    bool isEmpty() const { return isEmpty_; }

    /// The fields that a table shows, by their names as titles, the rest being for programs;
    /// without this it shows all of them. Ends the table before.
    void setColumns(std::vector<TableColumn> columns);

    /// A record in the chosen format. Raw: the bytes of its field `text`, with `|` for SOH on a
    /// terminal; `UsageError` when it has none.
    void print(Record const& record);

    /// A text of several lines for people; nothing in the other formats.
    void printText(std::string const& text);

    /// Everything printed so far is out when it returns. Throws `OutputIsClosed`.
    void flush();

private:
    void printRow(Record const& record);
    void printBytes(Record const& record);
    void check();

    std::ostream& out_;
    OutputSettings const settings_;
    std::vector<TableColumn> columns_;
    std::optional<Table> table_;
    bool isEmpty_ = true;
};

} // namespace zan::cli

#endif
