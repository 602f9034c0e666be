#include "server/sessions/QuickFixMessages.h"

#include "server/sessions/FixScanner.h"
#include "server/sessions/SequenceNumbers.h"
#include "server/sessions/StandardTags.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <numeric>

#include <quickfix/FieldConvertors.h>

namespace zan {
namespace server {

namespace {

// Fields of our own inside a message object, above every tag that a scanner takes for one.
int const textTag = 0x7ffffff8;
int const faultTag = 0x7ffffff9;
int const reasonTag = 0x7ffffffa;

// 0 where there is no number.
int numberIn(FIX::Message const& message, int tag) {
    return message.isSetField(tag) ? sequenceNumberIn(message.getFieldRef(tag).getString()) : 0;
}

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

// A field of the header that can stand among the others in any order.
bool isPlainHeader(int tag) {
    int const hops = 627;
    int const lastOfHops = 630;
    return standardPlaceOf(tag) == TagPlace::header && !isLengthOrData(tag) &&
           (tag < hops || tag > lastOfHops);
}

// No administrative message has so many. QuickFIX keeps them in their order, so that each further
// one costs more than the one before it.
std::size_t const mostAdminFields = 1000;

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

// Where the parts of a message of ours begin: what follows BodyLength, and the body. The first
// field of the header that is no plain one, and what follows it, counts as body.
struct Parts {
    explicit Parts(std::string const& message)
        : lengthField(message.find('\x01') + 1), inner(message.find('\x01', lengthField) + 1),
          body(inner), end(message.size() - trailerLength) {
        FixScanner scanner(message);
        while (scanner.next() && isPlainHeader(scanner.tag()))
            body = scanner.position();
    }
    std::size_t lengthField;
    std::size_t inner;
    std::size_t body;
    std::size_t end;
};

RejectReason reasonOf(FieldFault fault) {
    switch (fault) {
    case FieldFault::none:
        break;
    case FieldFault::noTag:
        return RejectReason::invalidTag;
    case FieldFault::noValue:
        return RejectReason::noValue;
    case FieldFault::wrongLength:
        return RejectReason::wrongFormat;
    }
    return RejectReason::none;
}

bool isTime(std::string const& text) {
    try {
        FIX::UtcTimeStampConvertor::convert(text);
        return true;
    } catch (FIX::Exception const&) {
        return false;
    }
}

// What the session has to have is there afterwards; the first fault counts.
MessageFault completed(FIX::Header& header, FIX::SessionID const& session, MessageFault fault) {
    auto const note = [&fault](RejectReason reason, int tag) {
        fault = fault ? fault : MessageFault{reason, tag};
    };
    if (!header.isSetField(FIX::FIELD::SenderCompID)) {
        note(RejectReason::requiredTagMissing, FIX::FIELD::SenderCompID);
        header.setField(FIX::SenderCompID(session.getTargetCompID().getValue()));
    }
    if (!header.isSetField(FIX::FIELD::TargetCompID)) {
        note(RejectReason::requiredTagMissing, FIX::FIELD::TargetCompID);
        header.setField(FIX::TargetCompID(session.getSenderCompID().getValue()));
    }
    bool const hasTime = header.isSetField(FIX::FIELD::SendingTime);
    if (!hasTime || !isTime(header.getField(FIX::FIELD::SendingTime))) {
        note(hasTime ? RejectReason::wrongFormat : RejectReason::requiredTagMissing,
             FIX::FIELD::SendingTime);
        header.setField(FIX::SendingTime(FIX::UtcTimeStamp()));
    }
    return fault;
}

char const* const noNumber = "MsgSeqNum (34) is missing or no number";

bool isBeyond(FIX::Message const& message, int tag) {
    return message.isSetField(tag) &&
           sequenceNumberIn(message.getFieldRef(tag).getString()) > largestSequenceNumber;
}

std::string beyond(std::string const& field) {
    return field + " is beyond " + std::to_string(largestSequenceNumber) +
           ", the largest sequence number that is taken here";
}

} // namespace

void readMessage(std::string const& text, Expectations const& expected, FIX::Message& message) {
    message.clear();
    bool const admin = isAdminText(text);
    MessageFault fault;
    FixScanner scanner(text);
    while (scanner.next()) {
        if (scanner.fault() == FieldFault::noValue && expected.takesEmptyValues)
            continue;
        if (scanner.fault() != FieldFault::none)
            fault = fault ? fault : MessageFault{reasonOf(scanner.fault()), scanner.tag()};
        else if (standardPlaceOf(scanner.tag()) == TagPlace::header)
            addOnce(message.getHeader(), scanner.tag(), scanner.value());
        else if (admin && standardPlaceOf(scanner.tag()) == TagPlace::body &&
                 message.totalFields() < mostAdminFields)
            addOnce(message, scanner.tag(), scanner.value());
    }
    if (!fault && expected.check != nullptr)
        fault = expected.check->check(text);
    fault = completed(message.getHeader(), expected.session, fault);
    if (fault) {
        message.setField(FIX::FieldBase(reasonTag, std::to_string(static_cast<int>(fault.reason))));
        message.setField(FIX::FieldBase(faultTag, std::to_string(fault.tag)));
    }
}

MessageFault faultOf(FIX::Message const& message) {
    MessageFault fault;
    if (message.isSetField(reasonTag)) {
        auto const number = [&message](int tag) {
            return std::atoi(message.getFieldRef(tag).getString().c_str());
        };
        fault.reason = static_cast<RejectReason>(number(reasonTag));
        fault.tag = number(faultTag);
    }
    return fault;
}

// Empty where what came in has none that can be read.
static std::string typeIn(FIX::Message const& message) {
    FIX::Header const& header = message.getHeader();
    return header.isSetField(FIX::FIELD::MsgType)
               ? header.getFieldRef(FIX::FIELD::MsgType).getString()
               : std::string();
}

std::string numberFault(FIX::Message const& message) {
    if (!message.getHeader().isSetField(FIX::FIELD::MsgSeqNum))
        return noNumber;
    std::string const& digits = message.getHeader().getField(FIX::FIELD::MsgSeqNum);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos)
        return noNumber;
    std::string const type = typeIn(message);
    if (sequenceNumber(message) > largestSequenceNumber)
        return beyond("MsgSeqNum (34)");
    if (type == FIX::MsgType_SequenceReset && isBeyond(message, FIX::FIELD::NewSeqNo))
        return beyond("NewSeqNo (36)");
    if (type == FIX::MsgType_ResendRequest && isBeyond(message, FIX::FIELD::BeginSeqNo))
        return beyond("BeginSeqNo (7)");
    return std::string();
}

void boundEnd(FIX::Message& message) {
    if (typeIn(message) == FIX::MsgType_ResendRequest && isBeyond(message, FIX::FIELD::EndSeqNo))
        message.setField(FIX::EndSeqNo(0));
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
               ? sequenceNumberIn(header.getFieldRef(FIX::FIELD::MsgSeqNum).getString())
               : 0;
}

bool isPossDup(FIX::Message const& message) {
    FIX::Header const& header = message.getHeader();
    return header.isSetField(FIX::FIELD::PossDupFlag) &&
           header.getFieldRef(FIX::FIELD::PossDupFlag).getString() == "Y";
}

// The whole body is the value of its first field: QuickFIX would sort several fields by tag, and
// only adds up their lengths and checksums otherwise. Whatever has to keep its place in the header
// goes to the front of it, and a signature to its end.
void writeBody(FixFields const& fields, FIX::Message& message) {
    std::string body;
    body.reserve(std::accumulate(
        fields.begin(), fields.end(), std::size_t(0),
        [](std::size_t sum, FixField const& field) { return sum + field.value.size() + 12; }));
    int firstTag = 0;
    for (TagPlace const place : {TagPlace::header, TagPlace::body, TagPlace::trailer})
        for (FixField const& field : fields) {
            if (field.place != place || isSessionsOwn(field.tag))
                continue;
            if (isPlainHeader(field.tag)) {
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

bool rangeAskedFor(FIX::Message const& request, int nextOut, NumberRange& range) {
    range.first = numberIn(request, FIX::FIELD::BeginSeqNo);
    if (range.first <= 0 || !request.isSetField(FIX::FIELD::EndSeqNo))
        return false;
    int const last = numberIn(request, FIX::FIELD::EndSeqNo);
    // 0, and up to FIX 4.2 999999, too, ask for everything.
    std::string const& begin = request.getHeader().getField(FIX::FIELD::BeginString);
    bool const isOpen = last == 0 || (last == 999999 && begin <= FIX::BeginString_FIX42);
    range.last = isOpen ? nextOut - 1 : std::min(last, nextOut - 1);
    return true;
}

void askFor(NumberRange range, FIX::Message& request) {
    request.setField(FIX::BeginSeqNo(range.first));
    request.setField(FIX::EndSeqNo(range.last));
}

void makeRequest(NumberRange range, FIX::SessionID const& session, FIX::Message& request) {
    request.clear();
    request.getHeader().setField(session.getBeginString());
    request.getHeader().setField(FIX::MsgType(FIX::MsgType_ResendRequest));
    request.getHeader().setField(FIX::MsgSeqNum(0));
    request.getHeader().setField(FIX::SenderCompID(session.getTargetCompID().getValue()));
    request.getHeader().setField(FIX::TargetCompID(session.getSenderCompID().getValue()));
    request.getHeader().setField(FIX::SendingTime(FIX::UtcTimeStamp()));
    askFor(range, request);
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

bool beginsInOrder(std::string const& text) {
    std::size_t const type = text.find('\x01', text.find('\x01') + 1) + 1;
    return text.compare(type, 3, "35=") == 0;
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
