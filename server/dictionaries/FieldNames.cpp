#include "server/dictionaries/FieldNames.h"

#include "server/dictionaries/Dictionaries.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <memory>
#include <stdexcept>

#include <libxml/xmlreader.h>

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
class DictionaryReader {
public:
    DictionaryReader(std::string_view xml, std::string const& name)
        : reader_(xmlReaderForMemory(xml.data(), static_cast<int>(xml.size()), name.c_str(),
                                     nullptr,
                                     XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING)) {
        if (!reader_) {
            throw std::runtime_error(name + ": no memory to read the dictionary");
        }
    }

    void readInto(FieldNames& names, std::string const& name) {
        int state = xmlTextReaderRead(reader_.get());
        for (; state == 1; state = xmlTextReaderRead(reader_.get())) {
            if (xmlTextReaderNodeType(reader_.get()) == XML_READER_TYPE_ELEMENT) {
                takeElement(names);
            }
        }
        if (state < 0 || names.fields_.empty()) {
            throw std::runtime_error(
                name + ": no dictionary; an XML file with the fields of FIX in the element "
                       "<fields> would be right");
        }
    }

private:
    struct FreeReader {
        void operator()(xmlTextReader* reader) const { xmlFreeTextReader(reader); }
    };

    void takeElement(FieldNames& names) {
        std::string const element = text(xmlTextReaderConstName(reader_.get()));
        if (element == "message") {
            names.messages_.emplace(attribute("msgtype"), attribute("name"));
        } else if (element == "field" && !attribute("number").empty()) {
            field_ = numberIn(attribute("number"));
            names.fields_.emplace(field_, attribute("name"));
            names.tags_.emplace(inSmallLetters(attribute("name")), field_);
        } else if (element == "value") {
            names.values_.emplace(std::pair{field_, attribute("enum")}, attribute("description"));
        }
    }

    static std::string text(xmlChar const* chars) {
        return chars ? reinterpret_cast<char const*>(chars) : "";
    }

    std::string attribute(char const* name) {
        std::unique_ptr<xmlChar, xmlFreeFunc> const value(
            xmlTextReaderGetAttribute(reader_.get(), reinterpret_cast<xmlChar const*>(name)),
            xmlFree);
        return text(value.get());
    }

    std::unique_ptr<xmlTextReader, FreeReader> reader_;
    int field_ = 0;
};

FieldNames::FieldNames(std::string_view xml, std::string const& name) {
    DictionaryReader(xml, name).readInto(*this, name);
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
