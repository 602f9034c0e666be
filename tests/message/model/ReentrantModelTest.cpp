// Fields and groups whose operations and destructors change the groups around them, at random.
#include "FailingHeap.h"
#include "Seeds.h"
#include "message/IZANFieldGroupWalker.h"
#include "message/ZANFieldGroup.h"

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using SharedField = counted_ptr<ZANField>;
using SharedGroup = counted_ptr<ZANFieldGroup>;

struct Interrupted {};

/// Groups, fields and iterators that are held, and what may be done with them.
class Turmoil {
public:
    explicit Turmoil(unsigned seed) : random_(seed) {}
    Turmoil(Turmoil const&) = delete;
    Turmoil& operator=(Turmoil const&) = delete;

    /// One operation; what it calls may do further ones.
    void step() {
        calls_ = 0;
        if (below(4) == 0) {
            failing_heap::refuseAfter(static_cast<std::size_t>(below(20)));
        }
        try {
            change();
        } catch (Interrupted const&) {
        } catch (std::bad_alloc const&) {
        }
        failing_heap::stop();
    }

    /// From an operation of a field or group.
    void interrupt() {
        if (isOn_ && ++calls_ < mostCalls && depth_ < deepest && below(3) == 0) {
            ++depth_;
            try {
                change();
            } catch (...) {
                --depth_;
                throw;
            }
            --depth_;
            if (below(20) == 0) {
                throw Interrupted();
            }
        }
    }

    void interruptWithoutThrowing() noexcept {
        try {
            interrupt();
        } catch (Interrupted const&) {
        } catch (std::bad_alloc const&) {
        }
    }

    /// Looks at everything, undisturbed. Empty, or what does not fit together.
    std::string inspect() {
        isOn_ = false;
        std::string fault;
        for (SharedGroup const& group : groups_) {
            fault += faultOf(*group);
        }
        isOn_ = true;
        return fault;
    }

    void end() {
        isOn_ = below(2) == 0;
        calls_ = 0;
        while (!groups_.empty() || !fields_.empty() || !walks_.empty()) {
            std::vector<Walk>().swap(walks_);
            std::vector<SharedField>().swap(fields_);
            std::vector<SharedGroup>().swap(groups_);
            isOn_ = false;
        }
    }

private:
    struct Walk {
        SharedGroup group;
        counted_ptr<ZANFieldGroup::FieldIterator> fields;
        counted_ptr<ZANFieldGroup::GroupIterator> instances;
    };

