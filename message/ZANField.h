/// `ZANField`: one tag/value pair of a message.
///
/// Threads: a field belongs to one thread at a time.
#ifndef ZANENGINE_MESSAGE_ZANFIELD_H
#define ZANENGINE_MESSAGE_ZANFIELD_H

#include "infra/Export.h"
#include "infra/SmallObjects.h"
#include "infra/Value.h"
#include "infra/counted_ptr.h"

#include <cstddef>
#include <iosfwd>
#include <typeinfo>
#include <utility>

namespace zan {
struct GroupAccess;
}

/// A tag (the field's number in the protocol), a type code and a typed value. Fields live on the
/// heap and are held by `counted_ptr<ZANField>`; a field group keeps at most one for a tag.
///
/// The type code is kept beside the value: only construction and assignment set both.
class ZAN_API ZANField {
public:
    /// Tag and type 0 and an empty value, to be assigned to.
    ZANField() = default;

    /// `type` is one of the codes of `Value`; it is not compared with the type of `value`.
    ZANField(int tag, int type, Value const& value);
    ZANField(int tag, int type, Value&& value) : tag_(tag), type_(type), value_(std::move(value)) {}
    ZANField(ZANField const& other) = default;
    virtual ~ZANField() = default;

    virtual int getTag() const;
    virtual int getType() const;

    /// The value in the field; valid while the field lives.
    virtual Value const& getValue() const;

    /// Does not move the field inside a group that holds it already: a group files a field under
    /// the tag that it has when it is added.
    virtual void setTag(int tag);
    virtual void setType(int type);

    /// Replaces the value only. The type code stays, also when the new value has another type.
    virtual void setValue(Value const& value);

    /// Takes over tag, type and value, through the virtual operations of both fields.
    virtual ZANField& operator=(ZANField const& other);

    /// Compare tag, type and value, through the virtual operations of both fields.
    virtual bool operator==(ZANField const& other) const;
    virtual bool operator!=(ZANField const& other) const;

    static void* operator new(std::size_t size) { return zan::allocateSmall(size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* field, std::size_t size) noexcept {
        zan::releaseSmall(field, size);
    }

private:
    friend class ZANFieldGroup; // makes and changes plain fields in place
    friend struct zan::GroupAccess;
    friend struct default_destroy_policy<ZANField>;

    /// A field of the type that goes with the payload.
    template <class Payload>
    ZANField(int tag, std::in_place_t inPlace, Payload const& payload)
        : tag_(tag), value_(inPlace, payload) {
        type_ = value_.getType();
    }

    template <class Payload>
    void putValue(Payload const& payload) {
        value_.put(payload);
    }

    int tag_ = 0;
    int type_ = 0;
    Value value_;
};

/// Spares a plain field the virtual call of its destructor, which would do nothing else than to let
/// go of a long text.
template <>
struct default_destroy_policy<ZANField> {
    [[gnu::always_inline]] static void destroy(ZANField* field) {
        if (&typeid(*field) == &typeid(ZANField)) {
            field->value_.dropText();
            zan::releaseSmall(field, sizeof(ZANField));
        } else {
            delete field;
        }
    }
};

/// Writes tag, type and value on one line, without a line end.
ZAN_API std::ostream& operator<<(std::ostream& os, ZANField const& field);

#endif
