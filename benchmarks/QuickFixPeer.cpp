#include "QuickFixPeer.h"

#include "Order.h"

#include <quickfix/DataDictionary.h>
#include <quickfix/Field.h>
#include <quickfix/Group.h>
#include <quickfix/Message.h>

#include <ostream>
#include <string>

namespace quickfix {

namespace {

/// The same field with its text as a string object, so that building does not measure its making.
struct ReadyField {
    order::Field field;
    std::string text;
};

struct ReadyGroup {
    int countTag;
    ReadyField fields[order::instanceFields];
};

struct ReadyOrder {
    std::string beginString = order::beginString;
    std::string msgType = order::msgType;
    ReadyField body[order::bodyFields];
    ReadyGroup groups[order::groups];

    ReadyOrder() {
        for (int i = 0; i < order::bodyFields; ++i) {
            body[i] = ReadyField{order::body[i], order::body[i].text};
        }
        for (int g = 0; g < order::groups; ++g) {
            groups[g].countTag = order::repeating[g].countTag;
            for (int i = 0; i < order::instanceFields; ++i) {
                auto const& field = order::repeating[g].fields[i];
                groups[g].fields[i] = ReadyField{field, field.text};
            }
        }
    }
};

ReadyOrder const& ready() {
    static ReadyOrder const readyOrder;
    return readyOrder;
}

void setTyped(FIX::FieldMap& map, ReadyField const& field) {
    int const tag = field.field.tag;
    switch (field.field.kind) {
    case order::Kind::text:
        map.setField(FIX::StringField(tag, field.text));
        break;
    case order::Kind::character:
        map.setField(FIX::CharField(tag, field.field.text[0]));
        break;
    case order::Kind::whole:
        map.setField(FIX::IntField(tag, static_cast<int>(field.field.whole)));
        break;
    case order::Kind::decimal:
        map.setField(FIX::DoubleField(tag, field.field.decimal));
        break;
    }
}

void fillFields(FIX::FieldMap& map, ReadyField const* fields, int count, Values values) {
    for (int i = 0; i < count; ++i) {
        if (values == Values::ready) {
            map.setField(fields[i].field.tag, fields[i].text);
        } else {
            setTyped(map, fields[i]);
        }
    }
}

void fill(FIX::Message& message, bool grouped, Values values) {
    ReadyOrder const& source = ready();
    message.getHeader().setField(order::beginStringTag, source.beginString);
    message.getHeader().setField(order::msgTypeTag, source.msgType);
    fillFields(message, source.body, order::bodyFields, values);
    if (!grouped) {
        return;
    }
    for (auto const& group : source.groups) {
        for (int i = 0; i < order::instances; ++i) {
            FIX::Group instance(group.countTag, group.fields[0].field.tag);
            fillFields(instance, group.fields, order::instanceFields, values);
            message.addGroup(instance);
        }
    }
}

FIX::DataDictionary newDictionary() {
    FIX::DataDictionary dictionary;
    for (auto const& group : order::repeating) {
        FIX::DataDictionary instance;
        for (auto const& field : group.fields) {
            instance.addField(field.tag);
        }
        dictionary.addGroup(order::msgType, group.countTag, group.fields[0].tag, instance);
    }
    return dictionary;
}

FIX::Message const& asMessage(void const* message) {
    return *static_cast<FIX::Message const*>(message);
}

/// Makes the compiler believe that the object is looked at here.
void keep(void const* object) {
    asm volatile("" : : "g"(object) : "memory");
}

} // namespace

void buildAndDestroy(bool grouped, Values values) {
    FIX::Message message;
    fill(message, grouped, values);
    keep(&message);
}

void* newOrder(bool grouped, Values values) {
    auto* const message = new FIX::Message;
    fill(*message, grouped, values);
    return message;
}

void destroy(void* message) {
    delete static_cast<FIX::Message*>(message);
}

void copyAndDestroy(void const* message) {
    FIX::Message const copy(asMessage(message));
    keep(&copy);
}

std::size_t lookUp(void const* message, int const* tags, std::size_t count) {
    FIX::FieldMap const& map = asMessage(message);
    std::size_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += map.getField(tags[i]).size();
    }
    return sum;
}

int walk(void const* message) {
    FIX::FieldMap const& map = asMessage(message);
    int last = 0;
    for (auto field = map.begin(); field != map.end(); ++field) {
        last = field->getTag();
        // The compiler would see through the inline loop and skip to its last field.
        keep(&last);
    }
    return last;
}

void print(std::ostream& os, void const* message) {
    os << asMessage(message);
}

void write(void const* message, std::string& text) {
    asMessage(message).toString(text);
}

void buildWriteAndDestroy(bool grouped, Values values, std::string& text) {
    FIX::Message message;
    fill(message, grouped, values);
    message.toString(text);
}

void parseAndDestroy(std::string const& text, Checks checks) {
    static FIX::DataDictionary const dictionary = newDictionary();
    FIX::Message message;
    message.setString(text, checks == Checks::lengthAndChecksum, &dictionary, &dictionary);
    keep(&message);
}

} // namespace quickfix