    static constexpr int mostCalls = 60;
    static constexpr int deepest = 4;
    static constexpr std::size_t mostHeld = 8;
    static constexpr std::size_t mostFields = 900;

    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }
    int tag() { return below(3) == 0 ? below(900) : below(8); }

    template <class T>
    T oneOf(std::vector<T> const& all) {
        return all[static_cast<std::size_t>(below(static_cast<int>(all.size())))];
    }

    template <class T>
    void hold(std::vector<T>& all, T const& one) {
        if (all.size() < mostHeld) {
            all.push_back(one);
        } else {
            // Let go when the other is in its place, as the destructor may come back here.
            T replaced(one);
            std::swap(all[static_cast<std::size_t>(below(mostHeld))], replaced);
        }
    }

    SharedField newField();
    SharedGroup newGroup();

    void change() {
        if (groups_.empty() || below(6) == 0) {
            hold(groups_, newGroup());
        }
        if (fields_.empty() || below(4) == 0) {
            hold(fields_, newField());
        }
        SharedGroup const group = oneOf(groups_);
        static constexpr std::array changes{
            &Turmoil::addField,     &Turmoil::addField,    &Turmoil::setValue,
            &Turmoil::setValue,     &Turmoil::setValue,    &Turmoil::removeField,
            &Turmoil::addGroup,     &Turmoil::removeGroup, &Turmoil::clear,
            &Turmoil::assign,       &Turmoil::copy,        &Turmoil::print,
            &Turmoil::walk,         &Turmoil::beginWalk,   &Turmoil::goOn,
            &Turmoil::goOn,         &Turmoil::replace,     &Turmoil::read,
            &Turmoil::addManyFields};
        (this->*changes[static_cast<std::size_t>(below(changes.size()))])(*group);
    }

    void addField(ZANFieldGroup& group) { group.addField(below(2) ? oneOf(fields_) : newField()); }

    void addManyFields(ZANFieldGroup& group) {
        if (group.ZANFieldGroup::fieldIterator()->hasNext() && count(group) > mostFields) {
            return group.clear();
        }
        int const first = tag();
        for (int i = 0; i < 90; ++i) {
            group.setFieldValue(first + i, i);
        }
    }

    void setValue(ZANFieldGroup& group) {
        int const at = tag();
        switch (below(5)) {
        case 0:
            return group.setFieldValue(at, 1.5);
        case 1:
            return group.setFieldValue(at, std::string(static_cast<std::size_t>(below(50)), 's'));
        case 2:
            return group.setFieldValue(at, oneOf(fields_)->getValue());
        default:
            return group.setFieldValue(at, at);
        }
    }

    void removeField(ZANFieldGroup& group) { group.removeField(tag()); }

    void addGroup(ZANFieldGroup& group) {
        SharedGroup const inner = below(2) ? oneOf(groups_) : newGroup();
        bool const wasOn = std::exchange(isOn_, false);
        bool const isAllowed = !contains(*inner, group) && weight(*inner) < 200;
        isOn_ = wasOn;
        if (isAllowed) {
            // No call may close a circle of groups meanwhile.
            isOn_ = false;
            group.addGroup(inner);
            isOn_ = wasOn;
        }
    }

    void removeGroup(ZANFieldGroup& group) {
        int const at = below(3);
        switch (below(3)) {
        case 0:
            return group.removeGroup(at);
        case 1:
            return group.removeGroup(at, below(4));
        default:
            static_cast<void>(group.eraseGroup(at, below(4)));
        }
    }

    void clear(ZANFieldGroup& group) { group.clear(); }

    void assign(ZANFieldGroup& group) {
        SharedGroup const other = oneOf(groups_);
        if (isLight(*other)) {
            group = *other;
        }
    }

    void copy(ZANFieldGroup& group) {
        if (isLight(group)) {
            hold(groups_, SharedGroup(new ZANFieldGroup(group)));
        }
    }

    void print(ZANFieldGroup& group) {
        std::ostringstream text;
        if (isLight(group)) {
            text << group;
        }
    }

    void walk(ZANFieldGroup& group) {
        struct Walker final : IZANFieldGroupWalker {
            explicit Walker(Turmoil& around) : turmoil(around) {}
            void startGroup(ZANFieldGroup const&) override { turmoil.interrupt(); }
            void processField(ZANField const& field, ZANFieldGroup const&) override {
                turmoil.interrupt();
                static_cast<void>(field.ZANField::getTag());
            }
            void endGroup(ZANFieldGroup const&) override { turmoil.interrupt(); }
            Turmoil& turmoil;
        };
        if (isLight(group)) {
            Walker(*this).walkThrough(group);
        }
    }

    void beginWalk(ZANFieldGroup& group) {
        for (SharedGroup const& held : std::vector<SharedGroup>(groups_)) {
            if (held.get() == &group) {
                hold(walks_, Walk{held, held->fieldIterator(), held->groupIterator(below(3))});
            }
        }
    }

    void goOn(ZANFieldGroup&) {
        if (walks_.empty()) {
            return;
        }
        Walk const walk = oneOf(walks_);
        if (walk.fields->hasNext()) {
            SharedField const field = walk.fields->current();
            if (below(8) == 0) {
                SharedField other(below(2) ? oneOf(fields_) : nullptr);
                walk.fields->current().swap(other);
            }
            walk.fields->next();
        }
        if (walk.instances && walk.instances->hasNext()) {
            SharedGroup const instance = walk.instances->current();
            walk.instances->next();
        }
    }

    void replace(ZANFieldGroup& group) {
        if (auto const field = group.getField(tag())) {
            hold(fields_, field);
        }
        if (auto const inner = group.getGroup(below(3), 0)) {
            hold(groups_, inner);
        }
    }

    void read(ZANFieldGroup& group) {
        static_cast<void>(group.getString(tag()));
        static_cast<void>(group.find(tag()));
        std::size_t seen = 0;
        for (ZANField const& field : group) {
            seen += field.getValue().getType() == Value::STRING ? 1 : 0;
        }
        for (ZANFieldGroup const& instance : group.instances(below(3))) {
            seen += instance.has(1) ? 1 : 0;
        }
        static_cast<void>(seen);
    }

    static std::size_t count(ZANFieldGroup const& group) {
        std::size_t fields = 0;
        for (auto const all = group.ZANFieldGroup::fieldIterator(); all->hasNext(); all->next()) {
            ++fields;
        }
        return fields;
    }

    static std::size_t weight(ZANFieldGroup const& group) {
        std::size_t sum = 1 + count(group);
        auto const all = group.ZANFieldGroup::groupIterator();
        for (; all->hasNext() && sum < mostFields; all->next()) {
            sum += weight(*all->current());
        }
        return sum;
    }
    static bool isLight(ZANFieldGroup const& group) { return weight(group) < mostFields; }

    static bool contains(ZANFieldGroup const& group, ZANFieldGroup const& inner) {
        if (&group == &inner) {
            return true;
        }
        auto const all = group.ZANFieldGroup::groupIterator();
        for (; all->hasNext(); all->next()) {
            if (contains(*all->current(), inner)) {
                return true;
            }
        }
        return false;
    }

    static std::string faultOf(ZANFieldGroup const& group) {
        std::size_t fields = 0;
        for (ZANField const& field : group) {
            ++fields;
            static_cast<void>(field.getValue().asString());
        }
        if (fields != group.size() || fields > count(group)) {
            return "the fields do not add up; ";
        }
        std::size_t instances = 0;
        for (int at = 0; at < 3; ++at) {
            instances += static_cast<std::size_t>(group.getGroupCount(at));
            if (group.isGroupPresent(at) != static_cast<bool>(group.groupIterator(at))) {
                return "a tag without instances; ";
            }
        }
        return group.isGroupsEmpty() == (instances == 0) ? "" : "the instances do not add up; ";
    }

    std::mt19937 random_;
    std::vector<SharedGroup> groups_;
    std::vector<SharedField> fields_;
    std::vector<Walk> walks_;
    int calls_ = 0;
    int depth_ = 0;
    bool isOn_ = true;
};

