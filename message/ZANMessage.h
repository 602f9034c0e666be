/// `ZANMessage`: what applications send through the engine proxy and receive in events.
///
/// Threads: a message, and all messages that share its field group, belong to one thread at a time.
#ifndef ZANENGINE_MESSAGE_ZANMESSAGE_H
#define ZANENGINE_MESSAGE_ZANMESSAGE_H

#include "infra/Export.h"
#include "infra/SmallObjects.h"
#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"

#include <cstddef>
#include <iosfwd>

/// A handle on one top-level field group. Copying a message shares the group: a change through one
/// message is seen through the other. For a deep copy copy the field group.
class ZAN_API ZANMessage {
public:
    // The fields that the engine adds to a message that it delivers or retrieves. They are its own
    // and never sent.

    /// When the message was stored: milliseconds since 1970-01-01 00:00:00 UTC.
    static constexpr int TIME_STAMP_TAG = 16577;
    /// Its number within the connection.
    static constexpr int CONNECTION_MESSAGE_ID_TAG = 16580;
    /// Its stream, one of `ZANGuaranteedEngineMessageListener::MessageTypeIds`.
    static constexpr int STREAM_TAG = 16581;

    /// A message without a field group.
    ZANMessage();

    /// Shares `fieldGroup`.
    explicit ZANMessage(counted_ptr<ZANFieldGroup> fieldGroup);
    ZANMessage(ZANMessage const& other);
    ZANMessage& operator=(ZANMessage const& other);
    virtual ~ZANMessage();

    /// Shares `fieldGroup` instead of the group held so far.
    virtual void setFieldGroup(counted_ptr<ZANFieldGroup> fieldGroup);

    /// The group itself, not a copy; empty when the message has none.
    virtual counted_ptr<ZANFieldGroup> getFieldGroup();
    virtual counted_ptr<ZANFieldGroup> getFieldGroup() const;

    /// Field 16577, when the engine stored the message: milliseconds since 1970-01-01 00:00:00 UTC.
    /// The message must have a group and the group that field. `InfraException` when the field
    /// holds no number.
    double getTimeStamp() const;

    /// Field 16580, the engine's number of the message within its connection. As above.
    int getConnectionMessageId() const;

    /// Field 16581, the stream in which the engine keeps the message. As above.
    int getStream() const;

    static void* operator new(std::size_t size) { return zan::allocateSmall(size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* message, std::size_t size) noexcept {
        zan::releaseSmall(message, size);
    }

private:
    counted_ptr<ZANFieldGroup> fieldGroup_;
};

/// Writes the text form of the message's field group, which must not be empty.
ZAN_API std::ostream& operator<<(std::ostream& os, ZANMessage const& message);

#endif
