#include "server/dictionaries/DictionarySource.h"

#include "server/dictionaries/XmlElements.h"

#include <charconv>
#include <fstream>
#include <sstream>
#include <utility>

namespace zan::server {

namespace {

// Goes through the elements and keeps what a dictionary is made of. What is inside elements that
// nobody knows is passed over.
class SourceReader {
public:
    SourceReader(std::string_view xml, std::string const& file) : xml_(xml) { source_.file = file; }

    DictionarySource read() {
        XmlElements::Step step = xml_.next();
        for (; step == XmlElements::Step::Begin || step == XmlElements::Step::End;
             step = xml_.next()) {
            step == XmlElements::Step::Begin ? begin() : end();
        }
        if (step == XmlElements::Step::Broken) {
            fail("the XML is broken here");
        }
        if (source_.fields.empty()) {
            fail("no dictionary; an XML file with the fields of FIX in the element <fields> would "
                 "be right");
        }
        return std::move(source_);
    }

private:
    enum Level { root, section, entry, inside };

    [[noreturn]] void fail(std::string const& what) const {
        throw BadDictionary("cannot read the data dictionary " + source_.file + ":" +
                            std::to_string(xml_.line()) + ": " + what);
    }

    [[noreturn]] void failElement(std::string const& what) const {
        std::string const name = xml_.attribute("name");
        fail("<" + xml_.name() + (name.empty() ? "" : " name=\"" + name + "\"") + ">: " + what);
    }

    void begin() {
        if (++elements_ > DictionaryLimits::elements) {
            failElement("a dictionary may have " + std::to_string(DictionaryLimits::elements) +
                        " elements");
        }
        switch (xml_.depth()) {
        case root:
            beginRoot();
            break;
        case section:
            beginSection();
            break;
        case entry:
            beginEntry();
            break;
        default:
            beginInside();
        }
    }

    void beginRoot() {
        if (xml_.name() != "fix") {
            failElement("no dictionary; <fix> would be right");
        }
        std::string const type = xml_.attribute("type");
        source_.beginString = (type.empty() ? "FIX" : type) + "." + xml_.attribute("major") + "." +
                              xml_.attribute("minor");
    }

    void beginSection() {
        section_ = xml_.name();
        if (SourceList* const list = ownList()) {
            *list = newList(section_);
            open_ = list;
        }
    }

    // The header and the trailer are lists themselves.
    SourceList* ownList() {
        return section_ == "header"    ? &source_.header
               : section_ == "trailer" ? &source_.trailer
                                       : nullptr;
    }

    SourceList newList(std::string name) const {
        std::size_t const at = source_.items.size();
        return {std::move(name), xml_.line(), at, at};
    }

    void beginEntry() {
        std::string const element = xml_.name();
        if (ownList()) {
            addItem();
        } else if (section_ == "messages" && element == "message") {
            beginMessage();
        } else if (section_ == "components" && element == "component") {
            std::string const name = xml_.attribute("name");
            open_ = &source_.components.insert_or_assign(name, newList(name)).first->second;
        } else if (section_ == "fields" && element == "field") {
            addField();
        }
    }

    void beginMessage() {
        std::string type = xml_.attribute("msgtype");
        if (type.empty()) {
            failElement("the attribute msgtype is missing");
        }
        source_.messages.push_back({std::move(type), xml_.attribute("msgcat") == "admin",
                                    newList(xml_.attribute("name"))});
        open_ = &source_.messages.back().list;
    }

    void beginInside() {
        if (section_ == "fields") {
            if (field_ && xml_.name() == "value" && xml_.depth() == inside) {
                field_->values.push_back(xml_.attribute("enum"));
            }
        } else if (open_) {
            addItem();
        }
    }

    void addItem() {
        std::string const element = xml_.name();
        SourceItem item;
        if (element == "group") {
            item.kind = SourceItem::Kind::Group;
        } else if (element == "component") {
            item.kind = SourceItem::Kind::Component;
        } else if (element != "field") {
            return;
        }
        item.name = xml_.attribute("name");
        item.line = xml_.line();
        item.isRequired = xml_.attribute("required") == "Y";
        if (item.name.empty()) {
            failElement("the attribute name is missing");
        }
        if (static_cast<int>(path_.size()) >= DictionaryLimits::depth) {
            failElement("groups may be nested " + std::to_string(DictionaryLimits::depth) +
                        " deep");
        }
        path_.push_back({source_.items.size(), xml_.depth()});
        source_.items.push_back(std::move(item));
    }

    void addField() {
        SourceField field;
        field.name = xml_.attribute("name");
        field.type = xml_.attribute("type");
        std::string const number = xml_.attribute("number");
        char const* const end = number.data() + number.size();
        auto const [stop, error] = std::from_chars(number.data(), end, field.tag);
        if (error != std::errc() || stop != end || field.tag <= 0) {
            failElement("number=\"" + number + "\" is no tag");
        }
        field_ = &source_.fields.insert_or_assign(field.name, std::move(field)).first->second;
    }

    void end() {
        int const depth = xml_.depth();
        if (!path_.empty() && path_.back().depth == depth) {
            source_.items[path_.back().item].end = source_.items.size();
            path_.pop_back();
        }
        bool const isListOver = depth == section || (depth == entry && !ownList());
        if (isListOver && open_) {
            open_->end = source_.items.size();
            open_ = nullptr;
        }
        if (depth == entry) {
            field_ = nullptr;
        }
    }

    struct Open {
        std::size_t item;
        int depth;
    };

    XmlElements xml_;
    DictionarySource source_;
    std::size_t elements_ = 0;
    std::string section_;
    SourceList* open_ = nullptr;
    SourceField* field_ = nullptr;
    std::vector<Open> path_;
};

} // namespace

DictionarySource parseDictionary(std::string_view xml, std::string const& file) {
    if (xml.size() > DictionaryLimits::bytes) {
        throw BadDictionary("cannot read the data dictionary " + file + ": it has " +
                            std::to_string(xml.size()) + " bytes where " +
                            std::to_string(DictionaryLimits::bytes) + " are the limit");
    }
    return SourceReader(xml, file).read();
}

std::string readDictionaryFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text;
    char piece[65536];
    while (file.read(piece, sizeof piece) || file.gcount() > 0) {
        text.append(piece, static_cast<std::size_t>(file.gcount()));
        if (text.size() > DictionaryLimits::bytes) {
            throw BadDictionary("cannot read the data dictionary " + path + ": it has more than " +
                                std::to_string(DictionaryLimits::bytes) + " bytes");
        }
    }
    if (file.bad() || !file.eof()) {
        throw BadDictionary("cannot read the data dictionary " + path +
                            ": the file cannot be read");
    }
    return text;
}

} // namespace zan::server
