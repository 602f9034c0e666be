/// `ZANFieldGroup`: the body of a message, and of each instance of a repeating group in it.
///
/// Threads: a group and everything that is reached from it belong to one thread at a time.
#ifndef ZANENGINE_MESSAGE_ZANFIELDGROUP_H
#define ZANENGINE_MESSAGE_ZANFIELDGROUP_H

#include "infra/Export.h"
#include "infra/SmallObjects.h"
#include "infra/Value.h"
#include "infra/counted_ptr.h"
#include "message/FieldGroupRanges.h"
#include "message/ZANField.h"
#include "message/ZANIterator.h"

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace zan {

struct GroupAccess;

template <class T>
inline constexpr bool isPointerButNoText =
    (std::is_pointer_v<T> || std::is_member_pointer_v<T>)&&!std::is_convertible_v<T, char const*>;

} // namespace zan

/// Fields by tag, at most one for a tag, and sub-groups: under each group tag the instances of that
/// repeating group in the order in which they were added. The number of instances is the length
/// of that list; no count field is kept.
///
/// Fields and sub-groups are shared: what `getField`, `getGroup` and the iterators hand out is the
/// object in the group, and changing it changes the group. What is absent is answered with an
/// empty pointer. Copying a group copies everything in it.
class ZAN_API ZANFieldGroup {
public:
    using FieldIterator = ZANIterator<counted_ptr<ZANField>>;
    using GroupIterator = ZANIterator<counted_ptr<ZANFieldGroup>>;

    /// An empty group; `groupTag` is the tag under which a parent files it.
    explicit ZANFieldGroup(int groupTag = 0);

    /// A message body with its message type (tag 35) and protocol version (tag 8); group tag 0.
    explicit ZANFieldGroup(std::string const& msgType);
    ZANFieldGroup(std::string const& msgType, std::string const& protocolVersion);

    /// Deep copies: no field and no sub-group is shared with `other`. A field or sub-group of a
    /// derived class is copied as a plain one. Assigning a group to itself changes nothing. Where
    /// an assignment throws (`std::bad_alloc`, or what an operation of `other` throws) the group is
    /// as it was; one of a derived class, whose own operations are called one after the other
    /// (`clear`, `setGroupTag`, then `addField` and `addGroup` for each copy), holds what they have
    /// stored so far.
    ZANFieldGroup(ZANFieldGroup const& other);
    ZANFieldGroup& operator=(ZANFieldGroup const& other);

    virtual ~ZANFieldGroup();

    /// The tag is read when the group is added to a parent; later changes do not move it there.
    virtual void setGroupTag(int groupTag);
    virtual int getGroupTag() const;

    /// Whether there are neither fields nor sub-groups.
    virtual bool empty() const;

    /// Shares `field` under its own tag and replaces a field that stands there. An empty pointer is
    /// ignored.
    virtual void addField(counted_ptr<ZANField> field);

    /// Set the value of the field with this tag, and add the field when there is none. A field that
    /// exists keeps its type code, also when the new value has another type. An `int` is stored
    /// as a `long`.
    virtual void setFieldValue(int tag, char value);
    virtual void setFieldValue(int tag, bool value);
    virtual void setFieldValue(int tag, double value);
    virtual void setFieldValue(int tag, long value);
    virtual void setFieldValue(int tag, int value);
    virtual void setFieldValue(int tag, std::string const& value);
    virtual void setFieldValue(int tag, Value const& value);

    /// Forwards to the string operation: a text literal would become a `bool` without it.
    /// `InfraException` for a null pointer.
    void setFieldValue(int tag, char const* value);

    /// Forward to the `long` operation. `InfraException` for a number that is no `long`.
    void setFieldValue(int tag, long long value);
    void setFieldValue(int tag, unsigned value);
    void setFieldValue(int tag, unsigned long value);
    void setFieldValue(int tag, unsigned long long value);

    /// Forwards to the string operation. A template, so that what converts to both kinds of string
    /// goes on to choose `std::string`.
    template <class View, std::enable_if_t<std::is_same_v<View, std::string_view>, int> = 0>
    void setFieldValue(int tag, View value) {
        setFieldValue(tag, std::string(value));
    }

    /// No other pointer is a value: it would become a `bool`.
    template <class Pointer, std::enable_if_t<zan::isPointerButNoText<Pointer>, int> = 0>
    void setFieldValue(int tag, Pointer value) = delete;

    /// An absent tag is ignored.
    virtual void removeField(int tag);

    /// The field with this tag; empty when there is none.
    virtual counted_ptr<ZANField> getField(int tag);
    virtual counted_ptr<ZANField> getField(int tag) const;
    virtual bool isFieldPresent(int tag) const;
    virtual bool isFieldsEmpty() const;

    /// Stands on the lowest tag and walks upwards. It looks at the group itself: it must not
    /// outlive it, and adding or removing a field ends it.
    virtual counted_ptr<ZANIterator<counted_ptr<ZANField>>> fieldIterator();
    virtual counted_ptr<ZANIterator<counted_ptr<ZANField>>> fieldIterator() const;

