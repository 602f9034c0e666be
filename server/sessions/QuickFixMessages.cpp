#include "server/sessions/QuickFixMessages.h"

#include "server/sessions/FixScanner.h"

#include <cstdio>
#include <cstdlib>
#include <numeric>

namespace zan {
namespace server {

namespace {

// Fields of our own inside a message object, above every tag that a scanner takes for one.
int const textTag = 0x7ffffff8;
int const faultTag = 0x7ffffff9;

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

void appendField(std::string& body, int tag, std::string const& value) {
    char digits[12];
    char* const end = digits + sizeof digits;
    char* begin = end;
    *--begin = '=';
    for (int rest = tag; rest > 0; rest /= 10)
        *--begin = static_cast<char>('0' + rest % 10);
    *--begin = '\x01';
    body.append(begin, end).append(value);
}

std::string framed(std::string const& begin, std::string const& inner) {
    std::string text = begin + "9=" + std::to_string(inner.size()) + "\x01" + inner;
    unsigned sum = 0;
    for (char const each : text)
        sum += static_cast<unsigned char>(each);
    char trailer[8];
    std::snprintf(trailer, sizeof trailer, "10=%03u\x01", sum % 256);
    return text += trailer;
}

// Where the parts of a message of ours begin: what follows BodyLength, and the body. A data field
// in the header, and what follows it, counts as body.
struct Parts {
    explicit Parts(std::string const& message)
        : lengthField(message.find('\x01') + 1), inner(message.find('\x01', lengthField) + 1),
          body(inner), end(message.size() - trailerLength) {
        FixScanner scanner(message);
        while (scanner.next() && FIX::Message::isHeaderField(scanner.tag()) &&
               FixScanner::dataTagOf(scanner.tag()) == 0)
            body = scanner.position();
    }
    std::size_t lengthField;
    std::size_t inner;
    std::size_t body;
    std::size_t end;
};

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
}

int malformedTag(FIX::Message const& message) {
    return message.isSetField(faultTag)
               ? std::atoi(message.getFieldRef(faultTag).getString().c_str())
               : -1;
}

void keepText(std::string const& text, FIX::Message& message) {
    message.setField(FIX::FieldBase(textTag, text));
}

std::string const* keptText(FIX::Message const& message) {
    return message.isSetField(textTag) ? &message.getFieldRef(textTag).getString() : nullptr;
}

int sequenceNumber(FIX::Message const& message) {
    FIX::Header const& header = message.getHeader();
    return header.isSetField(FIX::FIELD::MsgSeqNum)
               ? std::atoi(header.getFieldRef(FIX::FIELD::MsgSeqNum).getString().c_str())
               : 0;
}

bool isPossDup(FIX::Message const& message) {
    FIX::Header const& header = message.getHeader();
    return header.isSetField(FIX::FIELD::PossDupFlag) &&
           header.getFieldRef(FIX::FIELD::PossDupFlag).getString() == "Y";
}

// The whole body is the value of its first field: QuickFIX would sort several fields by tag, and
// only adds up their lengths and checksums otherwise.
void writeBody(FixFields const& fields, FIX::Message& message) {
    std::string body;
    body.reserve(std::accumulate(
        fields.begin(), fields.end(), std::size_t(0),
        [](std::size_t sum, FixField const& field) { return sum + field.value.size() + 12; }));
    int firstTag = 0;
    for (FixField const& field : fields) {
        if (isSessionsOwn(field.tag))
            continue;
        if (FIX::Message::isHeaderField(field.tag)) {
            message.getHeader().setField(FIX::FieldBase(field.tag, field.value));
        } else if (firstTag == 0) {
            firstTag = field.tag;
            body.append(field.value);
        } else {
            appendField(body, field.tag, field.value);
        }
    }
    if (firstTag != 0)
        message.setField(FIX::FieldBase(firstTag, body));
}

std::string headOf(std::string const& message) {
    Parts const parts(message);
    return framed(message.substr(0, parts.lengthField),
                  message.substr(parts.inner, parts.body - parts.inner));
}

std::string withBodyOf(std::string const& message, std::string const& head) {
    Parts const inHead(head);
    Parts const inMessage(message);
    std::string inner = head.substr(inHead.inner, inHead.end - inHead.inner);
    inner.append(message, inMessage.body, inMessage.end - inMessage.body);
    return framed(head.substr(0, inHead.lengthField), inner);
}

std::string placeholder(int number) {
    return framed("8=FIX.4.4\x01", "35=0\x01"
                                   "34=" +
                                       std::to_string(number) + "\x01");
}

std::string faultOfLogon(std::string const& logon, FIX::SessionID const& session) {
    std::string const sender = fixValue(logon, FIX::FIELD::SenderCompID);
    std::string const target = fixValue(logon, FIX::FIELD::TargetCompID);
    std::string const them = session.getTargetCompID().getValue();
    std::string const us = session.getSenderCompID().getValue();
    if (sender != them || target != us)
        return "the Logon has SenderCompID " + sender + " and TargetCompID " + target + " where " +
               them + " and " + us + " are right";
    return "SendingTime of the Logon is " + fixValue(logon, FIX::FIELD::SendingTime) +
           ", too far from the time here";
}

bool isAdminText(std::string const& text) {
    static std::string const types = "0A12345";
    std::size_t const at = text.find("\x01"
                                     "35=");
    return at != std::string::npos && at + 5 < text.size() && text[at + 5] == '\x01' &&
           types.find(text[at + 4]) != std::string::npos;
}

} // namespace server
} // namespace zan
