#include "server/dictionaries/XmlElements.h"

#include <new>

#include <libxml/xmlreader.h>

namespace zan::server {

namespace {

std::string textOf(xmlChar const* chars) {
    return chars ? reinterpret_cast<char const*>(chars) : "";
}

} // namespace

void XmlElements::Free::operator()(_xmlTextReader* reader) const {
    xmlFreeTextReader(reader);
}

XmlElements::XmlElements(std::string_view xml)
    : reader_(xmlReaderForMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                                 XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                                     XML_PARSE_BIG_LINES)) {
    if (!reader_) {
        throw std::bad_alloc();
    }
}

XmlElements::~XmlElements() = default;

XmlElements::Step XmlElements::next() {
    if (endsItself_) {
        endsItself_ = false;
        return Step::End;
    }
    int state = xmlTextReaderRead(reader_.get());
    for (; state == 1; state = xmlTextReaderRead(reader_.get())) {
        int const type = xmlTextReaderNodeType(reader_.get());
        if (type == XML_READER_TYPE_ELEMENT) {
            endsItself_ = xmlTextReaderIsEmptyElement(reader_.get()) == 1;
            return Step::Begin;
        }
        if (type == XML_READER_TYPE_END_ELEMENT) {
            return Step::End;
        }
    }
    return state == 0 ? Step::AllRead : Step::Broken;
}

std::string XmlElements::name() const {
    return textOf(xmlTextReaderConstName(reader_.get()));
}

std::string XmlElements::attribute(char const* name) const {
    std::unique_ptr<xmlChar, xmlFreeFunc> const value(
        xmlTextReaderGetAttribute(reader_.get(), reinterpret_cast<xmlChar const*>(name)), xmlFree);
    return textOf(value.get());
}

int XmlElements::depth() const {
    return xmlTextReaderDepth(reader_.get());
}

int XmlElements::line() const {
    xmlNodePtr const node = xmlTextReaderCurrentNode(reader_.get());
    return node ? static_cast<int>(xmlGetLineNo(node))
                : xmlTextReaderGetParserLineNumber(reader_.get());
}

} // namespace zan::server
