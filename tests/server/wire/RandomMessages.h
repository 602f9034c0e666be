/// Random dictionaries and random messages by them, the same for the same seed.
#ifndef ZANENGINE_TESTS_SERVER_WIRE_RANDOMMESSAGES_H
#define ZANENGINE_TESTS_SERVER_WIRE_RANDOMMESSAGES_H

#include "message/ZANFieldGroup.h"
#include "support/GroupDictionary.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

class Chance {
public:
    explicit Chance(unsigned seed) : generator_(seed) {}

    /// From `low` to `high`, both included.
    int between(int low, int high) {
        return low + static_cast<int>(generator_() % static_cast<unsigned>(high - low + 1));
    }
    bool oneIn(int count) { return between(1, count) == 1; }

    template <class Element>
    Element const& oneOf(std::vector<Element> const& elements) {
        return elements[static_cast<std::size_t>(
            between(0, static_cast<int>(elements.size()) - 1))];
    }

    template <class Element>
    void shuffle(std::vector<Element>& elements) {
        std::shuffle(elements.begin(), elements.end(), generator_);
    }

private:
    std::mt19937 generator_;
};

/// A dictionary whose groups are nested three deep at most; no tag has two meanings.
class RandomDictionary {
public:
    explicit RandomDictionary(Chance& chance) : chance_(chance) {
        for (int tag = 3000; tag < 3400; ++tag) {
            unused_.push_back(tag);
        }
        for (int tag : {1, 6, 11, 14, 15, 38, 44, 54, 55, 58, 99999, 2147483646}) {
            unused_.push_back(tag);
        }
        chance_.shuffle(unused_);
        chance_.shuffle(pairs_);
        type = chance_.oneOf<std::string>({"D", "8", "UAJ", "r"});
        groups.messages[type] = someGroups(1);
        groups.header = someGroups(3);
        groups.messages["other"];
    }

    int newTag() {
        int const tag = unused_.back();
        unused_.pop_back();
        return tag;
    }

    std::string type;
    GroupDictionary groups;

private:
    static constexpr int deepest = 3;

    MessageGroups someGroups(int depth) {
        MessageGroups some;
        for (int count = chance_.between(depth == 1 ? 1 : 0, 2); count > 0; --count) {
            some[newTag()] = rule(depth);
        }
        return some;
    }

    GroupRule rule(int depth) {
        GroupRule made;
        made.delimiter = newTag();
        for (int count = chance_.between(0, depth == 1 ? 25 : 4); count > 0; --count) {
            made.members.push_back(newTag());
        }
        if (depth < deepest) {
            made.nested = someGroups(depth + 1);
        }
        for (auto const& nested : made.nested) {
            made.members.push_back(nested.first);
        }
        chance_.shuffle(made.members);
        if (chance_.oneIn(3) && !pairs_.empty()) {
            made.members.push_back(pairs_.back().first);
            made.members.push_back(pairs_.back().second);
            pairs_.pop_back();
        }
        made.members.insert(made.members.begin(), made.delimiter);
        return made;
    }

    Chance& chance_;
    std::vector<int> unused_;
    std::vector<std::pair<int, int>> pairs_ = {{348, 349}, {350, 351}, {352, 353}, {354, 355},
                                               {356, 357}, {358, 359}, {360, 361}, {618, 619}};
};

/// Messages by a random dictionary, every field a string, lengths of data included.
class RandomMessages {
public:
    RandomMessages(Chance& chance, RandomDictionary& dictionary)
        : chance_(chance), dictionary_(dictionary) {
        for (int i = 0; i < 20; ++i) {
            unknown_.push_back(dictionary.newTag());
        }
    }

    counted_ptr<ZANFieldGroup> next() {
        counted_ptr<ZANFieldGroup> message(new ZANFieldGroup(dictionary_.type, "FIX.4.4"));
        for (int const tag : {34, 49, 52, 56, 97, 115}) {
            maybeSet(*message, tag);
        }
        for (int const tag : unknown_) {
            maybeSet(*message, tag);
        }
        for (auto const& [length, data] : {std::pair{95, 96}, {93, 89}, {90, 91}}) {
            if (chance_.oneIn(4)) {
                setData(*message, length, data);
            }
        }
        addGroups(*message, dictionary_.groups.messages[dictionary_.type]);
        addGroups(*message, dictionary_.groups.header);
        return message;
    }

    /// Tags that no dictionary knows.
    std::vector<int> const& unknown() const { return unknown_; }

private:
    static bool isLength(GroupRule const& rule, std::size_t index) {
        return rule.members[index] < 1000 && rule.members[index] >= 348 &&
               index + 1 < rule.members.size() &&
               rule.members[index + 1] == rule.members[index] + 1;
    }

    void addGroups(ZANFieldGroup& parent, MessageGroups const& groups) {
        for (auto const& [countTag, rule] : groups) {
            int const instances = chance_.oneIn(2) ? chance_.between(0, 1) : chance_.between(0, 4);
            if (instances == 0 && chance_.oneIn(3)) {
                parent.setFieldValue(countTag, "0");
            }
            for (int i = 0; i < instances; ++i) {
                parent.addGroup(instance(countTag, rule));
            }
        }
    }

    counted_ptr<ZANFieldGroup> instance(int countTag, GroupRule const& rule) {
        counted_ptr<ZANFieldGroup> made(new ZANFieldGroup(countTag));
        made->setFieldValue(rule.delimiter, text());
        for (std::size_t i = 1; i < rule.members.size(); ++i) {
            if (isLength(rule, i)) {
                if (chance_.oneIn(2)) {
                    setData(*made, rule.members[i], rule.members[i + 1]);
                }
                ++i;
            } else if (rule.nested.count(rule.members[i]) == 0) {
                maybeSet(*made, rule.members[i]);
            }
        }
        addGroups(*made, rule.nested);
        return made;
    }

    void maybeSet(ZANFieldGroup& group, int tag) {
        if (chance_.oneIn(2)) {
            group.setFieldValue(tag, text());
        }
    }

    void setData(ZANFieldGroup& group, int lengthTag, int dataTag) {
        std::string data = text();
        for (char& c : data) {
            c = chance_.oneIn(4) ? '\x01' : c;
        }
        group.setFieldValue(lengthTag, std::to_string(data.size()));
        group.setFieldValue(dataTag, data);
    }

    std::string text() {
        std::string made;
        for (int size = chance_.between(1, chance_.oneIn(5) ? 60 : 25); size > 0; --size) {
            made += chance_.oneIn(30) ? static_cast<char>(chance_.between(2, 255))
                                      : static_cast<char>(chance_.between(' ', '~'));
        }
        return made;
    }

    Chance& chance_;
    RandomDictionary& dictionary_;
    std::vector<int> unknown_;
};

#endif
