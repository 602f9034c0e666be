// The log as a table of text.
#include "server/log/LogFixture.h"

namespace {

using namespace logtest;

using Row = std::vector<std::string>;

class Table : public LogTest {
protected:
    Table() {
        send("11=A|55=IBM|");
        FixEntry note;
        note.origin = FixOrigin::remark;
        note.stream = FixStream::adminOut;
        note.note = "for people";
        add(note);
        receive("37=X|");
    }

    std::string complaint(std::string const& columns) {
        LogTable rows;
        try {
            log().readTable(-1, columns, "", "", rows);
        } catch (BadExpression const& bad) {
            EXPECT_TRUE(rows.empty());
            return bad.what();
        }
        return "no complaint";
    }
};

TEST_F(Table, HasTheNamesOfTheColumnsAndThenOneRowAnEntry) {
    LogTable const rows = table("");
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0],
              (Row{"id", "time", "stream", "type", "seq", "sender", "target", "text", "note"}));
    Row const& sent = rows[1];
    EXPECT_EQ(sent[0], "1");
    EXPECT_EQ(sent[1].size(), std::string("YYYYMMDD-HH:MM:SS.sss").size());
    EXPECT_EQ((Row(sent.begin() + 2, sent.end())),
              (Row{"3", "D", "1", "ME", "YOU",
                   wire("8=FIX.4.4|35=D|34=1|49=ME|56=YOU|11=A|55=IBM|"), ""}));
}

TEST_F(Table, ShowsNotesWithoutAMessageToo) {
    LogTable const rows = table("id,type,sender,text,note");
    EXPECT_EQ(rows[2], (Row{"2", "", "", "", "for people"}));
}

TEST_F(Table, ShowsTheColumnsThatWereAskedForInTheirOrder) {
    EXPECT_EQ(table(" Type, id ,\"seq\""),
              (LogTable{{"type", "id", "seq"}, {"D", "1", "1"}, {"", "2", "0"}, {"8", "3", "1"}}));
    EXPECT_EQ(table("id,id")[1], (Row{"1", "1"}));
}

TEST_F(Table, IsAppended) {
    LogTable rows{{"mine"}};
    log().readTable(-1, "id", "id = 3", "", rows);
    EXPECT_EQ(rows, (LogTable{{"mine"}, {"id"}, {"3"}}));
}

TEST_F(Table, HoldsWhatFits) {
    EXPECT_EQ(table("id", "type = 'D' OR note LIKE '%people'", "id DESC"),
              (LogTable{{"id"}, {"2"}, {"1"}}));
    EXPECT_EQ(table("id", "", "", 2), (LogTable{{"id"}, {"3"}}));
    EXPECT_EQ(table("id", "0"), (LogTable{{"id"}}));
}

TEST_F(Table, RefusesColumnsThatThereAreNot) {
    EXPECT_EQ(complaint("id, colour"),
              "position 5 of \"id, colour\": there is no such column; there are id, time, stream, "
              "type, seq, sender, target, text, note, for the audit also edited, user and action");
    for (char const* bad : {"hidden", "origin", "id,,seq", "id,", ",", "id seq", "tag(55)", "'id'",
                            "audit,id", "*", "id;"}) {
        EXPECT_NE(complaint(bad), "no complaint") << bad;
    }
}

TEST_F(Table, RefusesExpressionsThatAreWrong) {
    LogTable rows;
    EXPECT_THROW(log().readTable(-1, "id", "edited = ''", "", rows), BadExpression);
    EXPECT_THROW(log().readTable(-1, "id", "", "colour", rows), BadExpression);
    EXPECT_TRUE(rows.empty());
}

} // namespace
