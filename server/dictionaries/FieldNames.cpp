#include "server/dictionaries/FieldNames.h"

#include "server/dictionaries/Dictionaries.h"
#include "server/dictionaries/XmlElements.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace zan::server {

namespace {

std::string inSmallLetters(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(), [](unsigned char c) { return std::tolower(c); });
    return small;
}

int numberIn(std::string_view text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// Takes the text up to the separator off the front of `rest`.
std::string_view takeUpTo(char separator, std::string_view& rest) {
    std::size_t const end = std::min(rest.find(separator), rest.size());
    std::string_view const taken = rest.substr(0, end);
    rest.remove_prefix(std::min(rest.size(), end + 1));
    return taken;
}

} // namespace

/// Goes through the elements of a dictionary, whatever they stand in.
class NamesReader {
public:
    NamesReader(std::string_view xml, FieldNames& names) : xml_(xml), names_(names) {}

    void read(std::string const& name) {
        XmlElements::Step step = xml_.next();
        for (; step == XmlElements::Step::Begin || step == XmlElements::Step::End;
             step = xml_.next()) {
            if (step == XmlElements::Step::Begin) {
                takeElement();
            }
        }
        if (step == XmlElements::Step::Broken || names_.fields_.empty()) {
            throw std::runtime_error(
                name + ": no dictionary; an XML file with the fields of FIX in the element "
                       "<fields> would be right");
        }
    }

private:
    void takeElement() {
        std::string const element = xml_.name();
        if (element == "message") {
            names_.messages_.emplace(xml_.attribute("msgtype"), xml_.attribute("name"));
        } else if (element == "field" && !xml_.attribute("number").empty()) {
            field_ = numberIn(xml_.attribute("number"));
            names_.fields_.emplace(field_, xml_.attribute("name"));
            names_.tags_.emplace(inSmallLetters(xml_.attribute("name")), field_);
        } else if (element == "value") {
            names_.values_.emplace(std::pair{field_, xml_.attribute("enum")},
                                   xml_.attribute("description"));
        }
    }

    XmlElements xml_;
    FieldNames& names_;
    int field_ = 0;
};

FieldNames::FieldNames(std::string_view xml, std::string const& name) {
    NamesReader(xml, *this).read(name);
    for (std::string_view rest = valueNames(); !rest.empty();) {
        std::string_view line = takeUpTo('\n', rest);
        int const tag = numberIn(takeUpTo(' ', line));
        std::string_view const value = takeUpTo(' ', line);
        if (tag > 0) {
            values_.emplace(TagAndValue(tag, value), line);
        }
    }
}

void FieldNames::addMissing(FieldNames const& others) {
    fields_.insert(others.fields_.begin(), others.fields_.end());
    tags_.insert(others.tags_.begin(), others.tags_.end());
    messages_.insert(others.messages_.begin(), others.messages_.end());
    values_.insert(others.values_.begin(), others.values_.end());
}

std::string_view FieldNames::ofTag(int tag) const {
    auto const found = fields_.find(tag);
    return found == fields_.end() ? std::string_view() : found->second;
}

std::string_view FieldNames::ofMessage(std::string_view type) const {
    auto const found = messages_.find(type);
    return found == messages_.end() ? std::string_view() : found->second;
}

std::string_view FieldNames::ofValue(int tag, std::string_view value) const {
    auto const found = values_.find(TagAndValue(tag, value));
    return found == values_.end() ? std::string_view() : found->second;
}

int FieldNames::tagOf(std::string_view name) const {
    auto const found = tags_.find(inSmallLetters(name));
    return found == tags_.end() ? 0 : found->second;
}

} // namespace zan::server
