#include "server/sessions/QuickFixMessages.h"

#include "server/sessions/FixScanner.h"

#include <cstdlib>
#include <memory>

namespace zan {
namespace server {

namespace {

// Fields of our own inside a message object; no message on the wire can use them, because they
// are put in after its own fields.
int const textTag = 0x7ffffff0;
int const faultTag = 0x7ffffff1;

bool isSessionsOwn(int tag) {
    switch (tag) {
    case FIX::FIELD::BeginString:
    case FIX::FIELD::BodyLength:
    case FIX::FIELD::MsgType:
    case FIX::FIELD::MsgSeqNum:
    case FIX::FIELD::SenderCompID:
    case FIX::FIELD::TargetCompID:
    case FIX::FIELD::SendingTime:
    case FIX::FIELD::CheckSum:
        return true;
    default:
        return false;
    }
}

// The first one counts, where a field stands twice.
void addOnce(FIX::FieldMap& map, int tag, std::string const& value) {
    if (!map.isSetField(tag))
        map.setField(FIX::FieldBase(tag, value));
}

void addGroups(FIX::DataDictionary& dictionary, std::string const& type,
               MessageGroups const& groups) {
    for (auto const& group : groups) {
        FIX::DataDictionary inside;
        for (int const member : group.second.members)
            inside.addField(member);
        addGroups(inside, type, group.second.nested);
        dictionary.addGroup(type, group.first, group.second.delimiter, inside);
    }
}

void addDataFields(FIX::DataDictionary& dictionary) {
    int const highestLengthTag = 700;
    for (int tag = 1; tag < highestLengthTag; ++tag)
        if (int const data = FixScanner::dataTagOf(tag))
            dictionary.addFieldType(data, FIX::TYPE::Data);
}

} // namespace

void readMessage(std::string const& text, FIX::Message& message) {
    message.clear();
    bool const admin = isAdminText(text);
    bool inHeader = true;
    FixScanner scanner(text);
    while (scanner.next()) {
        inHeader = inHeader && FIX::Message::isHeaderField(scanner.tag());
        if (inHeader)
            addOnce(message.getHeader(), scanner.tag(), scanner.value());
        else if (admin && !FIX::Message::isTrailerField(scanner.tag()))
            addOnce(message, scanner.tag(), scanner.value());
    }
    if (scanner.malformed())
        message.setField(FIX::FieldBase(faultTag, std::to_string(scanner.tag())));
    message.setField(FIX::FieldBase(textTag, text));
}

std::string const& textOf(FIX::Message const& message) {
    return message.getFieldRef(textTag).getString();
}

void checkFields(FIX::Message const& message) {
    if (!message.isSetField(faultTag))
        return;
    int const tag = std::atoi(message.getFieldRef(faultTag).getString().c_str());
    throw FIX::IncorrectDataFormat(tag, "no field: tag=value is expected");
}

// The whole body is the value of its first field: QuickFIX would sort several fields by tag, and
// only adds up their lengths and checksums otherwise.
void writeBody(FixFields const& fields, FIX::Message& message) {
    std::string body;
    int firstTag = 0;
    for (FixField const& field : fields) {
        if (isSessionsOwn(field.tag))
            continue;
        if (FIX::Message::isHeaderField(field.tag)) {
            message.getHeader().setField(FIX::FieldBase(field.tag, field.value));
        } else if (firstTag == 0) {
            firstTag = field.tag;
            body = field.value;
        } else {
            body.append(1, '\x01').append(std::to_string(field.tag)).append(1, '=');
            body.append(field.value);
        }
    }
    if (firstTag != 0)
        message.setField(FIX::FieldBase(firstTag, body));
}

FIX::DataDictionaryProvider makeDictionaries(std::string const& beginString,
                                             GroupDictionary const& groups) {
    std::shared_ptr<FIX::DataDictionary> const dictionary(new FIX::DataDictionary);
    for (auto const& type : groups.messages)
        addGroups(*dictionary, type.first, type.second);
    addDataFields(*dictionary);
    dictionary->checkFieldsOutOfOrder(false);
    dictionary->checkFieldsHaveValues(false);
    dictionary->checkUserDefinedFields(false);
    dictionary->allowUnknownMsgFields(true);
    FIX::DataDictionaryProvider provider;
    provider.addTransportDataDictionary(FIX::BeginString(beginString), dictionary);
    return provider;
}

bool isAdminText(std::string const& text) {
    std::size_t const at = text.find("\x01"
                                     "35=");
    return at != std::string::npos && at + 5 < text.size() && text[at + 5] == '\x01' &&
           std::string("0A12345").find(text[at + 4]) != std::string::npos;
}

} // namespace server
} // namespace zan
