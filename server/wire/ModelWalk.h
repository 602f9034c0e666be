/// Walks over a message's model in the order of the wire, and checks it on the way.
///
/// Threads: a walk belongs to one thread; a dictionary may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_MODELWALK_H
#define ZANENGINE_SERVER_WIRE_MODELWALK_H

#include "infra/ValueText.h"
#include "message/GroupAccess.h"
#include "message/ZANFieldGroup.h"
#include "server/wire/CompiledDictionary.h"
#include "server/wire/FieldText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

/// The text of a field's value; lies in the field or in this object, until the next one is asked
/// for.
class FieldValueText {
public:
    std::string_view of(ZANField const& field) {
        Value const& value = GroupAccess::value(field);
        if (!isDefault_) [[unlikely]] {
            presented_ = value.asString();
            return presented_;
        }
        return value.getType() == Value::STRING ? value.asStringView()
                                                : defaultText(value, digits_);
    }

    /// The value itself where its default text is asked for, and null where another one is.
    Value const* defaultOf(ZANField const& field) const {
        return isDefault_ ? &GroupAccess::value(field) : nullptr;
    }

private:
    bool const isDefault_ = usesDefaultText();
    DigitBuffer digits_;
    std::string presented_;
};

/// A whole number as text.
class NumberText {
public:
    explicit NumberText(std::size_t number)
        : end_(std::to_chars(digits_, digits_ + sizeof digits_, number).ptr) {}
    operator std::string_view() const { return {digits_, end_}; }

private:
    char digits_[20];
    char const* end_;
};

/// What is wrong with a model; each throws `MalformedMessage`.
namespace refusal {
[[noreturn]] void badTag(int tag);
[[noreturn]] void emptyValue(int tag);
[[noreturn]] void separatorInside(int tag);
[[noreturn]] void wrongCount(int tag, std::string_view told, std::size_t instances);
[[noreturn]] void dataMissing(int lengthTag, int dataTag);
[[noreturn]] void wrongLength(int lengthTag, std::string_view told, int dataTag,
                              std::size_t length);
[[noreturn]] void delimiterMissing(int delimiter, int groupTag);
[[noreturn]] void emptyInstance(int groupTag);
/// `groupTag` is 0 for the top level of a message.
[[noreturn]] void stranger(int tag, int groupTag, std::string_view type);
} // namespace refusal

/// The members of all instances that are open, those of the innermost one last.
struct Members {
    /// A field, instances of a group, or both.
    struct Member {
        int tag;
        ZANField const* field;
        InstanceList const* instances;
        PlacedTag const* placed;
    };

    /// Where a member stands in its instance, before its index among the members.
    using Key = std::uint64_t;

    Members() {
        all.reserve(usual);
        keys.reserve(usual);
    }

    void add(Member const& member) {
        keys.push_back(static_cast<Key>(member.placed->position) << 32 | all.size());
        all.push_back(member);
    }

    Member const& inOrder(std::size_t index) const {
        return all[static_cast<std::uint32_t>(keys[index])];
    }

    /// False when the delimiter is not there.
    bool sortFrom(std::size_t first);

    void dropFrom(std::size_t first) {
        keys.resize(first);
        all.resize(first);
    }

    static constexpr std::size_t usual = 64;

    alignas(Member) std::array<std::byte, usual*(sizeof(Member) + sizeof(Key))> place;
    std::pmr::monotonic_buffer_resource resource{place.data(), place.size()};
    std::pmr::vector<Member> all{&resource};
    std::pmr::vector<Key> keys{&resource};
};

/// The tags of an instance that holds usual fields only, and their order on the wire. The instances
/// of a group have the same ones nearly always.
class InstanceLayout {
public:
    using Entries = FieldTable::Entries;

    /// Whether an instance has this layout, or has one that can be learned.
    [[gnu::always_inline]] bool fits(Entries const& entries, CompiledGroup const& rule) {
        if (entries.size != size_ || size_ == 0) {
            return learn(entries, rule);
        }
        int differences = 0;
        for (unsigned i = 0; i < size_; ++i) {
            differences |= entries.tags[i] ^ tags_[i];
        }
        return differences == 0 || learn(entries, rule);
    }

    unsigned size() const { return size_; }
    unsigned index(unsigned position) const { return order_[position]; }

private:
    static constexpr unsigned most = 16;

    bool learn(Entries const& entries, CompiledGroup const& rule);

    unsigned size_ = 0;
    int tags_[most];
    std::uint8_t order_[most];
};

/// Gives the fields of a model one by one to a sink, which has `field(tag, text)` and
/// `field(tag, value)` for usual fields and `data(tag, text)` for those whose text may hold
/// separators; `field` answers whether the text was not empty. All are good until the sink returns.
template <class Sink>
class ModelWalk {
public:
    ModelWalk(CompiledDictionary const& dictionary, Sink& sink)
        : dictionary_(dictionary), sink_(sink) {}

