/// `ZANField`: one tag/value pair of a message.
///
/// Threads: a field belongs to one thread at a time.
#ifndef ZANENGINE_MESSAGE_ZANFIELD_H
#define ZANENGINE_MESSAGE_ZANFIELD_H

#include "infra/Export.h"
#include "infra/Value.h"

#include <cstddef>
#include <iosfwd>

/// A tag (the field's number in the protocol), a type code and a typed value. Fields live on the
/// heap and are held by `counted_ptr<ZANField>`; a field group keeps at most one for a tag.
///
/// The type code is kept beside the value: only construction and assignment set both.
class ZAN_API ZANField {
public:
    /// Tag and type 0 and an empty value, to be assigned to.
    ZANField();

    /// `type` is one of the codes of `Value`; it is not compared with the type of `value`.
    ZANField(int tag, int type, Value const& value);
    ZANField(int tag, int type, Value&& value);
    ZANField(ZANField const& other);
    virtual ~ZANField();

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

    static void* operator new(std::size_t size);
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* field, std::size_t size) noexcept;

private:
    int tag_ = 0;
    int type_ = 0;
    Value value_;
};

/// Writes tag, type and value on one line, without a line end.
ZAN_API std::ostream& operator<<(std::ostream& os, ZANField const& field);

#endif
