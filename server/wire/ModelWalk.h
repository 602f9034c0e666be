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
        Value const& value = field.getValue();
        if (!isDefault_) [[unlikely]] {
            presented_ = value.asString();
            return presented_;
        }
        return value.getType() == Value::STRING ? value.asStringView()
                                                : defaultText(value, digits_);
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

/// Gives the fields of a model one by one to a sink, which has `field(tag, value)` for usual fields
/// and `data(tag, value)` for those whose value may hold separators. A value is good until the sink
/// returns.
template <class Sink>
class ModelWalk {
public:
    ModelWalk(std::string_view type, CompiledDictionary const& dictionary, Sink& sink)
        : type_(type), dictionary_(dictionary), sink_(sink) {
        entries_.reserve(usualEntries);
    }

    /// The top level of a message, by ascending tags, as far as they are wanted. Only a plain
    /// group.
    template <class Wanted>
    void top(ZANFieldGroup const& message, Wanted wanted) {
        PlacedTags const& placed = dictionary_.groupsOf(type_);
        merged(message, [&](Entry const& entry) {
            if (wanted(entry.tag)) {
                write(message, entry, placed.find(entry.tag), 0);
            }
        });
    }

private:
    // What stands under a tag: a field, instances of a group, or both.
    struct Entry {
        int tag;
        ZANField const* field;
        InstanceList const* group;
        PlacedTag const* placed;

        std::size_t instances() const { return group ? group->instances.size() : 0; }
    };

    template <class Use>
    static void merged(ZANFieldGroup const& group, Use use) {
        FieldTable::Cursor fields(GroupAccess::fields(group));
        GroupTable::Cursor groups(GroupAccess::groups(group));
        while (fields.hasNext() && groups.hasNext()) {
            int const tag = std::min(fields.tag(), groups.tag());
            Entry entry{tag, nullptr, nullptr, nullptr};
            if (fields.tag() == tag) {
                entry.field = fields.pointer().get();
                fields.next();
            }
            if (groups.tag() == tag) {
                entry.group = groups.pointer().get();
                groups.next();
            }
            use(entry);
        }
        for (; fields.hasNext(); fields.next()) {
            use(Entry{fields.tag(), fields.pointer().get(), nullptr, nullptr});
        }
        for (; groups.hasNext(); groups.next()) {
            use(Entry{groups.tag(), nullptr, groups.pointer().get(), nullptr});
        }
    }

    void write(ZANFieldGroup const& group, Entry const& entry, PlacedTag const* placed,
               int groupTag) {
        bool const isCount = placed && placed->group != PlacedTag::noGroup;
        if (entry.tag <= 0) {
            refusal::badTag(entry.tag);
        }
        if (entry.group && !isCount) {
            refusal::stranger(entry.tag, groupTag, type_);
        }
        if (isCount && entry.field) {
            checkCount(entry);
        }
        if (entry.group) {
            writeGroup(*entry.group, *placed);
        } else if (entry.field) {
            writeField(group, entry);
        }
    }

    void checkCount(Entry const& entry) {
        auto const told = text_.of(*entry.field);
        if (told != NumberText(entry.instances())) {
            refusal::wrongCount(entry.tag, told, entry.instances());
        }
    }

    void writeField(ZANFieldGroup const& group, Entry const& entry) {
        std::string_view const value = text_.of(*entry.field);
        if (value.empty()) {
            refusal::emptyValue(entry.tag);
        }
        if (int const dataTag = dataTagOf(entry.tag)) {
            checkLength(group, entry.tag, dataTag, value);
        } else if (int const lengthTag = lengthTagOf(entry.tag)) {
            sink_.field(lengthTag, NumberText(value.size()));
            sink_.data(entry.tag, value);
        } else {
            sink_.field(entry.tag, value);
        }
    }

    // The length is written with the data that it belongs to.
    static void checkLength(ZANFieldGroup const& group, int tag, int dataTag,
                            std::string_view told) {
        auto const* const data = GroupAccess::fields(group).find(dataTag);
        if (!data || !*data) {
            refusal::dataMissing(tag, dataTag);
        }
        FieldValueText text;
        std::size_t const length = text.of(**data).size();
        if (told != NumberText(length)) {
            refusal::wrongLength(tag, told, dataTag, length);
        }
    }

    void writeGroup(InstanceList const& list, PlacedTag const& placed) {
        CompiledGroup const& rule = dictionary_.group(placed);
        sink_.field(placed.tag, NumberText(list.instances.size()));
        for (auto const& instance : list.instances) {
            if (!instance) {
                refusal::emptyInstance(placed.tag);
            }
            if (GroupAccess::isPlain(*instance)) {
                writeInstance(*instance, rule);
            } else {
                writeInstance(ZANFieldGroup(*instance), rule);
            }
        }
    }

    void writeInstance(ZANFieldGroup const& instance, CompiledGroup const& rule) {
        std::size_t const first = entries_.size();
        merged(instance, [&](Entry entry) {
            entry.placed = rule.members.find(entry.tag);
            if (!entry.placed) {
                refusal::stranger(entry.tag, rule.countTag, type_);
            }
            entries_.push_back(entry);
        });
        sortFrom(first);
        if (first == entries_.size() || entries_[first].placed->position != 0) {
            refusal::delimiterMissing(rule.delimiter, rule.countTag);
        }
        // Those of nested instances come and go behind them.
        for (std::size_t i = first, end = entries_.size(); i < end; ++i) {
            Entry const entry = entries_[i];
            write(instance, entry, entry.placed, rule.countTag);
        }
        entries_.resize(first);
    }

    static bool standsBefore(Entry const& left, Entry const& right) {
        return left.placed->position < right.placed->position;
    }

    void sortFrom(std::size_t first) {
        constexpr std::size_t few = 16;
        if (entries_.size() - first > few) {
            std::sort(entries_.begin() + static_cast<std::ptrdiff_t>(first), entries_.end(),
                      standsBefore);
            return;
        }
        for (std::size_t i = first + 1; i < entries_.size(); ++i) {
            Entry const entry = entries_[i];
            std::size_t to = i;
            for (; to > first && standsBefore(entry, entries_[to - 1]); --to) {
                entries_[to] = entries_[to - 1];
            }
            entries_[to] = entry;
        }
    }

    static constexpr std::size_t usualEntries = 64;

    std::string_view type_;
    CompiledDictionary const& dictionary_;
    Sink& sink_;
    FieldValueText text_;
    // The members of all instances that are open, the innermost ones last.
    alignas(Entry) std::array<std::byte, usualEntries * sizeof(Entry)> place_;
    std::pmr::monotonic_buffer_resource resource_{place_.data(), place_.size()};
    std::pmr::vector<Entry> entries_{&resource_};
};

} // namespace zan::server

#endif
