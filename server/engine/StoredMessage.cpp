#include "server/engine/StoredMessage.h"

#include "infra/Time.h"
#include "server/sessions/SequenceNumbers.h"
#include "server/wire/FieldText.h"
#include "server/wire/GroupReader.h"
#include "server/wire/WireText.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace zan::server {

namespace {

constexpr int checkSumTag = 10;
constexpr int numberTag = 34;
constexpr int possDupTag = 43;
constexpr int sendingTimeTag = 52;
constexpr int possResendTag = 97;
constexpr int originalTimeTag = 122;
constexpr std::array addedTags = {ZANMessage::TIME_STAMP_TAG, ZANMessage::CONNECTION_MESSAGE_ID_TAG,
                                  ZANMessage::STREAM_TAG};

void add(std::string& text, int tag, std::string_view value) {
    text.append(std::to_string(tag)).append(1, '=').append(value).append(1, fieldSeparator);
}

bool isFrame(int tag) {
    return tag == 8 || tag == 9 || tag == checkSumTag;
}

// A complete message: the version, the length, the fields in their order, the checksum.
std::string framed(std::string const& beginString, FixFields const& fields) {
    std::string body;
    for (FixField const& field : fields) {
        if (!isFrame(field.tag)) {
            add(body, field.tag, field.value);
        }
    }
    std::string text;
    add(text, 8, beginString);
    add(text, 9, std::to_string(body.size()));
    text += body;
    std::string const digits = std::to_string(1000 + checksumOf(text));
    add(text, checkSumTag, std::string_view(digits).substr(1));
    return text;
}

FixStream streamOf(bool isAdmin, bool isOurs) {
    if (isAdmin) {
        return isOurs ? FixStream::adminOut : FixStream::adminIn;
    }
    return isOurs ? FixStream::appOut : FixStream::appIn;
}

void removeAdded(ZANFieldGroup& fields) {
    for (int const tag : addedTags) {
        fields.removeField(tag);
    }
}

bool isOneOf(int tag, std::initializer_list<int> tags) {
    return std::ranges::find(tags, tag) != tags.end();
}

} // namespace

ZANFieldGroup const& fieldsOf(counted_ptr<ZANMessage> const& message) {
    counted_ptr<ZANFieldGroup> const fields =
        message ? message->getFieldGroup() : counted_ptr<ZANFieldGroup>();
    if (!fields) {
        throw MalformedMessage("the message has no field group");
    }
    return *fields;
}

bool isAdmin(FixStream stream) {
    return stream == FixStream::adminIn || stream == FixStream::adminOut;
}

bool isDelivered(FixOrigin origin) {
    return origin != FixOrigin::inserted && origin != FixOrigin::remark;
}

counted_ptr<ZANMessage> modelOf(FixEntry const& entry, CompiledDictionary const& dictionary,
                                Showing showing) {
    counted_ptr<ZANFieldGroup> const fields =
        readMessage(entry.text, fieldSeparator, Reading::Tolerant, dictionary);
    // A counterparty may send anything under these tags, and as text.
    removeAdded(*fields);
    fields->setFieldValue(ZANMessage::TIME_STAMP_TAG, static_cast<double>(entry.millis));
    fields->setFieldValue(ZANMessage::CONNECTION_MESSAGE_ID_TAG, entry.id);
    fields->setFieldValue(ZANMessage::STREAM_TAG, static_cast<int>(entry.stream));
    if (showing == Showing::PossiblyLost) {
        fields->setFieldValue(possResendTag, "Y");
    } else if (showing == Showing::ForResend) {
        fields->setFieldValue(possDupTag, "Y");
        fields->setFieldValue(originalTimeTag, std::string(valueOf(entry.text, sendingTimeTag)));
    }
    return counted_ptr<ZANMessage>(new ZANMessage(fields));
}

FixEntry internalEntry(OutgoingMessage const& message, ConnectionSettings const& settings) {
    std::string const self = settings.valueOf("SenderCompID");
    FixFields fields = {{messageTypeTag, message.type},
                        {senderTag, self},
                        {sendingTimeTag, infra::Time::now().toString()},
                        {targetTag, self}};
    std::ranges::copy(message.body, std::back_inserter(fields));
    FixEntry entry;
    entry.stream = FixStream::appIn;
    entry.origin = FixOrigin::internal;
    entry.text = framed(settings.valueOf("BeginString"), fields);
    entry.note = "posted by an application";
    return entry;
}

FixEntry insertedEntry(ZANFieldGroup const& message, ConnectionSettings const& settings,
                       CompiledDictionary const& dictionary) {
    bool const isAdminMessage = outgoingFromModel(message, dictionary).isAdmin();
    ZANFieldGroup fields(message);
    removeAdded(fields);
    FixEntry entry;
    entry.origin = FixOrigin::inserted;
    entry.text = wireText(fields, dictionary);
    entry.stream = streamOf(isAdminMessage,
                            valueOf(entry.text, senderTag) == settings.valueOf("SenderCompID"));
    entry.seq = sequenceNumberIn(std::string(valueOf(entry.text, numberTag)));
    return entry;
}

FixOutgoing resendOf(FixEntry const& entry, CompiledDictionary const& dictionary) {
    OutgoingMessage message = outgoingFromText(entry.text, dictionary);
    std::erase_if(message.body, [](FixField const& field) {
        return isOneOf(field.tag, {possDupTag, possResendTag, originalTimeTag});
    });
    message.body.insert(message.body.begin(), {possResendTag, "Y"});
    return {std::move(message.type), std::move(message.body), true};
}

} // namespace zan::server
