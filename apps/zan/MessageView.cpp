#include "apps/zan/MessageView.h"

#include "apps/zan/Terminal.h"
#include "server/wire/FieldText.h"

#include <algorithm>

namespace zan::cli {

namespace {

// Follows a message into its groups and out of them again.
class GroupPath {
public:
    GroupPath(server::CompiledDictionary const& dictionary, std::string_view type)
        : dictionary_(dictionary), top_(dictionary.groupsOf(type).counts) {}

    int depth() const { return static_cast<int>(path_.size()); }

    /// Leaves the groups that the tag is no member of.
    void stepTo(int tag) {
        while (!path_.empty() && !path_.back()->members.find(tag)) {
            path_.pop_back();
        }
    }

    bool isDelimiter(int tag) const { return !path_.empty() && path_.back()->delimiter == tag; }

    /// Enters the group that the tag counts, if it counts one here.
    void enter(int tag) {
        auto const* const placed = (path_.empty() ? top_ : path_.back()->members).find(tag);
        if (placed && placed->group != server::PlacedTag::noGroup) {
            path_.push_back(&dictionary_.group(*placed));
        }
    }

private:
    server::CompiledDictionary const& dictionary_;
    server::PlacedTags const& top_;
    std::vector<server::CompiledGroup const*> path_;
};

std::string meaningOf(server::FieldNames const& names, int tag, std::string_view value) {
    constexpr int type = 35;
    constexpr int referredType = 372;
    bool const isType = tag == type || tag == referredType;
    return std::string(isType ? names.ofMessage(value) : names.ofValue(tag, value));
}

std::string lineOf(ViewedField const& field, bool isColored) {
    std::string const tag = std::to_string(field.tag);
    std::string const name = field.name.empty() ? "?" : field.name;
    std::string const mark = field.beginsInstance ? "- " : "  ";
    std::string const indent(static_cast<std::size_t>(field.depth) * 2, ' ');
    std::string const space(6 - std::min<std::size_t>(tag.size(), 5), ' ');
    std::string line = indent + mark + tag + space + toned(name, Tone::Heading, isColored) + " = " +
                       printable(field.value);
    if (!field.meaning.empty()) {
        line += toned(" (" + field.meaning + ")", Tone::Quiet, isColored);
    }
    return line + "\n";
}

} // namespace

std::vector<ViewedField> viewFields(std::string_view message, Dictionary const& dictionary) {
    std::vector<ViewedField> fields;
    GroupPath path(dictionary.compiled, server::valueOf(message, 35));
    server::FieldCursor cursor(message, server::fieldSeparator, server::Reading::Tolerant);
    while (cursor.next()) {
        int const tag = cursor.tag();
        path.stepTo(tag);
        fields.push_back({tag, std::string(cursor.value()),
                          std::string(dictionary.names.ofTag(tag)),
                          meaningOf(dictionary.names, tag, cursor.value()), path.depth(),
                          path.isDelimiter(tag)});
        path.enter(tag);
    }
    return fields;
}

std::vector<Record> decodedFields(std::string_view message, Names& names) {
    std::vector<Record> fields;
    for (ViewedField const& field : viewFields(message, names.of(server::valueOf(message, 8)))) {
        fields.push_back({{"tag", static_cast<long long>(field.tag)},
                          {"name", field.name},
                          {"value", field.value},
                          {"meaning", field.meaning},
                          {"depth", static_cast<long long>(field.depth)}});
    }
    return fields;
}

std::string viewText(std::string_view message, Names& names, bool isColored) {
    std::string_view const version = server::valueOf(message, 8);
    std::string_view const type = server::valueOf(message, 35);
    std::string const title = names.typeName(type, version);
    std::string text = toned(printable(title), Tone::Good, isColored) + " (" + printable(type) +
                       ", " + printable(version) + ")\n";
    for (ViewedField const& field : viewFields(message, names.of(version))) {
        text += lineOf(field, isColored);
    }
    return text;
}

} // namespace zan::cli
