#include "server/engine/StoredMessage.h"

#include "server/dictionaries/Dictionaries.h"
#include "server/wire/FieldText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace zan::server;

class StoredMessageTest : public testing::Test {
protected:
    static std::string wire(std::string text) {
        std::ranges::replace(text, '|', fieldSeparator);
        return text;
    }

    static std::string shown(std::string text) {
        std::ranges::replace(text, fieldSeparator, '|');
        return text;
    }

    static FixEntry entry(std::string const& text) {
        FixEntry entry;
        entry.id = 12;
        entry.millis = 1700000000123;
        entry.stream = FixStream::appOut;
        entry.text = wire(text);
        return entry;
    }

    static std::string field(counted_ptr<ZANMessage> const& message, int tag) {
        auto const found = message->getFieldGroup()->getField(tag);
        return found ? found->getValue().asString() : std::string();
    }

    CompiledDictionary const dictionary = compileDictionary(dictionaryFor("FIX.4.4"), "FIX.4.4");
    ConnectionSettings const settings{
        "C",
        "",
        std::chrono::seconds(1),
        {{"BeginString", "FIX.4.4"}, {"SenderCompID", "US"}, {"TargetCompID", "THEM"}}};
};

TEST_F(StoredMessageTest, CarriesItsNumberAndItsTime) {
    auto const message = modelOf(entry("8=FIX.4.4|35=D|11=a|16580=99|10=000|"), dictionary);
    EXPECT_EQ(message->getConnectionMessageId(), 12);
    EXPECT_EQ(message->getTimeStamp(), 1700000000123.0);
    EXPECT_EQ(field(message, 11), "a");
    EXPECT_EQ(field(message, 97), "");
}

TEST_F(StoredMessageTest, IsMarkedWhenItMayBeLost) {
    auto const message = modelOf(entry("35=D|11=a|"), dictionary, Showing::PossiblyLost);
    EXPECT_EQ(field(message, 97), "Y");
}

TEST_F(StoredMessageTest, IsShownForAResendAsItGoesOutThen) {
    auto const message =
        modelOf(entry("35=D|52=20261121-09:30:00.000|11=a|"), dictionary, Showing::ForResend);
    EXPECT_EQ(field(message, 43), "Y");
    EXPECT_EQ(field(message, 122), "20261121-09:30:00.000");
}

TEST_F(StoredMessageTest, IsACompleteMessageWhenItIsPosted) {
    FixEntry const posted = internalEntry({"D", {{11, "a"}, {55, "IBM"}}}, settings);
    EXPECT_EQ(posted.stream, FixStream::appIn);
    EXPECT_EQ(posted.origin, FixOrigin::internal);
    EXPECT_EQ(posted.seq, 0);
    std::string const text = shown(posted.text);
    EXPECT_EQ(text.substr(0, 18), "8=FIX.4.4|9=54|35=") << text;
    EXPECT_NE(text.find("|35=D|49=US|52="), std::string::npos) << text;
    EXPECT_NE(text.find("|56=US|11=a|55=IBM|10="), std::string::npos) << text;
    unsigned sum = 0;
    for (char const c : posted.text.substr(0, posted.text.size() - 7)) {
        sum += static_cast<unsigned char>(c);
    }
    std::string const checkSum = std::to_string(1000 + sum % 256).substr(1);
    EXPECT_EQ(text.substr(text.size() - 7), "10=" + checkSum + "|");
}

TEST_F(StoredMessageTest, GoesToTheStreamThatItsHeaderTellsWhenItIsInserted) {
    struct Case {
        char const* sender;
        char const* type;
        FixStream stream;
    };
    for (Case const& one :
         {Case{"US", "D", FixStream::appOut}, Case{"THEM", "8", FixStream::appIn},
          Case{"US", "0", FixStream::adminOut}, Case{"THEM", "0", FixStream::adminIn}}) {
        ZANFieldGroup message;
        message.setFieldValue(35, one.type);
        message.setFieldValue(49, one.sender);
        message.setFieldValue(34, "17");
        FixEntry const inserted = insertedEntry(message, settings, dictionary);
        EXPECT_EQ(inserted.stream, one.stream) << one.sender << " " << one.type;
        EXPECT_EQ(inserted.origin, FixOrigin::inserted);
        EXPECT_EQ(inserted.seq, 17);
        EXPECT_NE(shown(inserted.text).find(std::string("|35=") + one.type + "|34=17|49="),
                  std::string::npos)
            << shown(inserted.text);
    }
}

TEST_F(StoredMessageTest, KeepsTheOrderOfItsFieldsWhenItIsSentAgain) {
    FixOutgoing const again =
        resendOf(entry("8=FIX.4.4|9=1|35=D|34=2|43=Y|49=US|52=x|56=THEM|122=y|55=IBM|11=a|10=000|"),
                 dictionary);
    EXPECT_EQ(again.msgType, "D");
    EXPECT_TRUE(again.resent);
    std::string fields;
    for (FixField const& one : again.body) {
        fields += std::to_string(one.tag) + "=" + one.value + "|";
    }
    EXPECT_EQ(fields, "97=Y|55=IBM|11=a|");
}

TEST_F(StoredMessageTest, MustHaveFieldsToBeSent) {
    EXPECT_THROW(fieldsOf(counted_ptr<ZANMessage>()), MalformedMessage);
}

} // namespace
