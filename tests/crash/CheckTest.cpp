// The checks of the crash tests find what they are made for.
#include "crash/Check.h"
#include "crash/OrderText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace {

using crash::Evidence;

std::string message(std::string const& type, int seq, std::string const& body) {
    return "8=FIX.4.4|9=1|35=" + type + "|34=" + std::to_string(seq) +
           "|49=US|52=20261121-09:30:00.000|56=THEM|" + body + "10=000|";
}

std::string orderMessage(int seq, std::string const& id) {
    return message("D", seq, crash::orderFields(id));
}

std::string reportMessage(int seq, std::string const& id) {
    return message("8", seq, "17=" + id + "|58=filled " + id + "|");
}

/// A Logon, an order that was sent alone, a batch, and two reports.
Evidence goodEvidence() {
    Evidence good;
    std::string const logon = message("A", 1, "98=0|108=10|");
    good.log.push_back({1, 1, "A", 1, logon, ""});
    good.log.push_back({2, 3, "D", 2, orderMessage(2, "1-0-0"), ""});
    crash::Acknowledged acknowledged;
    acknowledged.ones.push_back({2, "1-0-0"});
    acknowledged.batches.emplace_back();
    for (int i = 0; i < 5; ++i) {
        std::string const id = "1-3-" + std::to_string(i);
        good.log.push_back({3 + i, 3, "D", 3 + i, orderMessage(3 + i, id), ""});
        acknowledged.batches.front().push_back(id);
    }
    for (int i = 0; i < 2; ++i) {
        std::string const report = reportMessage(1 + i, "E-" + std::to_string(i));
        good.log.push_back({8 + i, 2, "8", 1 + i, report, ""});
        good.journal.sent.push_back(report);
    }
    good.acknowledged.push_back(acknowledged);
    crash::Consumed consumed;
    for (crash::LogRow const& row : good.log) {
        consumed.events.push_back({row.id, row.stream, false});
        if (row.type == "D") {
            good.journal.raw.push_back(row.text);
            good.journal.taken.push_back(crash::fieldOf(row.text, 11));
        }
    }
    consumed.kept.push_back({9, 2, false});
    good.consumed.push_back(consumed);
    good.journal.logons.push_back(logon);
    return good;
}

/// A message for the listeners alone, with a note.
void addPost(Evidence& evidence) {
    evidence.log.push_back({10, 2, "B", 0, message("B", 0, "148=P-1-0|"), "edited"});
    evidence.acknowledged[0].posts.push_back({10, "P-1-0"});
    evidence.acknowledged[0].edited.insert(10);
    evidence.consumed[0].events.push_back({10, 2, false});
}

crash::Report reportOn(Evidence const& evidence) {
    crash::Report report;
    crash::Check(evidence, report).atTheEnd();
    return report;
}

TEST(CrashCheck, FindsNothingWhereNothingIsWrong) {
    crash::Report const report = reportOn(goodEvidence());
    EXPECT_TRUE(report.isGood()) << report.table();
    EXPECT_EQ(report.acknowledged, 6);
    EXPECT_EQ(report.acknowledgedInLog, 6);
    EXPECT_EQ(report.acknowledgedAtPeer, 6);
    EXPECT_EQ(report.reportsInLog, 2);
    EXPECT_EQ(report.consumed, 9);
}

TEST(CrashCheck, FindsNothingWrongInPostsEditsAndResets) {
    Evidence evidence = goodEvidence();
    addPost(evidence);
    evidence.mayReset = true;
    evidence.log.push_back({11, 1, "", 0, "", "sequence numbers reset to 1 by crash"});
    std::string const logon = message("A", 1, "98=0|141=Y|");
    evidence.log.push_back({12, 1, "A", 1, logon, ""});
    evidence.consumed[0].events.push_back({12, 1, false});
    evidence.journal.logons.push_back(logon);
    crash::Report const report = reportOn(evidence);
    EXPECT_TRUE(report.isGood()) << report.table();
    EXPECT_EQ(report.posts, 1);
    EXPECT_EQ(report.edits, 1);
    EXPECT_EQ(report.resets, 1);
}

struct Damage {
    char const* fault;
    std::function<void(Evidence&)> make;
};

void replace(std::string& text, std::string const& what, std::string const& by) {
    text.replace(text.find(what), what.size(), by);
}

