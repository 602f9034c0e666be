#include "apps/zan/MessageRow.h"

#include "apps/zan/ExitCodes.h"
#include "errors/ZANEngineException.h"
#include "server/wire/FieldText.h"
#include "server/wire/Secrets.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <sstream>

namespace zan::cli {

namespace {

constexpr std::array streamNames = {"admin-in", "admin-out", "app-in", "app-out", "resent"};
constexpr std::array logColumns = {"id",     "time",   "stream", "type", "seq",
                                   "sender", "target", "text",   "note"};
// The column that holds no column of the log: the fields of the message by their names.
constexpr char const* fieldsColumn = "fields";

bool isLogColumn(std::string const& column) {
    return std::ranges::find(logColumns, column) != logColumns.end();
}

long long numberIn(std::string const& text) {
    long long number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// What the other columns show, and what is the same in every message.
bool isOfTheFrame(int tag) {
    constexpr std::array frame = {8, 9, 10, 34, 35, 49, 52, 56};
    return std::ranges::find(frame, tag) != frame.end();
}

std::string fieldsText(MessageRow const& row, Names& names) {
    std::string text = row.note.empty() ? "" : "(" + row.note + ") ";
    server::FieldNames const& known = names.of(server::valueOf(row.text, 8)).names;
    server::FieldCursor fields(row.text, server::fieldSeparator, server::Reading::Tolerant);
    while (fields.next()) {
        if (!isOfTheFrame(fields.tag())) {
            std::string_view const name = known.ofTag(fields.tag());
            text += (name.empty() ? std::to_string(fields.tag()) : std::string(name)) + "=" +
                    std::string(fields.value()) + " ";
        }
    }
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

} // namespace

MessageRow messageRow(std::vector<std::string> const& row) {
    if (row.size() != logColumns.size()) {
        throw ZANEngineException("the engine's log gave " + std::to_string(row.size()) +
                                 " columns instead of " + messageColumns);
    }
    return {numberIn(row[0]), row[1], numberIn(row[2]), row[3], numberIn(row[4]),
            row[5],           row[6], row[7],           row[8]};
}

MessageRow withoutSecrets(MessageRow row) {
    row.text = server::maskSecrets(row.text);
    row.note = server::maskSecrets(row.note);
    return row;
}

std::vector<std::string> const& usualMessageColumns() {
    static std::vector<std::string> const usual = {"id",   "time", "stream",
                                                   "type", "seq",  fieldsColumn};
    return usual;
}

std::vector<std::string> messageColumnsOf(std::string const& list, Names& names) {
    if (list.empty()) {
        return usualMessageColumns();
    }
    std::vector<std::string> columns = listOf(list);
    for (std::string const& column : columns) {
        if (!isLogColumn(column) && column != fieldsColumn && names.tagOf(column) == 0) {
            throw UsageError("there is no column \"" + column + "\"; one of " + messageColumns +
                             ",fields or a tag by number or name would be right");
        }
    }
    return columns;
}

std::vector<TableColumn> tableColumnsOf(std::vector<std::string> const& columns) {
    static std::map<std::string, std::size_t> const room = {
        {"id", 5}, {"stream", 9}, {"type", 15}, {"seq", 5}};
    std::vector<TableColumn> titled;
    for (std::string const& column : columns) {
        auto const found = room.find(column);
        titled.push_back(columnOf(column, found == room.end() ? 0 : found->second));
    }
    return titled;
}

std::vector<std::string> listOf(std::string const& list) {
    std::vector<std::string> parts;
    std::istringstream rest(list);
    for (std::string part; std::getline(rest, part, ',');) {
        parts.push_back(part);
    }
    return parts;
}

Record messageRecord(MessageRow const& row, std::vector<std::string> const& columns, Names& names) {
    Tone const tone = row.type == "3" || row.type == "j" ? Tone::Bad : Tone::Plain;
    std::string const version(server::valueOf(row.text, 8));
    Record record{{"id", row.id},
                  {"time", row.time, "", Tone::Quiet},
                  {"stream", row.stream, streamName(row.stream)},
                  {"type", row.type, names.typeName(row.type, version), tone},
                  {"seq", row.seq},
                  {"sender", row.sender},
                  {"target", row.target},
                  {"text", row.text},
                  {"note", row.note}};
    for (std::string const& column : columns) {
        if (column == fieldsColumn) {
            record.emplace_back(column, std::monostate(), fieldsText(row, names));
        } else if (!isLogColumn(column)) {
            record.emplace_back(column,
                                std::string(server::valueOf(row.text, names.tagOf(column))));
        }
    }
    return record;
}

std::string streamName(long long stream) {
    bool const isKnown = stream >= 0 && stream < static_cast<long long>(streamNames.size());
    return isKnown ? streamNames[static_cast<std::size_t>(stream)] : std::to_string(stream);
}

long streamOf(std::string const& name) {
    for (std::size_t stream = 0; stream < streamNames.size(); ++stream) {
        if (name == streamNames[stream] || name == std::to_string(stream)) {
            return static_cast<long>(stream);
        }
    }
    if (name == "all") {
        return -1;
    }
    throw UsageError(
        "there is no stream \"" + name +
        "\"; admin-in, admin-out, app-in, app-out, resent, 0 to 4 or all would be right");
}

} // namespace zan::cli
