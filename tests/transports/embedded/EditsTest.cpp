// Edits of the message log, and what stays of them.
#include "EmbeddedFixture.h"

#include "errors/ZANInvalidMessageException.h"

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

TEST_F(EditsTest, ChangeNotes) {
    trade();
    EXPECT_EQ(engine().updateMessageLogData(me, "C", -1, "note = 'seen by ' || tag(11)",
                                            "tag(11) = 'one'"),
              2);
    Table const rows = table("note", "note IS NOT NULL AND note <> ''");
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1][0], "seen by one");
}

TEST_F(EditsTest, LeaveWhatWasInTheAudit) {
    trade();
    engine().updateMessageLogData(me, "C", 3, "note = 'x'", "tag(11) = 'one'");
    engine().deleteMessageLogData(me, "C", 2, "tag(11) = 'two'");
    Table const rows = table("user, action, stream, type, note");
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1], (std::vector<std::string>{"tester", "update", "3", "D", ""}));
    EXPECT_EQ(rows[2], (std::vector<std::string>{"tester", "delete", "2", "8", ""}));
    EXPECT_EQ(table("audit").front().front(), "edited");
}

TEST_F(EditsTest, DeleteWhatIsShown) {
    trade();
    EXPECT_EQ(engine().deleteMessageLogData(me, "C", -1, "tag(11) = 'one'"), 2);
    EXPECT_EQ(query("tag(11) = 'one'").size(), 0u);
    EXPECT_EQ(query("tag(11) = 'two'").size(), 2u);
}

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

TEST_F(EditsTest, RefuseToChangeWhatIdentifiesAMessage) {
    trade();
    for (char const* column : {"id", "stream", "seq"}) {
        std::string const text = failureOf<ZANInvalidMessageException>(
            [&] { engine().updateMessageLogData(me, "C", -1, std::string(column) + " = 1", ""); });
        EXPECT_NE(text.find(column), std::string::npos) << text;
    }
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

TEST_F(EditsTest, AreNoMessagesToListeners) {
    trade();
    EventRecorder& recorder = record();
    engine().insertMessageLogData(me, "C", {orderOf("other")});
    engine().postInternalMessage(me, "C", orderOf("posted"));
    ASSERT_TRUE(recorder.waitFor([](SeenEvent const& e) { return e.field(11) == "posted"; }));
    EXPECT_EQ(recorder.first([](SeenEvent const& e) { return e.field(11) == "other"; }).id, 0);
}

} // namespace
