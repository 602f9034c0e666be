// What holds for every message and every dictionary, tried with random ones.
#include "RandomMessages.h"
#include "server/wire/GroupReader.h"
#include "server/wire/GroupWriter.h"
#include "server/wire/OutgoingMessage.h"
#include "server/wire/WireText.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <string>
#include <utility>

namespace {

using namespace zan::server;

constexpr unsigned dictionaries = 150;
constexpr int messagesEach = 10;

// Everything in a group: fields with types and values by ascending tag, then the instances.
std::string contents(ZANFieldGroup const& group) {
    std::string text;
    for (auto fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
        ZANField const& field = *std::as_const(*fields).current();
        text += std::to_string(field.getTag()) + ":" + std::to_string(field.getType()) + "=" +
                field.getValue().asString() + "\n";
    }
    for (auto groups = group.groupIterator(); groups->hasNext(); groups->next()) {
        ZANFieldGroup const& instance = *std::as_const(*groups).current();
        text += std::to_string(instance.getGroupTag()) + "{\n" + contents(instance) + "}\n";
    }
    return text;
}

counted_ptr<ZANFieldGroup> parse(std::string const& text, CompiledDictionary const& dictionary,
                                 Reading reading) {
    return readMessage(text, fieldSeparator, reading, dictionary);
}

std::string contentsWithoutFrame(std::string const& text, CompiledDictionary const& dictionary,
                                 Reading reading) {
    auto const model = parse(text, dictionary, reading);
    model->removeField(9);
    model->removeField(10);
    return contents(*model);
}

// Calls `check` with random messages, and tells the seed when it fails.
template <class Check>
void forRandomMessages(Check check) {
    for (unsigned seed = 1; seed <= dictionaries; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Chance chance(seed);
        RandomDictionary dictionary(chance);
        RandomMessages messages(chance, dictionary);
        CompiledDictionary const compiled = dictionary.groups.compiled();
        for (int i = 0; i < messagesEach && !testing::Test::HasFailure(); ++i) {
            SCOPED_TRACE("message " + std::to_string(i));
            check(*messages.next(), compiled, chance, messages);
        }
    }
}

bool isRefused(std::string const& text, CompiledDictionary const& dictionary) {
    try {
        outgoingFromText(text, dictionary);
    } catch (MalformedMessage const&) {
        return true;
    }
    return false;
}

// A text that went through a few accidents.
std::string damaged(std::string text, Chance& chance) {
    for (int count = chance.between(1, 4); count > 0 && !text.empty(); --count) {
        auto const at =
            static_cast<std::size_t>(chance.between(0, static_cast<int>(text.size()) - 1));
        auto const size = static_cast<std::size_t>(chance.between(1, 20));
        switch (chance.between(0, 3)) {
        case 0:
            text[at] = static_cast<char>(chance.between(0, 255));
            break;
        case 1:
            text.erase(at, size);
            break;
        case 2:
            text.insert(at, text.substr(text.size() - at, size));
            break;
        default:
            text[at] = chance.oneIn(2) ? fieldSeparator : '=';
        }
    }
    return text;
}

TEST(WireProperty, AMessageComesBackFromItsText) {
    forRandomMessages([](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                         Chance&, RandomMessages&) {
        std::string const text = wireText(message, dictionary);
        for (Reading const reading : {Reading::Tolerant, Reading::Strict}) {
            ASSERT_EQ(contentsWithoutFrame(text, dictionary, reading), contents(message));
        }
    });
}

TEST(WireProperty, ATextComesBackFromItsMessage) {
    forRandomMessages([](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                         Chance&, RandomMessages&) {
        std::string const text = wireText(message, dictionary);
        ASSERT_EQ(wireText(*parse(text, dictionary, Reading::Strict), dictionary), text);
    });
}

TEST(WireProperty, LengthAndChecksumAreTrue) {
    forRandomMessages([](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                         Chance&, RandomMessages&) {
        std::string const text = wireText(message, dictionary);
        std::size_t const trailer = text.size() - std::string("10=000|").size();
        std::size_t const body = text.find(fieldSeparator, text.find("\x01"
                                                                     "9=") +
                                                               1) +
                                 1;
        unsigned sum = 0;
        for (std::size_t i = 0; i < trailer; ++i) {
            sum += static_cast<unsigned char>(text[i]);
        }
        std::string const checksum = std::to_string(sum % 256);
        ASSERT_EQ(valueOf(text, 9), std::to_string(trailer - body));
        ASSERT_EQ(text.substr(trailer),
                  "10=" + std::string(3 - checksum.size(), '0') + checksum + fieldSeparator);
    });
}

TEST(WireProperty, FieldsForASessionAreThoseOfTheText) {
    forRandomMessages([](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                         Chance&, RandomMessages&) {
        OutgoingMessage const fromModel = outgoingFromModel(message, dictionary);
        std::string text = "35=" + fromModel.type + fieldSeparator;
        for (FixField const& field : fromModel.body) {
            text += std::to_string(field.tag) + "=" + field.value + fieldSeparator;
        }
        OutgoingMessage const fromText = outgoingFromText(text, dictionary);
        ASSERT_EQ(fromText.type, fromModel.type);
        ASSERT_EQ(fromText.body.size(), fromModel.body.size());
        for (std::size_t i = 0; i < fromText.body.size(); ++i) {
            ASSERT_EQ(fromText.body[i].tag, fromModel.body[i].tag);
            ASSERT_EQ(fromText.body[i].value, fromModel.body[i].value);
        }
    });
}

TEST(WireProperty, ADecimalIsWrittenInItsShortestForm) {
    Chance chance(20261121);
    CompiledDictionary const dictionary = GroupDictionary().compiled();
    for (int i = 0; i < 100'000; ++i) {
        // Few digits mostly, as prices have, and some doubles as they come.
        int const decimals = chance.between(0, 9);
        double number = chance.between(0, 1'000'000'000) / std::pow(10, decimals);
        number *= chance.oneIn(4) ? 1.0 / 3 : chance.oneIn(10) ? 1e6 : 1;
        number = chance.oneIn(2) ? -number : number;
        ZANFieldGroup message("D");
        message.setFieldValue(44, number);
        char digits[64];
        auto const size = std::abs(number);
        auto const end =
            size == 0 || (size >= 1e-5 && size <= 1e15)
                ? std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed)
                      .ptr
                : std::to_chars(digits, digits + sizeof digits, number).ptr;
        ASSERT_EQ(valueOf(wireText(message, dictionary), 44), std::string_view(digits, end))
            << "number " << i;
    }
}

TEST(WireProperty, AnUnknownTagPassesUnharmed) {
    forRandomMessages([](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                         Chance&, RandomMessages& messages) {
        auto const model = parse(wireText(message, dictionary), dictionary, Reading::Strict);
        for (int const tag : messages.unknown()) {
            ASSERT_EQ(model->isFieldPresent(tag), message.isFieldPresent(tag));
            if (message.isFieldPresent(tag)) {
                ASSERT_EQ(model->getField(tag)->getValue(), message.getField(tag)->getValue());
            }
        }
    });
}

TEST(WireProperty, ARepeatedTagShowsItsLastValueComingInAndIsRefusedGoingOut) {
    forRandomMessages([](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                         Chance& chance, RandomMessages& messages) {
        int const tag = chance.oneOf(messages.unknown());
        std::string const field = std::to_string(tag) + "=";
        std::string const text = wireText(message, dictionary) + field + "first" + fieldSeparator +
                                 field + "last" + fieldSeparator;
        ASSERT_EQ(parse(text, dictionary, Reading::Tolerant)->getField(tag)->getValue().asString(),
                  "last");
        try {
            outgoingFromText(text, dictionary);
            FAIL() << "a repeated tag went out";
        } catch (MalformedMessage const& refusal) {
            ASSERT_EQ(std::string(refusal.what()).find("tag " + std::to_string(tag) + " stands"),
                      0U)
                << refusal.what();
        }
    });
}

TEST(WireProperty, ADamagedTextHasAModelThatIsStable) {
    int stable = 0;
    forRandomMessages([&](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                          Chance& chance, RandomMessages&) {
        std::string const text = damaged(wireText(message, dictionary), chance);
        isRefused(text, dictionary);
        auto const model = parse(text, dictionary, Reading::Tolerant);
        std::string printed;
        try {
            printed = wireText(*model, dictionary);
        } catch (MalformedMessage const&) {
            return; // it has something that must not go out
        }
        ++stable;
        ASSERT_EQ(wireText(*parse(printed, dictionary, Reading::Strict), dictionary), printed);
    });
    EXPECT_GT(stable, 100);
}

TEST(WireProperty, EveryBeginningOfATextHasAModel) {
    forRandomMessages([](ZANFieldGroup const& message, CompiledDictionary const& dictionary,
                         Chance& chance, RandomMessages&) {
        std::string const text = wireText(message, dictionary);
        auto const size =
            static_cast<std::size_t>(chance.between(0, static_cast<int>(text.size())));
        // A copy of its own, so that a sanitizer sees what is read behind its end.
        std::vector<char> const beginning(text.begin(),
                                          text.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_TRUE(readMessage({beginning.data(), beginning.size()}, fieldSeparator,
                                Reading::Tolerant, dictionary));
    });
}

} // namespace