    /// Shares `group` as the last instance under its own group tag. An empty pointer is ignored.
    virtual void addGroup(counted_ptr<ZANFieldGroup> group);

    virtual int getGroupCount(int groupTag) const;

    /// The instance at an index from 0; empty when the tag is absent or the index out of range.
    virtual counted_ptr<ZANFieldGroup> getGroup(int groupTag, int index);
    virtual counted_ptr<ZANFieldGroup> getGroup(int groupTag, int index) const;

    /// Searches with a stop rule that only the number of instances fulfils: with `index` equal to
    /// `getGroupCount(groupTag)` the last instance is released, and the tag with it when it was the
    /// only one; any other index changes nothing. To remove the instance at an index use
    /// `eraseGroup`.
    virtual void removeGroup(int groupTag, int index);

    /// Removes all instances of the tag; an absent tag is ignored.
    virtual void removeGroup(int groupTag);

    virtual bool isGroupPresent(int groupTag) const;
    virtual bool isGroupsEmpty() const;

    /// Walks over the instances of one tag; an empty pointer, not an empty iterator, when the tag
    /// is absent. It looks at the group itself: it must not outlive it, and adding or removing an
    /// instance of the tag ends it.
    virtual counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> groupIterator(int groupTag);
    virtual counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> groupIterator(int groupTag) const;

    /// Walks over all instances that the group has now, by ascending group tag and then in their
    /// order; never an empty pointer. It holds the instances itself: what is removed later is
    /// still visited.
    virtual counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> groupIterator();
    virtual counted_ptr<ZANIterator<counted_ptr<ZANFieldGroup>>> groupIterator() const;

    /// Sets the group tag to 0 and removes all fields and sub-groups. It needs no memory.
    virtual void clear();

    /// Set tag 8 and tag 35.
    virtual void setProtocolVersion(std::string const& protocolVersion);
    virtual void setMsgType(std::string const& msgType);

    /// Removes the instance at an index from 0 and closes the gap; with the last instance the tag
    /// goes. False, and nothing changes, when the tag is absent or the index out of range.
    bool eraseGroup(int groupTag, int index);

    // Readers. What they answer is a copy. They read through `getField`, `fieldIterator`,
    // `getGroupCount` and `getGroup`, so a derived class that overrides these is read rightly.

    /// The value of the field with this tag; empty when there is none.
    [[nodiscard]] std::optional<Value> find(int tag) const;

    /// Whether there is a field with this tag.
    [[nodiscard]] bool has(int tag) const;

    /// The number of fields, without those of sub-groups. It counts them.
    [[nodiscard]] std::size_t size() const;

    /// The value of the field with this tag, or the default when there is none: as its text, or
    /// read as a number, a bool or a char as `Value` reads it. A value that cannot be read so is an
    /// `InfraException` with the tag and the text, and never the default.
    [[nodiscard]] std::string getString(int tag, std::string_view defaultValue = {}) const;
    std::string getString(int tag, std::nullptr_t) const = delete;
    [[nodiscard]] long getLong(int tag, long defaultValue) const;
    [[nodiscard]] int getInt(int tag, int defaultValue) const;
    [[nodiscard]] double getDouble(int tag, double defaultValue) const;
    [[nodiscard]] bool getBool(int tag, bool defaultValue) const;
    [[nodiscard]] char getChar(int tag, char defaultValue) const;

    /// `for (ZANField const& field : group)`: the fields by ascending tag.
    [[nodiscard]] zan::FieldCursor begin() const;
    [[nodiscard]] zan::FieldCursor end() const;

    /// `for (ZANFieldGroup const& leg : group.instances(555))`: the instances of one tag in their
    /// order; none when the tag is absent.
    [[nodiscard]] zan::InstanceRange instances(int groupTag) const;

    static void* operator new(std::size_t size) { return zan::allocateSmall(size); }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* group, std::size_t size) noexcept {
        zan::releaseSmall(group, size);
    }

private:
    friend struct zan::GroupAccess; // reads and fills plain groups without a call for each field

    struct Storage;

    [[nodiscard]] bool isPlain() const;
    void assignPlain(ZANFieldGroup const& other);
    void copyFrom(ZANFieldGroup const& other);
    void copyByOperations(ZANFieldGroup const& other);
    void copyPlainFields(ZANFieldGroup const& other);
    void copyOddFields(FieldIterator&& others);
    void copyPlainGroups(ZANFieldGroup const& other);
    template <class Payload>
    void putValue(int tag, Payload const& payload);
    template <class Payload>
    static void setByOperation(counted_ptr<ZANField> field, Payload const& payload);

    counted_ptr<Storage> storage_;
};

/// Writes the group over several lines: a start line, its fields by ascending tag, its sub-groups
/// four blanks deeper, an end line. Each line is flushed.
ZAN_API std::ostream& operator<<(std::ostream& os, ZANFieldGroup const& group);

#endif
