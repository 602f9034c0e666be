// What the message log holds, as applications ask for it.
#include "EmbeddedFixture.h"

namespace {

class RetrievalTest : public EmbeddedTest {
protected:
    /// Three orders, each with the report that answers it.
    void trade() {
        startAndConnect();
        EventRecorder& recorder = record();
        for (char const* id : {"one", "two", "three"}) {
            engine().sendMessage(me, "C", order(id));
        }
        ASSERT_TRUE(recorder.waitFor(isReport, 3));
    }
};

TEST_F(RetrievalTest, FindsMessagesByTheirStream) {
    trade();
    EXPECT_EQ(fieldsOf(query("", "", false, 3), 11), "one two three");
    EXPECT_EQ(fieldsOf(query("", "", false, 2), 11), "one two three");
    EXPECT_EQ(fieldsOf(query("", "", false, 0), 35), "A");
    EXPECT_EQ(fieldsOf(query("", "", false, 1), 35), "A");
    EXPECT_EQ(query("", "", false, 4).size(), 0u);
    EXPECT_EQ(query("").size(), 8u);
}

TEST_F(RetrievalTest, ShowsWhatAResendRequestWouldGet) {
    trade();
    Messages messages;
    engine().retrieveMessagesForResend(me, "C", messages, 1, 0, "");
    EXPECT_EQ(fieldsOf(messages, 34), "2 3 4") << "the Logon is filled over";
    EXPECT_EQ(fieldsOf(messages, 43), "Y Y Y");
    messages.clear();
    engine().retrieveMessagesForResend(me, "C", messages, 3, 3, "");
    EXPECT_EQ(fieldsOf(messages, 11), "two");
    messages.clear();
    engine().retrieveMessagesForResend(me, "C", messages, 1, 0, "tag(11) = 'three'");
    EXPECT_EQ(fieldsOf(messages, 11), "three");
}

TEST_F(RetrievalTest, ShowsNestedGroups) {
    startAndConnect();
    EventRecorder& recorder = record();
    engine().sendMessage(
        me, "C", order("g") + "|453=2|448=A|447=D|452=1|802=1|523=X|803=2|448=B|447=D|452=3");
    ASSERT_TRUE(recorder.waitFor(isReport));
    Messages const messages = query("type = 'D'");
    ASSERT_EQ(messages.size(), 1u);
    auto const fields = messages.front()->getFieldGroup();
    ASSERT_EQ(fields->getGroupCount(453), 2);
    EXPECT_EQ(fields->getGroup(453, 0)->getGroup(802, 0)->getField(523)->getValue().asString(),
              "X");
}

TEST_F(RetrievalTest, StreamsAHundredThousandMessages) {
    startAcceptor();
    startEngine();
    Messages const batch(1000, orderOf("posted"));
    for (int i = 0; i < 100; ++i) {
        engine().postMultipleInternalMessages(me, "C", batch);
    }
    Messages messages;
    engine().retrieveMessagesByIdRange(me, "C", messages, 2, 0, 2147483647, "", false);
    ASSERT_EQ(messages.size(), 100000u);
    for (std::size_t i = 0; i < messages.size(); i += 997) {
        ASSERT_EQ(messages[i]->getConnectionMessageId(), static_cast<int>(i + 1));
    }
}

} // namespace
