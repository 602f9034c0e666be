/// Groups and fields as the library has them, and the same as the reference has them.
#ifndef ZANENGINE_TESTS_MESSAGE_MODEL_WORLD_H
#define ZANENGINE_TESTS_MESSAGE_MODEL_WORLD_H

#include "Reference.h"
#include "message/ZANFieldGroup.h"

#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

/// What a test holds of one side: groups, and fields that may also be in groups.
template <class GroupPointer, class FieldPointer>
struct Side {
    std::vector<GroupPointer> groups;
    std::vector<FieldPointer> fields;

    Side() {
        groups.reserve(64);
        fields.reserve(64);
    }
};

using RealSide = Side<counted_ptr<ZANFieldGroup>, counted_ptr<ZANField>>;
using ReferenceSide = Side<reference::GroupPointer, reference::FieldPointer>;

inline ReferenceSide cloneOf(ReferenceSide const& side) {
    reference::Cloner cloner;
    ReferenceSide clone;
    for (auto const& group : side.groups) {
        clone.groups.push_back(cloner(group));
    }
    for (auto const& field : side.fields) {
        clone.fields.push_back(cloner(field));
    }
    return clone;
}

/// Empty when both sides are the same, with the same objects shared in the same places; otherwise
/// the first difference.
std::string difference(RealSide const& real, ReferenceSide const& reference);

class Chance {
public:
    explicit Chance(unsigned seed) : generator_(seed) {}

    /// From 0 to `end` - 1.
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(generator_); }
    bool oneIn(int count) { return below(count) == 0; }
    template <class T>
    T const& of(std::vector<T> const& all) {
        return all[static_cast<std::size_t>(below(static_cast<int>(all.size())))];
    }
    int tag() { return oneIn(8) ? below(2000) - 1000 : below(12); }
    Value value();

private:
    std::mt19937 generator_;
};

/// One operation on a group, to be done on both sides. What it answers is compared.
struct Operation {
    std::string name;
    std::size_t handle = 0;
    /// The way down to the group: group tags and indexes.
    std::vector<std::pair<int, int>> path;
    std::function<std::string(ZANFieldGroup&, RealSide&)> onReal;
    std::function<std::string(reference::Model&, reference::Group&, ReferenceSide&)> onReference;

    ZANFieldGroup& target(RealSide const& side) const {
        auto group = side.groups[handle];
        for (auto const& [tag, index] : path) {
            group = group->getGroup(tag, index);
        }
        return *group;
    }
    reference::Group& target(ReferenceSide const& side) const {
        auto group = side.groups[handle];
        for (auto const& [tag, index] : path) {
            group = group->groups[tag][static_cast<std::size_t>(index)];
        }
        return *group;
    }
};

/// An operation chosen at random; it may first put new objects into both sides.
Operation randomOperation(Chance& chance, RealSide& real, ReferenceSide& reference);

#endif