TEST(CrashCheck, FindsEachFault) {
    for (Damage const& damage : {
             Damage{"acknowledged orders that are not in the log",
                    [](Evidence& e) { e.log.erase(e.log.begin() + 1); }},
             Damage{"orders under another id than acknowledged",
                    [](Evidence& e) { e.acknowledged[0].ones[0].id = 4; }},
             Damage{"orders twice in the log", [](Evidence& e) { e.log.push_back(e.log[1]); }},
             Damage{"reports twice in the log", [](Evidence& e) { e.log.push_back(e.log[7]); }},
             Damage{"numbers out of step in the log", [](Evidence& e) { e.log[1].seq = 4; }},
             Damage{"batches that are not whole in the log",
                    [](Evidence& e) { e.log.erase(e.log.begin() + 6); }},
             Damage{"orders on the wire that are not in the log",
                    [](Evidence& e) { e.journal.raw.push_back(orderMessage(9, "1-0-9")); }},
             Damage{"orders on the wire that the log has otherwise",
                    [](Evidence& e) { replace(e.journal.raw[0], "|55=", "|55=X"); }},
             Damage{"repeated orders on the wire that are not in the log",
                    [](Evidence& e) {
                        e.journal.raw.push_back(orderMessage(2, "1-0-0"));
                        replace(e.journal.raw.back(), "|49=", "|43=Y|49=");
                    }},
             Damage{"delivered entries that are not in the log",
                    [](Evidence& e) {
                        e.consumed[0].events.push_back({10, 2, false});
                    }},
             Damage{"entries delivered out of order",
                    [](Evidence& e) {
                        std::swap(e.consumed[0].events[1].id, e.consumed[0].events[2].id);
                    }},
             Damage{"entries delivered again below a mark",
                    [](Evidence& e) {
                        e.consumed.emplace_back();
                        e.consumed[1].events.push_back({9, 2, true});
                    }},
             Damage{"orders twice at the counterparty",
                    [](Evidence& e) { e.journal.taken.push_back("1-0-0"); }},
             Damage{"orders in the log that the counterparty has not got",
                    [](Evidence& e) { e.journal.taken.pop_back(); }},
             Damage{"orders with another content",
                    [](Evidence& e) { replace(e.log[1].text, "|40=2", "|40=1"); }},
             Damage{"orders with another content at the counterparty",
                    [](Evidence& e) { replace(e.journal.raw[0], "|40=2", "|40=1"); }},
             Damage{"reports that are not in the log", [](Evidence& e) { e.log.pop_back(); }},
             Damage{"reports that the log has otherwise",
                    [](Evidence& e) { replace(e.log[8].text, "filled", "killed"); }},
             Damage{"reports in the log that nobody has sent",
                    [](Evidence& e) { e.journal.sent.pop_back(); }},
             Damage{"entries that the listener never got",
                    [](Evidence& e) { e.consumed[0].events.pop_back(); }},
             Damage{"sessions that began anew",
                    [](Evidence& e) { e.journal.logons.push_back(e.journal.logons[0]); }},
             Damage{"sessions that began anew",
                    [](Evidence& e) { replace(e.journal.logons[0], "|98=", "|141=Y|98="); }},
             Damage{"complaints of the counterparty",
                    [](Evidence& e) { e.journal.events.push_back("MsgSeqNum too low, ..."); }},
             Damage{"posts that are not in the log",
                    [](Evidence& e) {
                        addPost(e);
                        e.log.pop_back();
                    }},
             Damage{"posts twice in the log",
                    [](Evidence& e) {
                        addPost(e);
                        e.log.push_back(e.log.back());
                    }},
             Damage{"posts under another id than acknowledged",
                    [](Evidence& e) {
                        addPost(e);
                        e.acknowledged[0].posts[0].id = 11;
                    }},
             Damage{"edits that are lost",
                    [](Evidence& e) {
                        addPost(e);
                        e.log.back().note.clear();
                    }},
             Damage{"deleted entries that are in the log",
                    [](Evidence& e) {
                        addPost(e);
                        e.acknowledged[0].removed.insert(10);
                    }},
             Damage{"messages that were refused",
                    [](Evidence& e) { e.log[0].note = "the sequence number is too low"; }},
         }) {
        Evidence evidence = goodEvidence();
        damage.make(evidence);
        crash::Report const report = reportOn(evidence);
        EXPECT_TRUE(report.wrong.contains(damage.fault)) << damage.fault << "\n" << report.table();
    }
}

} // namespace
