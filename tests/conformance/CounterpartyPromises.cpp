// What a counterparty can do to a connection. These need a context with a scripted one.
#include "conformance/LogModel.h"
#include "conformance/ScriptedCounterparty.h"
#include "conformance/Trial.h"
#include "errors/ZANCannotConnectException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANNotConnectedException.h"

#include <algorithm>

namespace zan::conformance {

namespace {

/// Runs a check with the scripted counterparty, where the context has one.
template <void (*check)(Trial&, ScriptedCounterparty&)>
void withCounterparty(Trial& trial) {
    ScriptedCounterparty* const counterparty = trial.context().counterparty();
    if (counterparty == nullptr) {
        GTEST_SKIP() << "the context has no scripted counterparty";
    }
    check(trial, *counterparty);
}

bool isNews(SeenEvent const& event) {
    return event.isType("B");
}

void refusesALogonInItsOwnWords(Trial& trial, ScriptedCounterparty& counterparty) {
    counterparty.setScript("on A send 5 58=not before nine\non A close\n");
    expectFailure<ZANInvalidLogonException>([&] { trial.connect(); }, "not before nine");
    EXPECT_FALSE(trial.isConnected());
    EXPECT_NE(Trial::engine()
                  .getConnectionState(Trial::me, trial.name())
                  ->getLastError()
                  .find("not before nine"),
              std::string::npos);
}

void doesNotAnswerALogon(Trial& trial, ScriptedCounterparty& counterparty) {
    counterparty.setScript("");
    std::string const text = failureOf<ZANCannotConnectException>(
        [&] { Trial::engine().connect(Trial::me, trial.name()); });
    EXPECT_NE(text.find(trial.name()), std::string::npos) << text;
    EXPECT_FALSE(trial.isConnected());
    counterparty.setScript(ScriptedCounterparty::usualScript());
    EXPECT_TRUE(trial.eventually([&] {
        try {
            trial.connect();
            return true;
        } catch (ZANEngineException const&) {
            return false;
        }
    }));
}

void getsTheFieldsOfTheLogon(Trial& trial, ScriptedCounterparty& counterparty) {
    counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup(std::string("A")));
    fields->setFieldValue(553, "user");
    Trial::engine().connect(Trial::me, trial.name(), fields);
    EXPECT_NE(counterparty.waitFor("|35=A|").find("|553=user|"), std::string::npos);
}

void getsTheReasonOfALogout(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    Trial::engine().disconnect(Trial::me, trial.name(), "closing time");
    EXPECT_NE(counterparty.waitFor("|35=5|").find("|58=closing time|"), std::string::npos);
}

void getsEachMessageOnceAndInOrder(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    std::vector<std::string> ids;
    for (int i = 0; i < 50; ++i) {
        ids.push_back(trial.newId());
        trial.send(ids.back());
    }
    ASSERT_NE(counterparty.waitFor("|11=" + ids.back() + "|"), "");
    std::vector<std::string> got;
    int number = 0;
    for (std::string const& each : counterparty.received()) {
        std::string const message = wired(each);
        EXPECT_GT(std::stoi(valueOf(message, "34")), number) << each;
        number = std::stoi(valueOf(message, "34"));
        if (valueOf(message, "35") == "D") {
            got.push_back(valueOf(message, "11"));
        }
    }
    EXPECT_EQ(got, ids);
}

void getsTheHeaderOfTheEngine(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    std::string const id = trial.newId();
    Trial::engine().sendMessage(Trial::me, trial.name(),
                                "8=FIX.4.0|9=1|34=77|49=ME|56=YOU|52=x|" + trial.order(id) +
                                    "|10=000");
    std::string const order = wired(counterparty.waitFor("|11=" + id + "|"));
    for (auto const& [tag, wrong] : std::vector<std::pair<std::string, std::string>>{
             {"9", "1"}, {"34", "77"}, {"49", "ME"}, {"56", "YOU"}, {"52", "x"}}) {
        EXPECT_NE(valueOf(order, tag), "");
        EXPECT_NE(valueOf(order, tag), wrong);
    }
}

void getsNothingThatIsPosted(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    std::string const posted = trial.newId("posted");
    Trial::engine().postInternalMessage(Trial::me, trial.name(), trial.order(posted));
    std::string const id = trial.newId("sent");
    trial.send(id);
    ASSERT_NE(counterparty.waitFor("|11=" + id + "|"), "");
    for (std::string const& each : counterparty.received()) {
        EXPECT_EQ(each.find(posted), std::string::npos) << each;
    }
}

void getsAgain(Trial& trial, ScriptedCounterparty& counterparty,
               std::function<void(std::string const&)> const& meanwhile) {
    trial.connect();
    std::string const id = trial.newId();
    trial.send(id);
    std::string const order = wired(counterparty.waitFor("|11=" + id + "|"));
    ASSERT_NE(order, "");
    meanwhile(id);
    counterparty.send("2", "7=" + valueOf(order, "34") + "|16=" + valueOf(order, "34"));
    std::string const again = wired(counterparty.waitFor("|43=Y|"));
    EXPECT_EQ(valueOf(again, "34"), valueOf(order, "34"));
    EXPECT_EQ(valueOf(again, "11"), id);
    EXPECT_NE(valueOf(again, "122"), "");
}

void getsAgainWhatItAsksFor(Trial& trial, ScriptedCounterparty& counterparty) {
    getsAgain(trial, counterparty, [](std::string const&) {});
}

void getsAgainWhatWasDeleted(Trial& trial, ScriptedCounterparty& counterparty) {
    getsAgain(trial, counterparty, [&](std::string const& id) {
        EXPECT_EQ(Trial::engine().deleteMessageLogData(Trial::me, trial.name(), 3,
                                                       "tag(11) = '" + id + "'"),
                  1);
    });
}

void getsAHeartbeatForATestRequest(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    counterparty.send("1", "112=are you there");
    EXPECT_NE(counterparty.waitFor("|112=are you there|").find("|35=0|"), std::string::npos);
}

void isHeardInItsOrder(Trial& trial, ScriptedCounterparty& counterparty) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::vector<std::string> said;
    for (int i = 0; i < 50; ++i) {
        said.push_back("headline " + std::to_string(i));
        counterparty.send("B", "148=" + said.back());
    }
    ASSERT_TRUE(recorder.waitFor(isNews, 50));
    std::vector<std::string> heard;
    for (SeenEvent const& each : recorder.events()) {
        if (isNews(each)) {
            heard.push_back(each.field(148));
        }
    }
    EXPECT_EQ(heard, said);
}

