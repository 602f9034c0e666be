// Callers' expressions: what they reach, what they are refused, and where their faults are told.
#include "server/log/LogFixture.h"
#include "server/log/Sqlite.h"

#include <thread>

namespace {

using namespace logtest;

using Ids = std::vector<long>;

class Expressions : public LogTest {
protected:
    Expressions() {
        send("11=A|55=IBM|38=100|");                                      // 1
        receive("37=X|11=A|55=IBM|58=it's|");                             // 2
        send("11=B|55=MSFT|38=9|");                                       // 3
        add(entry(FixStream::adminIn, 2, "35=0|34=2|49=YOU|56=ME|"));     // 4
        FixEntry noted = entry(FixStream::appIn, 3, "35=j|34=3|49=YOU|"); // 5
        noted.note = "Odd one";
        add(noted);
    }

    Ids where(std::string const& expression, std::string const& orderBy = "",
              bool newestFirst = false) {
        LogQuery query;
        query.where = expression;
        query.orderBy = orderBy;
        query.newestFirst = newestFirst;
        return readIds(query);
    }

    std::string complaint(std::string const& expression, std::string const& orderBy = "") {
        try {
            where(expression, orderBy);
        } catch (BadExpression const& bad) {
            return bad.what();
        }
        return "no complaint";
    }
};

TEST_F(Expressions, SeeTheColumnsOfAnEntry) {
    struct Case {
        char const* expression;
        Ids expected;
    };
    for (Case const& each : std::initializer_list<Case>{
             {"id = 3", {3}},
             {"id IN (1, 4)", {1, 4}},
             {"stream = 2", {2, 5}},
             {"type = 'D'", {1, 3}},
             {"seq = 2", {3, 4}},
             {"seq = '2'", {3, 4}},
             {"sender = 'ME'", {1, 3}},
             {"target = 'ME'", {2, 4}},
             {"target IS NULL", {5}},
             {"text LIKE '%MSFT%'", {3}},
             {"text GLOB '*35=j*'", {5}},
             {"note = 'Odd one'", {5}},
             {"note = ''", {1, 2, 3, 4}},
             {"note = 'odd ONE' COLLATE NOCASE", {5}},
             {"time >= '20200101-00:00:00'", {1, 2, 3, 4, 5}},
             {"time < '20200101-00:00:00'", {}},
             {"TYPE = 'D' AND Stream = 3", {1, 3}},
             {"\"type\" = 'D'", {1, 3}},
             {"[type] = 'D'", {1, 3}},
             {"`type` = 'D'", {1, 3}},
         }) {
        EXPECT_EQ(where(each.expression), each.expected) << each.expression;
    }
}

TEST_F(Expressions, SeeTheFieldsOfAMessage) {
    struct Case {
        char const* expression;
        Ids expected;
    };
    for (Case const& each : std::initializer_list<Case>{
             {"tag(55) = 'IBM'", {1, 2}},
             {"type = '8' AND tag(55) = 'IBM' AND time >= '20200101-09:30:00'", {2}},
             {"tag(55) IS NULL", {4, 5}},
             {"TAG ( 11 ) = 'B'", {3}},
             {"\"tag\"(11) = 'B'", {3}},
             {"tag/* the order */(11) = 'B'", {3}},
             {"tag(10 + 1) = 'B'", {3}},
             {"tag(seq + 9) = 'B'", {3}},
             {"CAST(tag(38) AS INTEGER) > 50", {1}},
             {"tag(38) + 0 < 50", {3}},
             {"tag(58) = 'it''s'", {2}},
             {"lower(tag(55)) || tag(11) = 'ibmA'", {1, 2}},
             {"coalesce(tag(55), tag(35)) = 'j'", {5}},
             {"tag(CAST(tag(38) AS INTEGER) + 46) = 'MSFT' OR id = 5", {}},
         }) {
        if (std::string(each.expression).find("CAST(tag(38) AS INTEGER) + 46") !=
            std::string::npos) {
            EXPECT_EQ(where("CASE WHEN tag(38) = '9' THEN "
                            "tag(CAST(tag(38) AS INTEGER) + 46) = 'MSFT' END"),
                      Ids{3});
            continue;
        }
        EXPECT_EQ(where(each.expression), each.expected) << each.expression;
    }
}

TEST_F(Expressions, SkipDataByItsLength) {
    long const id = receive("95=11|96=1|11=FAKE|x|11=REAL|");
    EXPECT_EQ(where("tag(11) = 'REAL'"), Ids{id});
    EXPECT_EQ(where("tag(11) = 'FAKE'"), Ids());
}

TEST_F(Expressions, TakeTheFirstFieldOfATag) {
    long const id = receive("448=FIRST|448=SECOND|");
    EXPECT_EQ(where("tag(448) = 'FIRST'"), Ids{id});
    EXPECT_EQ(where("tag(448) = 'SECOND'"), Ids());
}

TEST_F(Expressions, LetEverythingThroughWhenBlank) {
    for (char const* blank : {"", "  ", "\t\n", "-- nothing", "/* nothing */"}) {
        EXPECT_EQ(where(blank).size(), 5u) << blank;
    }
}

TEST_F(Expressions, MayHoldCommentsAndBracketsInTexts) {
    EXPECT_EQ(where("type = 'D' -- orders only"), (Ids{1, 3}));
    EXPECT_EQ(where("type /* ) */ = 'D'"), (Ids{1, 3}));
    EXPECT_EQ(where("note = ')' OR type = 'D'"), (Ids{1, 3}));
    EXPECT_EQ(where("note = 'tag(' OR type = 'D'"), (Ids{1, 3}));
    EXPECT_EQ(where("note = '; -- ?' OR type = 'D'"), (Ids{1, 3}));
}

TEST_F(Expressions, OrderByColumnsAndFields) {
    struct Case {
        char const* orderBy;
        bool newestFirst;
        Ids expected;
    };
    for (Case const& each : std::initializer_list<Case>{
             {"", false, {1, 2, 3, 4, 5}},
             {"", true, {5, 4, 3, 2, 1}},
             {"id DESC", false, {5, 4, 3, 2, 1}},
             {"id DESC", true, {1, 2, 3, 4, 5}},
             {"type", false, {4, 2, 1, 3, 5}},
             {"type asc", true, {5, 3, 1, 2, 4}},
             {"tag(55), stream DESC", false, {5, 4, 1, 2, 3}},
             {"tag(55) NULLS LAST, id DESC", false, {2, 1, 3, 5, 4}},
             {"tag(55) NULLS LAST, id DESC", true, {4, 5, 3, 1, 2}},
             {"tag(55) DESC NULLS FIRST", false, {4, 5, 3, 1, 2}},
             {"note COLLATE NOCASE DESC, (seq), id", false, {5, 1, 2, 3, 4}},
             {"stream, max(seq, 2)", false, {4, 2, 5, 1, 3}},
         }) {
        EXPECT_EQ(where("", each.orderBy, each.newestFirst), each.expected)
            << each.orderBy << (each.newestFirst ? " turned round" : "");
    }
}

TEST_F(Expressions, AreRefusedWhatLeadsOutOfTheLog) {
    struct Case {
        char const* expression;
        char const* complaint;
    };
    for (Case const& each : std::initializer_list<Case>{
             {"1) OR (1", "position 2 of \"1) OR (1\": ')' without a '('"},
             {"(1", "position 1 of \"(1\": '(' without a ')'"},
             {"1; DROP TABLE messages", "one expression alone would be right"},
             {"id = (SELECT 1)", "position 7 of \"id = (SELECT 1)\": 'select' cannot be used here"},
             {"EXISTS (VALUES (1))", "'exists' cannot be used here"},
             {"id IN (VALUES (1))", "'values' cannot be used here"},
             {"id IN messages", "position 7 of"},
             {"id IN meta", "position 7 of"},
             {"(id, seq) IN meta", "prohibited"},
             {"id IN sqlite_schema", "access to sqlite_master.type is prohibited"},
             {"id IN pragma_table_list", ""},
             {"id IN pragma_table_info('messages')", ""},
             {"id IN json_each('[1]')", ""},
             {"hidden = 0", "position 1 of \"hidden = 0\": no such column: hidden"},
             {"messages.origin = 0", "no such column: messages.origin"},
             {"checksum = 0", "no such column: checksum"},
             {"random() = 0", "position 1 of \"random() = 0\": not authorized to use function"},
             {"id = 1 OR randomblob(4) = ''", "position 11 of"},
             {"load_extension('x')", "not authorized to use function: load_extension"},
             {"readfile('/etc/passwd') = ''", "no such function: readfile"},
             {"writefile('x', 'y') = ''", "no such function: writefile"},
             {"sqlite_version() = ''", "not authorized to use function: sqlite_version"},
             {"last_insert_rowid() = 0", "not authorized to use function: last_insert_rowid"},
             {"changes() = 0", "not authorized to use function: changes"},
             {"zeroblob(1000000000) = ''", "not authorized to use function: zeroblob"},
             {"date('now') = ''", "not authorized to use function: date"},
             {"CURRENT_TIMESTAMP = ''", "not authorized to use function: CURRENT_TIMESTAMP"},
             {"json('{}') = ''", "not authorized to use function: json"},
             {"count(*) > 0", "count"},
             {"sum(seq) > 0", "sum"},
             {"group_concat(text) = ''", "group_concat"},
             {"max(seq) = 2", "min and max need two values or more here"},
             {"min(seq) = 2", "min and max need two values or more here"},
             {"row_number() OVER () = 1", "row_number"},
             {"raise(IGNORE)", "'raise' cannot be used here"},
             {"text MATCH 'x'", "position"},
             {"text REGEXP 'x'", "no such function: REGEXP"},
             {"id = ?", "position 6 of \"id = ?\": a parameter ('?') has no value here"},
             {"id = ?1", "a parameter ('?') has no value here"},
             {"id = :id", "a parameter (':') has no value here"},
             {"id = @id", "a parameter ('@') has no value here"},
             {"id = $id", "a parameter ('$') has no value here"},
             {"id = #1", "a parameter ('#') has no value here"},
             {"type = \"D\"", "position 8 of \"type = \"D\"\": no such column: D"},
             {"ATTACH 'x' AS y", "syntax error"},
             {"PRAGMA user_version", "syntax error"},
         }) {
        std::string const complained = complaint(each.expression);
        EXPECT_NE(complained, "no complaint") << each.expression;
        EXPECT_NE(complained.find(each.complaint), std::string::npos)
            << each.expression << " -> " << complained;
        EXPECT_EQ(complained.rfind("position ", 0), 0u) << complained;
        EXPECT_NE(complaint("", each.expression), "no complaint") << each.expression;
    }
    EXPECT_EQ(readIds().size(), 5u);
}

TEST_F(Expressions, TellTheirFaultsAtTheirPlace) {
    struct Case {
        char const* expression;
        char const* complaint;
    };
    for (Case const& each : std::initializer_list<Case>{
             {"colour = 1", "position 1 of \"colour = 1\": no such column: colour"},
             {"id = 1 AND colour = 1",
              "position 12 of \"id = 1 AND colour = 1\": no such column: colour"},
             {"tag(55) = 'IBM' AND colour = 1",
              "position 21 of \"tag(55) = 'IBM' AND colour = 1\": no such column: colour"},
             {"tag(55) = tag(11) AND tag(1) = colour", "position 32 of"},
             {"/* tag(55) */ colour", "position 15 of"},
             {"id = = 1", "position 6 of \"id = = 1\": near \"=\": syntax error"},
             {"id =", "position 5 of \"id =\": near \")\": syntax error"},
             {"id = 'open", "position 6 of \"id = 'open\": a text does not end"},
             {"id = \"open", "position 6 of \"id = \"open\": a quoted name does not end"},
             {"id = [open", "a quoted name does not end"},
             {"id /* open", "position 4 of \"id /* open\": a comment does not end"},
             {"tag()", "syntax error"},
             {"tag(1, 2) = ''", "wrong number of arguments to function tag()"},
             {"tag(0) = ''", "position 5 of \"tag(0) = ''\": tag(N) needs a positive whole number"},
             {"tag(1.5) = ''", "tag(N) needs a positive whole number"},
             {"tag(-1) = ''", "tag(N) needs a positive whole number"},
             {"tag('55') = ''", "position 1 of"},
             {"tag(NULL) = ''", "tag(N) needs a positive whole number"},
             {"tag(99999999999) = ''", "tag(N) needs a positive whole number"},
             {"tag(*) = ''", "syntax error"},
             {"tag = 1", "no such column: tag"},
             {"abs(-9223372036854775807 - 1)", "integer overflow"},
             {"lower(1, 2)", "wrong number of arguments to function lower()"},
             {"id, seq", "row value misused"},
         }) {
        std::string const complained = complaint(each.expression);
        EXPECT_NE(complained.find(each.complaint), std::string::npos)
            << each.expression << " -> " << complained;
    }
}

TEST_F(Expressions, TellTheFaultsOfAnOrderAtTheirPlace) {
    struct Case {
        char const* orderBy;
        char const* complaint;
    };
    for (Case const& each : std::initializer_list<Case>{
             {"id, colour DESC", "position 5 of \"id, colour DESC\": no such column: colour"},
             {"id,", "position 4 of \"id,\": an expression is missing"},
             {",id", "position 1 of \",id\": an expression is missing"},
             {"DESC", "an expression is missing"},
             {"id LAST", "NULLS FIRST or NULLS LAST would be right"},
             {"2", "position 1 of \"2\": a number orders nothing"},
             {"id DESC DESC", "syntax error"},
             {"id LIMIT 1", "syntax error"},
         }) {
        std::string const complained = complaint("", each.orderBy);
        EXPECT_NE(complained.find(each.complaint), std::string::npos)
            << each.orderBy << " -> " << complained;
    }
}

TEST_F(Expressions, AreRefusedWhenTheyAreTooLongOrTooDeep) {
    EXPECT_NE(complaint(std::string(70'000, ' ')), "no complaint");
    std::string deep = "id";
    for (int i = 0; i < 500; ++i) {
        deep = "(" + deep + " + 1)";
    }
    EXPECT_NE(complaint(deep), "no complaint");
    std::string longPattern = "text LIKE '" + std::string(2000, '%') + "'";
    EXPECT_NE(complaint(longPattern).find("pattern too complex"), std::string::npos);
}

TEST_F(Expressions, HoldNullBytesAsTheEndOfNothing) {
    std::string const withNull("id = 1\0OR 1", 11);
    EXPECT_NE(complaint(withNull).find("position 7"), std::string::npos);
}

TEST_F(Expressions, AreStoppedWhenTheyTakeTooLong) {
    settings_.longestSearch = std::chrono::milliseconds(200);
    open();
    {
        Turn const turn(log());
        for (int i = 0; i < 2000; ++i) {
            log().append(entry(FixStream::appIn, i, "35=8|58=" + std::string(2000, 'a') + "|"));
        }
        log().commit();
    }
    std::string heavy = "0";
    for (int i = 0; i < 60; ++i) {
        heavy += " OR replace(replace(text, 'a', 'bb'), 'b', '" + std::to_string(i) + "') = ''";
    }
    std::string const complained = complaint(heavy);
    EXPECT_NE(complained.find("takes too long, it was stopped after 200 ms"), std::string::npos)
        << complained;
    EXPECT_EQ(where("id IN (1, 3) AND type = 'D'"), (Ids{1, 3}));
}

// Over one message of ten million bytes, each in a single step of the database.
TEST_F(Expressions, AreStoppedInTheMiddleOfAFunction) {
    settings_.longestSearch = std::chrono::seconds(1);
    open();
    receive("58=" + std::string(10'000'000, 'a') + "|");
    std::string const copies = [] {
        std::string text = "0";
        for (int i = 0; i < 2000; ++i) {
            text += "+(upper(text)='" + std::to_string(i) + "')";
        }
        return text;
    }();
    std::string nested = "text";
    for (int i = 0; i < 38; ++i) {
        nested = (i % 2 == 0 ? "upper(" : "lower(") + nested + ")";
    }
    for (std::string const& hostile : std::vector<std::string>{
             "text LIKE '" + std::string(40, '%') + "a" +
                 [] {
                     std::string text;
                     for (int i = 0; i < 300; ++i) {
                         text += "%a_a";
                     }
                     return text.substr(0, 900);
                 }() +
                 "b'",
             "text GLOB '*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b'", "trim(text, text) = 'x'",
             "trim(text, '" + std::string(900, 'b') + "a') = 'x'",
             "instr(text, substr(text, 5000000) || 'b') > 0",
             "replace(text, substr(text, 5000000, 1000000) || 'b', 'x') = ''",
             "replace(replace(replace(text, 'a', 'bb'), 'b', 'cc'), 'c', 'dd') = ''",
             "hex(hex(hex(text))) = ''", "quote(quote(quote(text))) = ''",
             "length(printf('%.*c', 1000000000, 'x')) = 1", "length(format('%30000000d', 1)) = 1",
             "length(printf('%s%s%s%s%s', text, text, text, text, text)) = 1", copies + " > 0",
             "length(" + nested + ") = 1", "text || text || text || text || text = ''"}) {
        auto const start = std::chrono::steady_clock::now();
        complaint(hostile);
        auto const spent = std::chrono::steady_clock::now() - start;
        EXPECT_LT(spent, std::chrono::seconds(4)) << hostile.substr(0, 60);
    }
}

TEST_F(Expressions, AreRefusedWhenTheirOrderKeepsTooMuch) {
    {
        Turn const turn(log());
        for (int i = 0; i < 22; ++i) {
            log().append(
                entry(FixStream::appIn, i,
                      "35=8|58=" + std::string(10'000'000, 'a') + std::to_string(i) + "|"));
        }
        log().commit();
    }
    LogTable rows;
    try {
        log().readTable(-1, "id", "", "text || text || text", rows);
        FAIL() << "sorted";
    } catch (BadExpression const& bad) {
        EXPECT_NE(std::string(bad.what()).find("memory"), std::string::npos) << bad.what();
    }
}

// What SQLite's own functions say, case by case, is what the bounded ones say.
TEST_F(Expressions, MeanWhatSqliteMeans) {
    std::vector<std::string> const texts = {
        "NULL", "''", "'a'", "'abc'",   "'aXbXc'", "'%a_'", "'\u00e4b'", "'  ab '",
        "'äb'", "12", "1.5", "x'6162'", "'[a]-^'", "'€x€'", "'ABC'",     "'a-c'"};
    std::vector<std::string> const patterns = {
        "NULL",     "''",      "'a%'",    "'%b%'", "'_b_'",    "'A__'", "'%'",   "'a*'",   "'?b?'",
        "'[a-c]*'", "'[^a]*'", "'[]a]*'", "'[a'",  "'*[a-]*'", "'ä_'",  "'?b'",  "'€%'",   "'1_'",
        "'%a%c%'",  "'*X*X*'", "'X'",     "'ab'",  "' a'",     "'€'",   "x'61'", "'%\\%%'"};
    Database const plain = Database::inMemory();
    for (std::string const& text : texts) {
        for (std::string const& pattern : patterns) {
            for (std::string const& asked :
                 {text + " LIKE " + pattern, text + " LIKE " + pattern + " ESCAPE '\\'",
                  text + " GLOB " + pattern, "instr(" + text + "," + pattern + ")",
                  "replace(" + text + "," + pattern + ",'yy')",
                  "trim(" + text + "," + pattern + ")", "ltrim(" + text + "," + pattern + ")",
                  "rtrim(" + text + "," + pattern + ")", "trim(" + text + ")",
                  "printf('%s-%5d|%q'," + text + ",7," + pattern + ")"}) {
                Statement statement(plain, "SELECT quote(" + asked + ")");
                ASSERT_TRUE(statement.step());
                std::string const expected(statement.text(0));
                std::string literal;
                for (char const c : expected) {
                    literal += c == '\'' ? "''" : std::string(1, c);
                }
                EXPECT_EQ(where("id = 1 AND quote(" + asked + ") = '" + literal + "'"), Ids{1})
                    << asked << " is " << expected;
            }
        }
    }
}

TEST_F(Expressions, HaveTheirTimeToThemselvesWhileTheReceiverWorks) {
    settings_.longestSearch = std::chrono::milliseconds(100);
    open();
    LogQuery query;
    query.where = "tag(35) IS NOT NULL";
    int count = 0;
    log().read(query, [&](FixEntry&&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        ++count;
    });
    EXPECT_EQ(count, 5);
}

TEST_F(Expressions, HoldTogetherWithTheOtherConditions) {
    LogQuery query;
    query.where = "tag(55) = 'IBM' OR type = 'j'";
    query.ids = std::pair(2L, 5L);
    EXPECT_EQ(readIds(query), (Ids{2, 5}));
    query.stream = 2;
    query.idSet = std::vector<int>{5, 1, 5, 77};
    EXPECT_EQ(readIds(query), Ids{5});
    query.orderBy = "id DESC";
    query.idSet = std::vector<int>{5, 2};
    EXPECT_EQ(readIds(query), (Ids{5, 2}));
}

class ReadingBySet : public LogTest {};

TEST_F(ReadingBySet, GivesEachIdOnceInTheOrderOfIds) {
    for (int i = 0; i < 6; ++i) {
        receive("37=X|");
    }
    LogQuery query;
    query.idSet = std::vector<int>{5, 1, 5, 99, -3, 2};
    EXPECT_EQ(readIds(query), (Ids{1, 2, 5}));
    query.newestFirst = true;
    EXPECT_EQ(readIds(query), (Ids{5, 2, 1}));
    query.stream = 3;
    EXPECT_EQ(readIds(query), Ids());
    query.idSet = std::vector<int>{};
    query.stream = -1;
    EXPECT_EQ(readIds(query), Ids());
    query.where = "1";
    EXPECT_EQ(readIds(query), Ids());
}

TEST_F(ReadingBySet, TakesManyIdsTogetherWithAnExpression) {
    receive("37=X|");
    receive("37=Y|");
    LogQuery query;
    query.idSet.emplace();
    for (int id = 200'000; id > 0; --id) {
        query.idSet->push_back(id);
    }
    query.where = "tag(37) = 'Y'";
    EXPECT_EQ(readIds(query), Ids{2});
}

class ReadingSent : public LogTest {
protected:
    Ids sent(int first, int last, std::string const& where = "") {
        Ids ids;
        log().readSent(first, last, where, [&](FixEntry&& found) { ids.push_back(found.id); });
        return ids;
    }
};

TEST_F(ReadingSent, GivesApplicationMessagesUnderTheNumbersAskedFor) {
    send("11=A|");                    // 1, number 1
    send("", FixStream::adminOut);    // 2, number 2
    receive("37=X|");                 // 3
    send("11=B|", FixStream::resent); // 4, number 3
    send("11=C|");                    // 5, number 4
    EXPECT_EQ(sent(1, 4), (Ids{1, 4, 5}));
    EXPECT_EQ(sent(2, 3), Ids{4});
    EXPECT_EQ(sent(2, 0), (Ids{4, 5}));
    EXPECT_EQ(sent(5, 9), Ids());
    EXPECT_EQ(sent(1, 0, "tag(11) = 'C'"), Ids{5});
    EXPECT_EQ(sent(1, 3, "tag(11) = 'C'"), Ids());
    EXPECT_THROW(sent(1, 0, "colour"), BadExpression);
}

class Filter : public testing::Test {
protected:
    static bool matches(std::string const& expression, FixEntry const& asked) {
        return EntryFilter(expression).matches(asked);
    }
};

TEST_F(Filter, AsksOneEntryThatIsInNoLog) {
    FixEntry asked = entry(FixStream::appIn, 7, "35=8|49=YOU|56=ME|55=IBM|");
    asked.id = 12;
    asked.millis = 1'600'000'000'000;
    asked.note = "a note";
    for (char const* fitting :
         {"", " ", "id = 12", "stream = 2", "type = '8'", "seq = '7'", "sender = 'YOU'",
          "target = 'ME'", "tag(55) = 'IBM'", "note = 'a note'", "text LIKE '%IBM%'",
          "time = '20200913-12:26:40.000'", "tag(1) IS NULL"}) {
        EXPECT_TRUE(matches(fitting, asked)) << fitting;
    }
    for (char const* other : {"id = 13", "0", "NULL", "tag(55) = 'MSFT'", "tag(1) = ''"}) {
        EXPECT_FALSE(matches(other, asked)) << other;
    }
}

TEST_F(Filter, IsAskedManyTimes) {
    EntryFilter filter("tag(11) = 'A'");
    EXPECT_TRUE(filter.matches(entry(FixStream::appIn, 1, "35=8|11=A|")));
    EXPECT_FALSE(filter.matches(entry(FixStream::appIn, 1, "35=8|11=B|")));
    EXPECT_TRUE(filter.matches(entry(FixStream::appIn, 1, "35=8|11=A|")));
}

TEST_F(Filter, IsRefusedAtOnceWhenItIsWrong) {
    for (char const* bad : {"colour = 1", "random() > 0", "tag(0) = ''", "tag(-1) = ''", "(",
                            "id IN (SELECT 1)", "max(id)", "id = ?1", "id IN messages"}) {
        EXPECT_THROW(EntryFilter{bad}, BadExpression) << bad;
    }
}

} // namespace
