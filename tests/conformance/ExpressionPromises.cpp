// Expressions as filters and queries: random ones, each answered like a search by hand.
#include "conformance/LogModel.h"
#include "errors/ZANInvalidMessageException.h"

#include <algorithm>
#include <random>

namespace zan::conformance {

namespace {

// One condition twice: for the engine, and as a function.
struct Condition {
    std::string sql;
    std::function<bool(LogRow const&)> holds;
};

class RandomConditions {
public:
    explicit RandomConditions(LogModel const& log) : log_(log) {}

    int pick(std::size_t below) {
        return std::uniform_int_distribution<int>(0, static_cast<int>(below) - 1)(random_);
    }

    Condition next() {
        Condition const one = simple();
        Condition const two = simple();
        switch (pick(4)) {
        case 0:
            return {one.sql + " AND " + two.sql,
                    [=](LogRow const& row) { return one.holds(row) && two.holds(row); }};
        case 1:
            return {one.sql + " OR " + two.sql,
                    [=](LogRow const& row) { return one.holds(row) || two.holds(row); }};
        case 2:
            return {"NOT (" + one.sql + ")", [=](LogRow const& row) { return !one.holds(row); }};
        default:
            return one;
        }
    }

private:
    Condition simple() {
        LogRow const& some =
            log_.messages()[static_cast<std::size_t>(pick(log_.messages().size()))];
        switch (pick(8)) {
        case 0:
            return {"type = '" + some.type + "'",
                    [=](LogRow const& row) { return row.type == some.type; }};
        case 1:
            return {"stream BETWEEN 2 AND 3",
                    [](LogRow const& row) { return row.stream == 2 || row.stream == 3; }};
        case 2:
            return {"sender = '" + some.sender + "'",
                    [=](LogRow const& row) { return row.sender == some.sender; }};
        case 3:
            return {"seq % 3 = 1", [](LogRow const& row) { return row.seq % 3 == 1; }};
        case 4:
            return {"time >= '" + some.time + "'",
                    [=](LogRow const& row) { return row.time >= some.time; }};
        case 5:
            return {"tag(41) IS NULL", [](LogRow const& row) { return !row.tag(41); }};
        case 6:
            return {"instr(text, '=MSFT') > 0",
                    [](LogRow const& row) { return row.text.find("=MSFT") != std::string::npos; }};
        default:
            return {"coalesce(tag(55), '') = 'IBM'",
                    [](LogRow const& row) { return row.tag(55) == "IBM"; }};
        }
    }

    LogModel const& log_;
    std::mt19937 random_{20261121};
};

Messages query(Trial& trial, std::string const& where, std::string const& orderBy = "",
               bool newestFirst = false, long stream = -1) {
    Messages found;
    Trial::engine().retrieveMessagesByQuery(Trial::me, trial.name(), found, stream, where, orderBy,
                                            newestFirst);
    return found;
}

void answerQueries(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    RandomConditions conditions(log);
    for (int i = 0; i < 60; ++i) {
        Condition const asked = conditions.next();
        long const stream = conditions.pick(6) - 1;
        bool const newestFirst = conditions.pick(2) != 0;
        EXPECT_EQ(idsOf(query(trial, asked.sql, "", newestFirst, stream)),
                  log.answer({stream, asked.holds, newestFirst}))
            << asked.sql;
    }
}

void filterRanges(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    RandomConditions conditions(log);
    int const from = log.messages()[log.messages().size() / 4].id;
    int const to = log.messages()[log.messages().size() / 4 * 3].id;
    for (int i = 0; i < 30; ++i) {
        Condition const asked = conditions.next();
        auto const holds = [&](LogRow const& row) {
            return row.id >= from && row.id <= to && asked.holds(row);
        };
        Messages found;
        Trial::engine().retrieveMessagesByIdRange(Trial::me, trial.name(), found, -1, from, to,
                                                  asked.sql, true);
        EXPECT_EQ(idsOf(found), log.answer({-1, holds, true})) << asked.sql;
    }
}

void filterTables(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    RandomConditions conditions(log);
    for (int i = 0; i < 30; ++i) {
        Condition const asked = conditions.next();
        Table table;
        Trial::engine().retrieveMessageLogData(Trial::me, trial.name(), -1, "id",
                                               "(" + asked.sql + ") AND text <> ''", "id DESC",
                                               table);
        Ids found;
        for (std::size_t row = 1; row < table.size(); ++row) {
            found.push_back(std::stoi(table[row].at(0)));
        }
        EXPECT_EQ(found, log.answer({-1, asked.holds, true})) << asked.sql;
    }
}

void order(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    auto const isOrder = [](LogRow const& row) { return row.type == "D" && row.stream == 3; };
    Ids wanted = log.answer({3, isOrder, false});
    std::ranges::stable_sort(wanted, [&](int left, int right) {
        return *log.row(left).tag(55) > *log.row(right).tag(55);
    });
    EXPECT_EQ(idsOf(query(trial, "type = 'D'", "tag(55) DESC, id", false, 3)), wanted);
    EXPECT_EQ(idsOf(query(trial, "type = 'D'", "tag(55) DESC, id", true, 3)),
              Ids(wanted.rbegin(), wanted.rend()));
}

void areRefusedWithTheReason(Trial& trial) {
    trial.connect();
    trial.send(trial.newId());
    struct Fault {
        char const* where;
        char const* reason;
    };
    for (Fault const& each : {Fault{"type =", ""}, Fault{"colour = 'red'", "colour"},
                              Fault{"(type = 'D'", ""}, Fault{"1); DELETE FROM messages; --", ""},
                              Fault{"1 IN (SELECT 1 FROM sqlite_master)", ""},
                              Fault{"load_extension('x')", ""}, Fault{"tag('x') = '1'", ""}}) {
        SCOPED_TRACE(each.where);
        expectFailure<ZANInvalidMessageException>([&] { query(trial, each.where); }, each.reason);
        expectFailure<ZANInvalidMessageException>([&] { query(trial, "", each.where); });
    }
    EXPECT_FALSE(query(trial, "type = 'D'").empty()) << "a refusal ends nothing";
}

} // namespace

Promises expressionPromises() {
    using A = Ability;
    std::vector<A> const needs = {A::Connections, A::Sending, A::Events, A::Log, A::Expressions};
    return {
        {"Expressions", "AnswerQueries", needs, answerQueries},
        {"Expressions", "FilterRanges", needs, filterRanges},
        {"Expressions", "FilterTables", needs, filterTables},
        {"Expressions", "Order", needs, order},
        {"Expressions", "AreRefusedWithTheReason", needs, areRefusedWithTheReason},
    };
}

} // namespace zan::conformance
