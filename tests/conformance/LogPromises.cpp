// What the message log holds, and how it is asked without expressions: every answer is compared
// with a search by hand through the whole table.
#include "conformance/LogModel.h"
#include "errors/ZANInvalidMessageException.h"
#include "infra/Time.h"

#include <algorithm>

namespace zan::conformance {

namespace {

void keepWhatWasSent(Trial& trial) {
    trial.connect();
    std::string const id = trial.newId();
    int const number = static_cast<int>(trial.send(id));
    Messages found;
    Trial::engine().retrieveMessagesByIdRange(Trial::me, trial.name(), found, 3, number, number, "",
                                              false);
    ASSERT_EQ(idsOf(found), Ids{number});
    EXPECT_EQ(fieldOf(found.front(), 16580), std::to_string(number));
    EXPECT_NEAR(found.front()->getTimeStamp(), static_cast<double>(infra::Time::now().getMillis()),
                120000);
    auto const sent = trial.orderModel(id)->getFieldGroup();
    for (auto fields = sent->fieldIterator(); fields->hasNext(); fields->next()) {
        auto const field = fields->current();
        EXPECT_EQ(fieldOf(found.front(), field->getTag()), field->getValue().asString());
    }
}

void showTheLogAsATable(Trial& trial) {
    trial.connect();
    int const number = static_cast<int>(trial.send(trial.newId()));
    Table table{{"before"}};
    Table& result = Trial::engine().retrieveMessageLogData(Trial::me, trial.name(), 3, "id, type",
                                                           "", "", table);
    EXPECT_EQ(&result, &table);
    ASSERT_GE(table.size(), 3u);
    EXPECT_EQ(table[0], std::vector<std::string>{"before"});
    EXPECT_EQ(table[1], (std::vector<std::string>{"id", "type"}));
    std::vector<std::string> const wanted = {std::to_string(number), "D"};
    EXPECT_NE(std::ranges::find(table, wanted), table.end());
    Table all;
    Trial::engine().retrieveMessageLogData(Trial::me, trial.name(), -1, "", "", "", all);
    EXPECT_EQ(all.at(0), (std::vector<std::string>{"id", "time", "stream", "type", "seq", "sender",
                                                   "target", "text", "note"}));
}

void appendAndReturnTheCallersVector(Trial& trial) {
    trial.connect();
    long const number = trial.send(trial.newId());
    Messages found(1);
    Messages& result = Trial::engine().retrieveMessagesByIdRange(Trial::me, trial.name(), found, -1,
                                                                 number, number, "", false);
    EXPECT_EQ(&result, &found);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_FALSE(found.front());
}

// A few ranges of the log, the whole of it and what lies beside it.
std::vector<std::pair<std::size_t, std::size_t>> rangesOf(LogModel const& log) {
    std::size_t const last = log.messages().size() - 1;
    return {{0, last}, {0, 0}, {last, last}, {last / 3, last / 2}, {last / 2, last / 3}};
}

void findRangesOfIds(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    for (auto const& [first, last] : rangesOf(log)) {
        int const from = log.messages()[first].id;
        int const to = log.messages()[last].id;
        for (long stream = -1; stream <= 4; ++stream) {
            for (bool const newestFirst : {false, true}) {
                Messages found;
                Trial::engine().retrieveMessagesByIdRange(Trial::me, trial.name(), found, stream,
                                                          from, to, "", newestFirst);
                auto const isIn = [&](LogRow const& row) { return row.id >= from && row.id <= to; };
                EXPECT_EQ(idsOf(found), log.answer({stream, isIn, newestFirst}))
                    << from << " to " << to << " of stream " << stream;
            }
        }
    }
}

void findRangesOfTime(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    for (auto const& [first, last] : rangesOf(log)) {
        std::string const from = log.messages()[first].time;
        std::string const to = log.messages()[last].time;
        auto const isIn = [&](LogRow const& row) { return row.time >= from && row.time <= to; };
        for (bool const newestFirst : {false, true}) {
            Messages found;
            Trial::engine().retrieveMessagesByDateRange(
                Trial::me, trial.name(), found, 3, infra::Time::fromString(from),
                infra::Time::fromString(to), "", newestFirst);
            EXPECT_EQ(idsOf(found), log.answer({3, isIn, newestFirst})) << from << " to " << to;
            Messages all;
            Trial::engine().retrieveMessagesByDateRange(
                Trial::me, trial.name(), all, infra::Time::fromString(from),
                infra::Time::fromString(to), "", newestFirst);
            EXPECT_EQ(idsOf(all), log.answer({-1, isIn, newestFirst})) << from << " to " << to;
        }
    }
}

void findSetsOfIds(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    Ids wanted;
    for (std::size_t i = 0; i < log.messages().size(); i += 3) {
        wanted.insert(wanted.begin(), log.messages()[i].id);
    }
    wanted.push_back(wanted.front());
    wanted.push_back(2000000000);
    auto const isIn = [&](LogRow const& row) {
        return std::ranges::find(wanted, row.id) != wanted.end();
    };
    for (bool const newestFirst : {false, true}) {
        Messages found;
        Trial::engine().retrieveMessagesByIdSet(Trial::me, trial.name(), found, -1, wanted, "",
                                                newestFirst);
        EXPECT_EQ(idsOf(found), log.answer({-1, isIn, newestFirst}));
        Messages sent;
        Trial::engine().retrieveMessagesByIdSet(Trial::me, trial.name(), sent, 3, wanted, "",
                                                newestFirst);
        EXPECT_EQ(idsOf(sent), log.answer({3, isIn, newestFirst}));
    }
}

void giveTheIdsOfStreams(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    for (long stream = -1; stream <= 4; ++stream) {
        for (bool const newestFirst : {false, true}) {
            Question question;
            question.stream = stream;
            question.newestFirst = newestFirst;
            EXPECT_EQ(Trial::engine().getMessageIds(Trial::me, trial.name(), stream, newestFirst),
                      log.answer(question));
        }
    }
}

void followChains(Trial& trial) {
    LogModel const log = LogModel::filled(trial);
    for (std::size_t i = 0; i < log.messages().size(); i += 4) {
        LogRow const& row = log.messages()[i];
        Messages byId;
        Trial::engine().retrieveMessageChain(Trial::me, trial.name(), byId, {row.id}, {}, false);
        Ids const wanted = log.chain({row.id}, {});
        if (row.tag(11)) {
            EXPECT_EQ(idsOf(byId), wanted) << row.text;
            Messages byOrder;
            Trial::engine().retrieveMessageChain(Trial::me, trial.name(), byOrder, {},
                                                 {*row.tag(11)}, true);
            EXPECT_EQ(idsOf(byOrder), Ids(wanted.rbegin(), wanted.rend())) << row.text;
        }
    }
}

void refuseStreamsThatThereAreNot(Trial& trial) {
    for (long const stream : {5L, -2L}) {
        Messages found;
        std::string const number = std::to_string(stream);
        expectFailure<ZANInvalidMessageException>(
            [&] {
                Trial::engine().retrieveMessagesByIdRange(Trial::me, trial.name(), found, stream, 1,
                                                          2, "", false);
            },
            number);
        expectFailure<ZANInvalidMessageException>(
            [&] { Trial::engine().getMessageIds(Trial::me, trial.name(), stream, false); }, number);
    }
}

void outliveTheAdapter(Trial& trial) {
    LogModel const before = LogModel::filled(trial);
    trial.restart();
    LogModel const after(trial);
    ASSERT_GE(after.messages().size(), before.messages().size());
    for (std::size_t i = 0; i < before.messages().size(); ++i) {
        EXPECT_EQ(after.messages()[i].id, before.messages()[i].id);
        EXPECT_EQ(after.messages()[i].text, before.messages()[i].text);
    }
    trial.connect();
    EXPECT_GT(trial.send(trial.newId()), before.messages().back().id);
}

void sendAgainWhatWasSent(Trial& trial) {
    trial.connect();
    EventRecorder& recorder = trial.listen();
    infra::Time const from(infra::Time::now());
    std::string const one = trial.newId();
    std::string const two = trial.newId();
    trial.send(one);
    ASSERT_TRUE(trial.waitForOrder(recorder, two, trial.send(two)));
    infra::Time const to(infra::Time::now());
    EXPECT_EQ(Trial::engine().resendMessages(Trial::me, trial.name(), from, to, ""), 2);
    trial.disconnect();
    Messages again;
    Trial::engine().retrieveMessagesByDateRange(Trial::me, trial.name(), again, 4, from,
                                                infra::Time::now(), "", false);
    EXPECT_EQ(fieldsOf(again, 11), one + " " + two);
    EXPECT_EQ(fieldsOf(again, 97), "Y Y");
}

void resendNothingOfATimeWithoutMessages(Trial& trial) {
    trial.connect();
    EXPECT_EQ(
        Trial::engine().resendMessages(Trial::me, trial.name(), infra::Time(0), infra::Time(1), ""),
        0);
}

void showWhatAResendRequestWouldGet(Trial& trial) {
    trial.connect();
    std::string const id = trial.newId();
    int const number = static_cast<int>(trial.send(id));
    int const seq = LogModel(trial).row(number).seq;
    Messages found;
    Trial::engine().retrieveMessagesForResend(Trial::me, trial.name(), found, seq, seq, "");
    EXPECT_EQ(fieldsOf(found, 11), id);
    EXPECT_EQ(fieldsOf(found, 43), "Y");
    Messages newest;
    Trial::engine().retrieveMessagesForResend(Trial::me, trial.name(), newest, seq, 0, "");
    EXPECT_EQ(fieldsOf(newest, 11), id);
}

} // namespace

Promises logPromises() {
    using A = Ability;
    std::vector<A> const log = {A::Connections, A::Sending, A::Log};
    std::vector<A> const filled = {A::Connections, A::Sending, A::Events, A::Log};
    std::vector<A> const lasting = {A::Connections, A::Sending, A::Events, A::Log, A::Persistence};
    std::vector<A> const resending = {A::Connections, A::Sending, A::Events, A::Log, A::Resending};
    return {
        {"Log", "KeepsWhatWasSent", log, keepWhatWasSent},
        {"Log", "IsShownAsATable", log, showTheLogAsATable},
        {"Log", "IsAppendedToTheCallersVector", log, appendAndReturnTheCallersVector},
        {"Log", "FindsRangesOfIds", filled, findRangesOfIds},
        {"Log", "FindsRangesOfTime", filled, findRangesOfTime},
        {"Log", "FindsSetsOfIds", filled, findSetsOfIds},
        {"Log", "GivesTheIdsOfStreams", filled, giveTheIdsOfStreams},
        {"Log", "FollowsChains", filled, followChains},
        {"Log", "RefusesStreamsThatThereAreNot", log, refuseStreamsThatThereAreNot},
        {"Log", "OutlivesTheAdapter", lasting, outliveTheAdapter},
        {"Resending", "SendsAgainWhatWasSent", resending, sendAgainWhatWasSent},
        {"Resending", "FindsNothingWhereNothingWasSent", resending,
         resendNothingOfATimeWithoutMessages},
        {"Resending", "ShowsWhatAResendRequestWouldGet", resending, showWhatAResendRequestWouldGet},
    };
}

} // namespace zan::conformance
