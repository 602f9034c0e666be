#include "Model.h"

#include "Order.h"

#include <random>
#include <string>
#include <utility>

namespace model {

namespace {

/// Texts as string objects, made once: an application has them in hand when it builds a message.
struct ReadyTexts {
    std::string beginString = order::beginString;
    std::string msgType = order::msgType;
    std::string body[order::bodyFields];
    std::string groups[order::groups][order::instanceFields];

    ReadyTexts() {
        for (int i = 0; i < order::bodyFields; ++i) {
            body[i] = order::body[i].text;
        }
        for (int g = 0; g < order::groups; ++g) {
            for (int i = 0; i < order::instanceFields; ++i) {
                groups[g][i] = order::repeating[g].fields[i].text;
            }
        }
    }
};

ReadyTexts const& ready() {
    static ReadyTexts const texts;
    return texts;
}

void fillFields(ZANFieldGroup& group, order::Field const* fields, std::string const* texts,
                int count) {
    for (int i = 0; i < count; ++i) {
        order::Field const& field = fields[i];
        switch (field.kind) {
        case order::Kind::text:
            group.setFieldValue(field.tag, texts[i]);
            break;
        case order::Kind::character:
            group.setFieldValue(field.tag, field.text[0]);
            break;
        case order::Kind::whole:
            group.setFieldValue(field.tag, field.whole);
            break;
        case order::Kind::decimal:
            group.setFieldValue(field.tag, field.decimal);
            break;
        }
    }
}

} // namespace

counted_ptr<ZANFieldGroup> newBody(bool grouped) {
    ReadyTexts const& texts = ready();
    counted_ptr<ZANFieldGroup> body(new ZANFieldGroup(texts.msgType, texts.beginString));
    fillFields(*body, order::body, texts.body, order::bodyFields);
    for (int g = 0; grouped && g < order::groups; ++g) {
        for (int i = 0; i < order::instances; ++i) {
            auto const& group = order::repeating[g];
            counted_ptr<ZANFieldGroup> instance(new ZANFieldGroup(group.countTag));
            fillFields(*instance, group.fields, texts.groups[g], order::instanceFields);
            body->addGroup(std::move(instance));
        }
    }
    return body;
}

counted_ptr<ZANMessage> newOrder(bool grouped) {
    return counted_ptr<ZANMessage>(new ZANMessage(newBody(grouped)));
}

std::vector<int> randomBodyTags(int count) {
    std::mt19937 random(20261121);
    std::vector<int> tags(static_cast<std::size_t>(count));
    for (int& tag : tags) {
        tag = order::body[random() % order::bodyFields].tag;
    }
    return tags;
}

} // namespace model
