#include "apps/zan/ShownMessages.h"

#include "apps/zan/ConnectionDictionary.h"
#include "apps/zan/MessageView.h"

namespace zan::cli {

namespace {

std::string titleOf(MessageRow const& row) {
    return "#" + std::to_string(row.id) + " " + row.time + " " + streamName(row.stream) +
           (row.note.empty() ? "" : " (" + row.note + ")");
}

} // namespace

void ShownMessages::addTo(Options& options) {
    options
        .text(list_, "--columns", "COLUMNS",
              "what the table shows, with commas: id, time, stream, type, seq, sender, target, "
              "text, note, fields, and tags by number or name")
        .flag(isDecoded_, "--decode", "show each message field by field")
        .excludes("--columns");
}

void ShownMessages::begin(Session const& session, std::string const& connection, Context& context) {
    useDictionaryOf(session, connection, context.names);
    columns_ = messageColumnsOf(list_, context.names);
    context.output.setColumns(tableColumnsOf(columns_));
}

void ShownMessages::print(MessageRow const& row, Context& context) const {
    MessageRow const shown = context.settings.showsSecrets ? row : withoutSecrets(row);
    Output& output = context.output;
    if (isDecoded_ && output.format() == OutputFormat::Table) {
        printDecoded(shown, context);
        return;
    }
    Record record = messageRecord(shown, columns_, context.names);
    if (isDecoded_) {
        record.emplace_back("decoded", decodedFields(shown.text, context.names));
    }
    output.print(record);
}

void ShownMessages::printDecoded(MessageRow const& row, Context& context) {
    Output& output = context.output;
    output.printText(toned(printable(titleOf(row)), Tone::Heading, output.isColored()) + "\n");
    if (!row.text.empty()) {
        output.printText(viewText(row.text, context.names, output.isColored()));
    }
    output.printText("\n");
}

} // namespace zan::cli
