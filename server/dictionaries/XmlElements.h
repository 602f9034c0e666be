/// The elements of an XML text, one after the other.
#ifndef ZANENGINE_SERVER_DICTIONARIES_XMLELEMENTS_H
#define ZANENGINE_SERVER_DICTIONARIES_XMLELEMENTS_H

#include <memory>
#include <string>
#include <string_view>

struct _xmlTextReader;

namespace zan::server {

/// Reads in a time and memory that grow with the text only; nothing is fetched from elsewhere.
///
/// Threads: one at a time.
class XmlElements {
public:
    enum class Step { Begin, End, AllRead, Broken };

    /// The text has to live as long as this. Throws std::bad_alloc.
    explicit XmlElements(std::string_view xml);
    ~XmlElements();
    XmlElements(XmlElements const&) = delete;
    XmlElements& operator=(XmlElements const&) = delete;

    /// Moves to where the next element begins or ends; an empty one does both.
    Step next();

    std::string name() const;
    /// Empty when the element has no such attribute.
    std::string attribute(char const* name) const;
    /// How many elements this one stands in.
    int depth() const;
    int line() const;

private:
    struct Free {
        void operator()(_xmlTextReader* reader) const;
    };

    std::unique_ptr<_xmlTextReader, Free> reader_;
    bool endsItself_ = false;
};

} // namespace zan::server

#endif
