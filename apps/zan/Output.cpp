#include "apps/zan/Output.h"

#include "apps/zan/ExitCodes.h"

#include <algorithm>
#include <utility>

namespace zan::cli {

namespace {

RecordField const* find(Record const& record, std::string const& name) {
    auto const found = std::ranges::find(record, name, &RecordField::name);
    return found == record.end() ? nullptr : &*found;
}

TableCell cellOf(RecordField const* field) {
    if (!field) {
        return {};
    }
    bool const isNumber = std::holds_alternative<long long>(field->value) && field->shown.empty();
    return {shownText(*field), isNumber, field->tone};
}

} // namespace

Output::Output(std::ostream& out, OutputSettings const& settings)
    : out_(out), settings_(settings) {}

void Output::setColumns(std::vector<TableColumn> columns) {
    flush();
    table_.reset();
    columns_ = std::move(columns);
}

void Output::print(Record const& record) {
    isEmpty_ = false;
    switch (settings_.format) {
    case OutputFormat::Table:
        printRow(record);
        break;
    case OutputFormat::Json:
        out_ << jsonLine(record) << '\n';
        break;
    case OutputFormat::Raw:
        printBytes(record);
        break;
    }
    check();
}

void Output::printText(std::string const& text) {
    isEmpty_ = false;
    if (settings_.format == OutputFormat::Table) {
        out_ << text;
        check();
    }
}

void Output::flush() {
    if (table_) {
        table_->flush(out_);
    }
    out_.flush();
    check();
}

void Output::printRow(Record const& record) {
    if (!table_) {
        if (columns_.empty()) {
            for (RecordField const& field : record) {
                columns_.push_back(columnOf(field.name));
            }
        }
        table_.emplace(columns_, settings_.width, settings_.isColored);
    }
    std::vector<TableCell> row;
    for (TableColumn const& column : columns_) {
        row.push_back(cellOf(find(record, column.title)));
    }
    table_->add(out_, std::move(row));
}

void Output::printBytes(Record const& record) {
    RecordField const* const text = find(record, "text");
    if (!text) {
        throw UsageError("this command prints no messages, so there is nothing for --raw; --json, "
                         "or neither, would be right");
    }
    auto const& bytes = std::get<std::string>(text->value);
    // A note in the log has no message.
    if (!bytes.empty()) {
        out_ << (isTerminal() ? printable(bytes) : bytes) << '\n';
    }
}

void Output::check() {
    if (!out_) {
        throw OutputIsClosed();
    }
}

} // namespace zan::cli