void isHeardWithItsGroups(Trial& trial, ScriptedCounterparty& counterparty) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    counterparty.send("B", "148=Closing|33=2|58=one|58=two|9001=private");
    ASSERT_TRUE(recorder.waitFor(isNews));
    EXPECT_EQ(recorder.first(isNews).groups, "33(58=one|)33(58=two|)");
    EXPECT_EQ(recorder.first(isNews).field(9001), "private");
}

void isHeardAlsoWithAnUnknownType(Trial& trial, ScriptedCounterparty& counterparty) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    counterparty.send("U9", "9001=private");
    auto const isOwn = [](SeenEvent const& e) { return e.isType("U9"); };
    ASSERT_TRUE(recorder.waitFor(isOwn));
    EXPECT_EQ(recorder.first(isOwn).field(9001), "private");
}

void mayBeLost(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    // A link that is opened again right away would hide the loss.
    counterparty.setScript("");
    counterparty.cut();
    EXPECT_TRUE(trial.eventually([&] { return !trial.isConnected(); }));
    expectFailure<ZANNotConnectedException>([&] { trial.send(trial.newId()); });
    auto const state = Trial::engine().getConnectionState(Trial::me, trial.name());
    EXPECT_FALSE(state->isSessionActive());
    EXPECT_NE(state->getLastError(), "");
}

void mayBeLostAndIsTold(Trial& trial, ScriptedCounterparty& counterparty) {
    EventRecorder& recorder = trial.record();
    trial.connect();
    counterparty.setScript("");
    counterparty.cut();
    EXPECT_TRUE(recorder.waitFor([](SeenEvent const& e) {
        return (e.flags & FLAG_DISCONNECTED) != 0 && (e.flags & FLAG_SESSION_ACTIVE) == 0;
    }));
}

