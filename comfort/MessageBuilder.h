/// `zan::MessageBuilder` and `zan::GroupBuilder`: messages and the instances of their repeating
/// groups, field by field.
///
///     engine.sendMessage(ticket, "BROKER",
///                        zan::MessageBuilder(zan::MsgType::NewOrderSingle)
///                            .set(zan::tag::ClOrdID, "order-1")
///                            .set(zan::tag::Side, zan::Side::Buy)
///                            .add(zan::GroupBuilder(zan::tag::NoPartyIDs)
///                                     .set(zan::tag::PartyID, "DESK-7")));
///
/// Threads: a builder belongs to one thread at a time; what it builds shares nothing with it.
#ifndef ZANENGINE_COMFORT_MESSAGEBUILDER_H
#define ZANENGINE_COMFORT_MESSAGEBUILDER_H

#include "comfort/FieldType.h"
#include "comfort/Tag.h"
#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"
#include "message/ZANMessage.h"

#include <string>
#include <string_view>

namespace zan {

class GroupBuilder;

/// What both builders do. Copies are deep.
template <class Self>
class FieldBuilder {
public:
    /// Sets a field, in place of one that is there. A value that does not go with the tag does not
    /// compile: text is set to `Tag<std::string>`, any number or a `Decimal` to `Tag<double>`, a
    /// whole number to `Tag<long>`, and to every other one a value of just its type.
    template <class T, class V>
    Self& set(Tag<T> tag, V const& value) {
        static_assert(
            FieldType<T>::template takes<V>,
            "the value does not go with the tag: the T of its zan::Tag<T> tells what does");
        FieldType<T>::put(fields_, tag.number, value);
        return self();
    }

    /// A tag without a name, or a value in a form of your own: what `ZANFieldGroup::setFieldValue`
    /// takes.
    template <class V>
    Self& set(int tag, V const& value) {
        fields_.setFieldValue(tag, value);
        return self();
    }

    /// The number of instances is the engine's to set: `add` them.
    template <class V>
    Self& set(GroupTag tag, V const& value) = delete;

    /// Adds a copy of the instance as the last one of its group.
    Self& add(GroupBuilder const& instance);

    /// Removes a field; an absent one is ignored.
    Self& remove(int tag) {
        fields_.removeField(tag);
        return self();
    }

    /// What is there so far; valid as long as the builder.
    ZANFieldGroup& fields() { return fields_; }
    ZANFieldGroup const& fields() const { return fields_; }

protected:
    explicit FieldBuilder(int groupTag) : fields_(groupTag) {}
    FieldBuilder(FieldBuilder const&) = default;
    FieldBuilder& operator=(FieldBuilder const&) = default;
    ~FieldBuilder() = default;

private:
    Self& self() { return static_cast<Self&>(*this); }

    ZANFieldGroup fields_;
};

/// One instance of a repeating group.
class GroupBuilder : public FieldBuilder<GroupBuilder> {
public:
    explicit GroupBuilder(GroupTag tag) : FieldBuilder(tag.number) {}
};

/// A message of one type.
class MessageBuilder : public FieldBuilder<MessageBuilder> {
public:
    /// `type` is one of `zan::MsgType`, or any other.
    explicit MessageBuilder(std::string_view type) : FieldBuilder(0) {
        fields().setMsgType(std::string(type));
    }

    /// A message of its own each time: the builder may go on and build the next one.
    counted_ptr<ZANMessage> build() const {
        counted_ptr<ZANFieldGroup> body(new ZANFieldGroup(fields()));
        return counted_ptr<ZANMessage>(new ZANMessage(std::move(body)));
    }

    /// So that it can be sent as it is.
    operator counted_ptr<ZANMessage>() const { return build(); }
};

template <class Self>
Self& FieldBuilder<Self>::add(GroupBuilder const& instance) {
    fields_.addGroup(counted_ptr<ZANFieldGroup>(new ZANFieldGroup(instance.fields())));
    return self();
}

} // namespace zan

#endif