    /// The text of a field at the top of a message, empty when there is none; good until the next
    /// operation.
    std::string_view valueOf(ZANFieldGroup const& message, int tag) {
        auto const* const field = GroupAccess::fields(message).find(tag);
        return field && *field ? text_.of(**field) : std::string_view();
    }

    /// The type of the message, which tells its groups; looks into what the caller has.
    void setType(std::string_view type) {
        type_ = type;
        groups_ = &dictionary_.groupsOf(type);
    }

    /// The top level of a message, as far as it is wanted: by ascending tags, but what a group
    /// could claim for its last instance stands before the first count. Only a plain group, and
    /// after the type.
    template <class Wanted>
    [[gnu::always_inline]] void top(ZANFieldGroup const& message, Wanted wanted) {
        bool hasCount = false;
        merged(
            message, wanted,
            [&](int tag, ZANField const* field, InstanceList const* instances)
                __attribute__((always_inline)) {
                    PlacedTag const* const count = groups_->counts.find(tag);
                    if (hasCount && mayBeMember(tag)) {
                        return; // it is written already
                    }
                    if (count && !hasCount) [[unlikely]] {
                        hasCount = true;
                        writeClaimed(message, tag, wanted);
                    }
                    write(message, 0, tag, field, instances, count);
                });
    }

private:
    using Member = Members::Member;

    static ZANField const* fieldAt(FieldTable::Cursor const& cursor) {
        return cursor.pointer().get();
    }

    static InstanceList const* instancesAt(GroupTable::Cursor const& cursor) {
        return cursor.pointer().get();
    }

    // What stands behind the first count in the order of the tags; groups last, so that they claim
    // nothing here either.
    template <class Wanted>
    [[gnu::noinline]] void writeClaimed(ZANFieldGroup const& message, int firstCount,
                                        Wanted wanted) {
        auto const isClaimed = [&](int tag) {
            return tag > firstCount && mayBeMember(tag) && wanted(tag);
        };
        bool isAnyCount = false;
        merged(message, isClaimed,
               [&](int tag, ZANField const* field, InstanceList const* instances) {
                   if (groups_->counts.find(tag)) {
                       isAnyCount = true;
                   } else {
                       write(message, 0, tag, field, instances, nullptr);
                   }
               });
        if (isAnyCount) {
            merged(message, isClaimed,
                   [&](int tag, ZANField const* field, InstanceList const* instances) {
                       if (PlacedTag const* const count = groups_->counts.find(tag)) {
                           write(message, 0, tag, field, instances, count);
                       }
                   });
        }
    }

    // A data field brings its length.
    bool mayBeMember(int tag) const {
        return groups_->members.find(tag) ||
               (lengthTagOf(tag) != 0 && groups_->members.find(lengthTagOf(tag)));
    }

    template <class Wanted, class Use>
    [[gnu::always_inline]] static void merged(ZANFieldGroup const& group, Wanted wanted, Use use) {
        FieldTable::Cursor fields(GroupAccess::fields(group));
        GroupTable::Cursor groups(GroupAccess::groups(group));
        for (; groups.hasNext(); groups.next()) {
            int const tag = groups.tag();
            useFields(fields, tag, wanted, use);
            bool const isFieldToo = fields.hasNext() && fields.tag() == tag;
            if (wanted(tag)) {
                use(tag, isFieldToo ? fieldAt(fields) : nullptr, instancesAt(groups));
            }
            if (isFieldToo) {
                fields.next();
            }
        }
        useFields(fields, behindAllTags, wanted, use);
    }

    template <class Wanted, class Use>
    [[gnu::always_inline]] static void useFields(FieldTable::Cursor& fields, std::int64_t end,
                                                 Wanted const& wanted, Use const& use) {
        for (; fields.hasNext() && fields.tag() < end; fields.next()) {
            if (wanted(fields.tag())) {
                use(fields.tag(), fieldAt(fields), nullptr);
            }
        }
    }

    // What stands under a tag of a group, whose own tag is 0 at the top.
    [[gnu::always_inline]] void write(ZANFieldGroup const& group, int groupTag, int tag,
                                      ZANField const* field, InstanceList const* instances,
                                      PlacedTag const* placed) {
        bool const isCount = placed && placed->group != PlacedTag::noGroup;
        if (isCount || instances || !field || isLengthOrData(tag) || tag <= 0) [[unlikely]] {
            writeOdd(group, groupTag, tag, field, instances, isCount ? placed : nullptr);
            return;
        }
        writeUsual(tag, *field);
    }