class RestlessField final : public ZANField {
public:
    RestlessField(Turmoil& turmoil, int tag) : ZANField(tag, 1, Value()), turmoil_(turmoil) {
        ++live;
    }
    ~RestlessField() override {
        turmoil_.interruptWithoutThrowing();
        --live;
    }
    int getTag() const override { return turmoil_.interrupt(), ZANField::getTag(); }
    int getType() const override { return turmoil_.interrupt(), ZANField::getType(); }
    Value const& getValue() const override { return turmoil_.interrupt(), ZANField::getValue(); }
    void setValue(Value const& value) override {
        Value const copy(value);
        turmoil_.interrupt();
        ZANField::setValue(copy);
        turmoil_.interrupt();
    }

    static inline int live = 0;

private:
    Turmoil& turmoil_;
};

class RestlessGroup final : public ZANFieldGroup {
public:
    using ZANFieldGroup::operator=;
    RestlessGroup(Turmoil& turmoil, int tag) : ZANFieldGroup(tag), turmoil_(turmoil) { ++live; }
    ~RestlessGroup() override {
        turmoil_.interruptWithoutThrowing();
        --live;
    }
    void setGroupTag(int tag) override { turmoil_.interrupt(), ZANFieldGroup::setGroupTag(tag); }
    int getGroupTag() const override {
        return turmoil_.interrupt(), ZANFieldGroup::getGroupTag() % 3;
    }
    void addField(SharedField field) override {
        turmoil_.interrupt(), ZANFieldGroup::addField(field);
    }
    SharedField getField(int tag) override {
        return turmoil_.interrupt(), ZANFieldGroup::getField(tag);
    }
    void clear() override {
        turmoil_.interrupt();
        ZANFieldGroup::clear();
        turmoil_.interrupt();
    }

    static inline int live = 0;

private:
    Turmoil& turmoil_;
};

SharedField Turmoil::newField() {
    int const at = tag();
    Value value;
    value.setString(std::string(static_cast<std::size_t>(below(50)), 'n'));
    return SharedField(below(2) ? new RestlessField(*this, at)
                                : new ZANField(at, Value::STRING, value));
}

SharedGroup Turmoil::newGroup() {
    int const at = below(3);
    return SharedGroup(below(2) ? new RestlessGroup(*this, at) : new ZANFieldGroup(at));
}

TEST(FieldGroupModel, HoldsTogetherWhenCallbacksChangeIt) {
    constexpr int steps = 1500;
    auto const [first, rounds] = seeds();
    for (unsigned round = 0; round < rounds; ++round) {
        unsigned const seed = first + round;
        {
            Turmoil turmoil(seed);
            for (int i = 0; i < steps; ++i) {
                turmoil.step();
                ASSERT_EQ("", turmoil.inspect()) << "seed " << seed << ", step " << i;
            }
            turmoil.end();
        }
        ASSERT_EQ(0, RestlessField::live) << "seed " << seed;
        ASSERT_EQ(0, RestlessGroup::live) << "seed " << seed;
    }
}

} // namespace
