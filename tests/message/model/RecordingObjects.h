/// A field and a group that override every virtual operation: each tells its call and goes on.
#ifndef ZANENGINE_TESTS_MESSAGE_MODEL_RECORDINGOBJECTS_H
#define ZANENGINE_TESTS_MESSAGE_MODEL_RECORDINGOBJECTS_H

#include "Calls.h"
#include "message/ZANFieldGroup.h"

#include <string>

class RecordingField final : public ZANField {
public:
    RecordingField(int id, int tag, Value const& value)
        : ZANField(tag, value.getType(), value), id_(id) {
        ++live;
    }
    ~RecordingField() override { --live; }

    int getTag() const override { return call("getTag"), ZANField::getTag(); }
    int getType() const override { return call("getType"), ZANField::getType(); }
    Value const& getValue() const override { return call("getValue"), ZANField::getValue(); }
    void setTag(int tag) override { call("setTag"), ZANField::setTag(tag); }
    void setType(int type) override { call("setType"), ZANField::setType(type); }
    void setValue(Value const& value) override { call("setValue"), ZANField::setValue(value); }
    ZANField& operator=(ZANField const& other) override {
        return call("assign"), ZANField::operator=(other);
    }
    bool operator==(ZANField const& other) const override {
        return call("equal"), ZANField::operator==(other);
    }
    bool operator!=(ZANField const& other) const override {
        return call("unequal"), ZANField::operator!=(other);
    }

    static inline int live = 0;

private:
    void call(std::string_view name) const { realCalls().add(id_, name); }

    int id_;
};

class RecordingGroup final : public ZANFieldGroup {
public:
    using Base = ZANFieldGroup;
    using Base::operator=;
    using Base::setFieldValue;
    using Field = counted_ptr<ZANField>;
    using Group = counted_ptr<ZANFieldGroup>;
    using Fields = counted_ptr<ZANIterator<Field>>;
    using Groups = counted_ptr<ZANIterator<Group>>;
    using Text = std::string;

    RecordingGroup(int id, int tag) : ZANFieldGroup(tag), id_(id) { ++live; }
    ~RecordingGroup() override { --live; }

    void setGroupTag(int tag) override { call("setGroupTag"), Base::setGroupTag(tag); }
    int getGroupTag() const override { return call("getGroupTag"), Base::getGroupTag(); }
    bool empty() const override { return call("empty"), Base::empty(); }
    void addField(Field field) override { call("addField"), Base::addField(field); }
    void setFieldValue(int tag, char v) override { call("setChar"), Base::setFieldValue(tag, v); }
    void setFieldValue(int tag, bool v) override { call("setBool"), Base::setFieldValue(tag, v); }
    void setFieldValue(int tag, double v) override {
        call("setDouble"), Base::setFieldValue(tag, v);
    }
    void setFieldValue(int tag, long v) override { call("setLong"), Base::setFieldValue(tag, v); }
    void setFieldValue(int tag, int v) override { call("setInt"), Base::setFieldValue(tag, v); }
    void setFieldValue(int tag, Text const& v) override {
        call("setString"), Base::setFieldValue(tag, v);
    }
    void setFieldValue(int tag, Value const& v) override {
        call("setAny"), Base::setFieldValue(tag, v);
    }
    void removeField(int tag) override { call("removeField"), Base::removeField(tag); }
    Field getField(int tag) override { return call("getField"), Base::getField(tag); }
    Field getField(int tag) const override { return call("getField const"), Base::getField(tag); }
    bool isFieldPresent(int tag) const override {
        return call("isFieldPresent"), Base::isFieldPresent(tag);
    }
    bool isFieldsEmpty() const override { return call("isFieldsEmpty"), Base::isFieldsEmpty(); }
    Fields fieldIterator() override { return call("fieldIterator"), Base::fieldIterator(); }
    Fields fieldIterator() const override {
        return call("fieldIterator const"), Base::fieldIterator();
    }
    void addGroup(Group group) override { call("addGroup"), Base::addGroup(group); }
    int getGroupCount(int tag) const override {
        return call("getGroupCount"), Base::getGroupCount(tag);
    }
    Group getGroup(int tag, int i) override { return call("getGroup"), Base::getGroup(tag, i); }
    Group getGroup(int tag, int i) const override {
        return call("getGroup const"), Base::getGroup(tag, i);
    }
    void removeGroup(int tag, int i) override { call("removeIndex"), Base::removeGroup(tag, i); }
    void removeGroup(int tag) override { call("removeGroup"), Base::removeGroup(tag); }
    bool isGroupPresent(int tag) const override {
        return call("isGroupPresent"), Base::isGroupPresent(tag);
    }
    bool isGroupsEmpty() const override { return call("isGroupsEmpty"), Base::isGroupsEmpty(); }
    Groups groupIterator(int tag) override { return call("instances"), Base::groupIterator(tag); }
    Groups groupIterator(int tag) const override {
        return call("instances const"), Base::groupIterator(tag);
    }
    Groups groupIterator() override { return call("groupIterator"), Base::groupIterator(); }
    Groups groupIterator() const override {
        return call("groupIterator const"), Base::groupIterator();
    }
    void clear() override { call("clear"), Base::clear(); }
    void setProtocolVersion(Text const& v) override {
        call("setProtocolVersion"), Base::setProtocolVersion(v);
    }
    void setMsgType(Text const& v) override { call("setMsgType"), Base::setMsgType(v); }

    static inline int live = 0;

private:
    void call(std::string_view name) const { realCalls().add(id_, name); }

    int id_;
};

#endif
