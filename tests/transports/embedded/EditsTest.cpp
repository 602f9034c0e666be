// Edits of the message log, and what stays of them.
#include "EmbeddedFixture.h"

namespace {

class EditsTest : public EmbeddedTest {
protected:
    void trade() {
        startAndConnect();
        EventRecorder& recorder = record();
        for (char const* id : {"one", "two"}) {
            engine().sendMessage(me, "C", order(id));
        }
        ASSERT_TRUE(recorder.waitFor(isReport, 2));
    }
};

TEST_F(EditsTest, TouchNothingThatAResendNeeds) {
    trade();
    EXPECT_EQ(engine().deleteMessageLogData(me, "C", 3, "tag(11) = 'one'"), 1);
    EXPECT_EQ(engine().updateMessageLogData(me, "C", 3, "text = replace(text, 'two', 'TWO')",
                                            "tag(11) = 'two'"),
              1);
    EXPECT_EQ(fieldsOf(query("type = 'D'"), 11), "TWO");
    acceptor_.reset();
    startAcceptor({"--send", "35=2|7=2|16=3"});
    EXPECT_NE(acceptor_->waitForLine("|11=one|").find("|43=Y|"), std::string::npos);
    EXPECT_NE(acceptor_->waitForLine("|11=two|").find("|43=Y|"), std::string::npos);
}

TEST_F(EditsTest, PutMessagesIn) {
    trade();
    auto const message = orderOf("other");
    message->getFieldGroup()->setFieldValue(49, "THEM");
    message->getFieldGroup()->setFieldValue(34, "77");
    EXPECT_EQ(engine().insertMessageLogData(me, "C", {message, message}), 2);
    Table const rows = table("stream, seq, type, sender", "tag(11) = 'other'");
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1], (std::vector<std::string>{"2", "77", "D", "THEM"}));
    EXPECT_EQ(table("action", "action = 'insert'").size(), 3u);
}

} // namespace