void mayLogOut(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    counterparty.setScript("on 5 close\n");
    counterparty.send("5", "58=good night");
    EXPECT_TRUE(trial.eventually([&] { return !trial.isConnected(); }));
    EXPECT_NE(counterparty.waitFor("|35=5|"), "") << "a Logout is answered";
}

void mayTalkNonsense(Trial& trial, ScriptedCounterparty& counterparty) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    counterparty.sendBytes(std::string("\x01\x02 nonsense 8=FIX 9=x\x01") + '\0' + "10=1");
    counterparty.sendBytes(wired("8=FIX.4.4|9=5|35=0|10=000|"));
    counterparty.send("B", "148=after it");
    auto const isBack = [&] {
        return !recorder.first(isNews).field(148).empty() || !trial.isConnected();
    };
    EXPECT_TRUE(trial.eventually(isBack)) << "neither heard nor shut out";
    trial.disconnect();
    trial.connect();
    EXPECT_GT(trial.send(trial.newId()), 0);
}

void findsItsBytesInTheLog(Trial& trial, ScriptedCounterparty& counterparty) {
    trial.connect();
    std::string const id = trial.newId();
    int const number = static_cast<int>(trial.send(id));
    std::string const order = counterparty.waitFor("|11=" + id + "|");
    trial.disconnect();
    EXPECT_EQ(readable(LogModel(trial).row(number).text), order);
}

} // namespace

Promises counterpartyPromises() {
    using A = Ability;
    std::vector<A> const session = {A::Connections, A::Sessions};
    std::vector<A> const sending = {A::Connections, A::Sessions, A::Sending};
    std::vector<A> const events = {A::Connections, A::Sessions, A::Events};
    std::vector<A> const lost = {A::Connections, A::Sessions, A::Direct, A::States};
    std::vector<A> const posting = {A::Connections, A::Sessions, A::Sending, A::Posting};
    std::vector<A> const nonsense = {A::Connections, A::Sessions, A::Sending, A::Events};
    std::vector<A> const log = {A::Connections, A::Sessions, A::Sending, A::Log};
    std::vector<A> const edits = {A::Connections, A::Sessions, A::Sending, A::Edits};
    char const* const group = "Counterparty";
    return {
        {group, "RefusesALogonInItsOwnWords", session,
         withCounterparty<refusesALogonInItsOwnWords>},
        {group, "DoesNotAnswerALogon", session, withCounterparty<doesNotAnswerALogon>},
        {group, "GetsTheFieldsOfTheLogon", session, withCounterparty<getsTheFieldsOfTheLogon>},
        {group, "GetsTheReasonOfALogout", session, withCounterparty<getsTheReasonOfALogout>},
        {group, "GetsEachMessageOnceAndInOrder", sending,
         withCounterparty<getsEachMessageOnceAndInOrder>},
        {group, "GetsTheHeaderOfTheEngine", sending, withCounterparty<getsTheHeaderOfTheEngine>},
        {group, "GetsNothingThatIsPosted", posting, withCounterparty<getsNothingThatIsPosted>},
        {group, "GetsAgainWhatItAsksFor", sending, withCounterparty<getsAgainWhatItAsksFor>},
        {group, "GetsAgainWhatWasDeleted", edits, withCounterparty<getsAgainWhatWasDeleted>},
        {group, "GetsAHeartbeatForATestRequest", session,
         withCounterparty<getsAHeartbeatForATestRequest>},
        {group, "IsHeardInItsOrder", events, withCounterparty<isHeardInItsOrder>},
        {group, "IsHeardWithItsGroups", events, withCounterparty<isHeardWithItsGroups>},
        {group, "IsHeardAlsoWithAnUnknownType", events,
         withCounterparty<isHeardAlsoWithAnUnknownType>},
        {group, "MayBeLost", sending, withCounterparty<mayBeLost>},
        {group, "MayBeLostAndIsTold", lost, withCounterparty<mayBeLostAndIsTold>},
        {group, "MayLogOut", session, withCounterparty<mayLogOut>},
        {group, "MayTalkNonsense", nonsense, withCounterparty<mayTalkNonsense>},
        {group, "FindsItsBytesInTheLog", log, withCounterparty<findsItsBytesInTheLog>},
    };
}

} // namespace zan::conformance