    [[gnu::always_inline]] void writeUsual(int tag, ZANField const& field) {
        Value const* const value = text_.defaultOf(field);
        if (!(value ? sink_.field(tag, *value) : sink_.field(tag, text_.of(field)))) {
            refusal::emptyValue(tag);
        }
    }

    [[gnu::noinline]] void writeOdd(ZANFieldGroup const& group, int groupTag, int tag,
                                    ZANField const* field, InstanceList const* instances,
                                    PlacedTag const* count) {
        if (tag <= 0) {
            refusal::badTag(tag);
        }
        if (instances && !count) {
            refusal::stranger(tag, groupTag, type_);
        }
        if (count && field) {
            checkCount(tag, *field, instances ? instances->instances.size() : 0);
        }
        if (instances) {
            writeGroup(*instances, *count);
        } else if (field && isLengthOrData(tag)) {
            writeLengthOrData(group, tag, *field);
        } else if (field) {
            sink_.field(tag, text_.of(*field));
        }
    }

    void checkCount(int tag, ZANField const& field, std::size_t instances) {
        auto const told = text_.of(field);
        if (told != NumberText(instances)) {
            refusal::wrongCount(tag, told, instances);
        }
    }

    void writeLengthOrData(ZANFieldGroup const& group, int tag, ZANField const& field) {
        std::string_view const text = text_.of(field);
        if (text.empty()) {
            refusal::emptyValue(tag);
        }
        if (int const dataTag = dataTagOf(tag)) {
            checkLength(group, tag, dataTag, text);
        } else {
            sink_.field(lengthTagOf(tag), NumberText(text.size()));
            sink_.data(tag, text);
        }
    }

    // The length is written with the data that it belongs to.
    void checkLength(ZANFieldGroup const& group, int tag, int dataTag, std::string_view told) {
        auto const* const data = GroupAccess::fields(group).find(dataTag);
        if (!data || !*data) {
            refusal::dataMissing(tag, dataTag);
        }
        std::string const toldText(told);
        std::size_t const length = text_.of(**data).size();
        if (toldText != std::string_view(NumberText(length))) {
            refusal::wrongLength(tag, toldText, dataTag, length);
        }
    }

    void writeGroup(InstanceList const& list, PlacedTag const& placed) {
        CompiledGroup const& rule = dictionary_.group(placed);
        sink_.field(placed.tag, NumberText(list.instances.size()));
        InstanceLayout layout;
        for (auto const& instance : list.instances) {
            if (!instance) {
                refusal::emptyInstance(placed.tag);
            }
            if (GroupAccess::isPlain(*instance) && writeFlat(*instance, rule, layout)) {
                continue;
            }
            if (GroupAccess::isPlain(*instance)) {
                writeInstance(*instance, rule);
            } else {
                writeInstance(ZANFieldGroup(*instance), rule);
            }
        }
    }

    // False when it is more than usual fields.
    [[gnu::always_inline]] bool writeFlat(ZANFieldGroup const& instance, CompiledGroup const& rule,
                                          InstanceLayout& layout) {
        auto const entries = GroupAccess::fields(instance).entries();
        if (!GroupAccess::groups(instance).empty() || !layout.fits(entries, rule) ||
            std::find(entries.pointers, entries.pointers + entries.size, nullptr) !=
                entries.pointers + entries.size) {
            return false;
        }
        for (unsigned i = 0; i < layout.size(); ++i) {
            unsigned const index = layout.index(i);
            writeUsual(entries.tags[index], *entries.pointers[index]);
        }
        return true;
    }

    void writeInstance(ZANFieldGroup const& instance, CompiledGroup const& rule) {
        Members& members = members_ ? *members_ : members_.emplace();
        std::size_t const first = members.all.size();
        merged(
            instance, [](int) { return true; },
            [&](int tag, ZANField const* field, InstanceList const* instances) {
                PlacedTag const* const placed = rule.members.find(tag);
                if (!placed) {
                    refusal::stranger(tag, rule.countTag, type_);
                }
                members.add({tag, field, instances, placed});
            });
        if (!members.sortFrom(first)) {
            refusal::delimiterMissing(rule.delimiter, rule.countTag);
        }
        // Those of nested instances come and go behind them, and may move them all.
        for (std::size_t i = first, end = members.keys.size(); i < end; ++i) {
            Member const& member = members.inOrder(i);
            write(instance, rule.countTag, member.tag, member.field, member.instances,
                  member.placed);
        }
        members.dropFrom(first);
    }

    static constexpr std::int64_t behindAllTags = std::int64_t{1} << 31;

    CompiledDictionary const& dictionary_;
    Sink& sink_;
    std::string_view type_;
    TypeGroups const* groups_ = nullptr;
    FieldValueText text_;
    std::optional<Members> members_;
};

} // namespace zan::server

#endif
