/// One thing that a command shows: fields by name, the same ones for every thing of its kind.
///
/// Threads: values.
#ifndef ZANENGINE_APPS_ZAN_RECORD_H
#define ZANENGINE_APPS_ZAN_RECORD_H

#include "apps/zan/Terminal.h"

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace zan::cli {

struct RecordField;
using Record = std::vector<RecordField>;

/// A value as programs get it; `nullptr` where there is none, nothing at all for a field that is
/// only for people. Text may hold any bytes. A list of records is for programs alone.
using FieldValue =
    std::variant<std::nullptr_t, bool, long long, std::string, std::monostate, std::vector<Record>>;

struct RecordField {
    RecordField(std::string fieldName, FieldValue fieldValue, std::string shownAs = {},
                Tone shownIn = Tone::Plain)
        : name(std::move(fieldName)), value(std::move(fieldValue)), shown(std::move(shownAs)),
          tone(shownIn) {}

    std::string name;
    FieldValue value;
    /// As people get it; empty: the value itself.
    std::string shown;
    Tone tone;
};

/// The field as people get it.
std::string shownText(RecordField const& field);

/// The record as one object of JSON, in one line without its end. Bytes that are no UTF-8 are
/// replaced; control characters and hidden marks are escapes.
std::string jsonLine(Record const& record);

} // namespace zan::cli

#endif
