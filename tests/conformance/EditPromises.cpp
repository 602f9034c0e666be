// Edits of the message log, and what stays of them.
#include "conformance/LogModel.h"
#include "errors/ZANInvalidMessageException.h"

namespace zan::conformance {

namespace {

// One order, after the session has ended, so that nothing comes into the log meanwhile.
std::string loggedOrder(Trial& trial) {
    EventRecorder& recorder = trial.listen();
    trial.connect();
    std::string const id = trial.newId();
    EXPECT_TRUE(trial.waitForOrder(recorder, id, trial.send(id)));
    trial.disconnect();
    return id;
}

std::string sameId(std::string const& id) {
    return "tag(11) = '" + id + "'";
}

Table table(Trial& trial, std::string const& columns, std::string const& where) {
    Table rows;
    Trial::engine().retrieveMessageLogData(Trial::me, trial.name(), -1, columns, where, "", rows);
    rows.erase(rows.begin());
    return rows;
}

long update(Trial& trial, long stream, std::string const& assignments, std::string const& where) {
    return Trial::engine().updateMessageLogData(Trial::me, trial.name(), stream, assignments,
                                                where);
}

void changeNotes(Trial& trial) {
    std::string const id = loggedOrder(trial);
    EXPECT_EQ(update(trial, 3, "note = 'seen ' || tag(55)", sameId(id)), 1);
    EXPECT_EQ(table(trial, "note", "stream = 3 AND " + sameId(id)), Table{{"seen IBM"}});
    EXPECT_EQ(update(trial, 3, "note = 'x'", "id < 0"), 0);
}

void deleteRows(Trial& trial) {
    std::string const id = loggedOrder(trial);
    auto const rows = static_cast<long>(table(trial, "id", sameId(id)).size());
    EXPECT_GE(rows, 1);
    EXPECT_EQ(Trial::engine().deleteMessageLogData(Trial::me, trial.name(), -1, sameId(id)), rows);
    EXPECT_TRUE(table(trial, "id", sameId(id)).empty());
    EXPECT_FALSE(table(trial, "id", "").empty());
}

void insertMessagesForNobody(Trial& trial) {
    loggedOrder(trial);
    EventRecorder& recorder = trial.listen();
    std::string const id = trial.newId();
    auto const message = trial.orderModel(id);
    EXPECT_EQ(Trial::engine().insertMessageLogData(Trial::me, trial.name(), {message, message}), 2);
    EXPECT_EQ(table(trial, "type", sameId(id)), (Table{{"D"}, {"D"}}));
    std::string const next = trial.newId();
    trial.connect();
    ASSERT_TRUE(trial.waitForOrder(recorder, next, trial.send(next)));
    EXPECT_EQ(recorder.first([&](SeenEvent const& e) { return e.field(11) == id; }).id, 0);
}

void leaveWhatWasInTheAudit(Trial& trial) {
    std::string const id = loggedOrder(trial);
    update(trial, 3, "note = 'x'", sameId(id));
    Trial::engine().deleteMessageLogData(Trial::me, trial.name(), 3, sameId(id));
    EXPECT_EQ(table(trial, "user, action, stream, note", sameId(id)),
              (Table{{"conformance", "update", "3", ""}, {"conformance", "delete", "3", "x"}}));
}

void keepWhatIdentifiesAMessage(Trial& trial) {
    loggedOrder(trial);
    for (char const* const column : {"id", "stream", "seq"}) {
        expectFailure<ZANInvalidMessageException>(
            [&] { update(trial, -1, std::string(column) + " = 1", ""); }, column);
    }
}

} // namespace

Promises editPromises() {
    using A = Ability;
    std::vector<A> const edits = {A::Connections, A::Sending,     A::Events,
                                  A::Log,         A::Expressions, A::Edits};
    return {
        {"Edits", "ChangeNotes", edits, changeNotes},
        {"Edits", "DeleteRows", edits, deleteRows},
        {"Edits", "InsertMessagesForNobody", edits, insertMessagesForNobody},
        {"Edits", "LeaveWhatWasInTheAudit", edits, leaveWhatWasInTheAudit},
        {"Edits", "KeepWhatIdentifiesAMessage", edits, keepWhatIdentifiesAMessage},
    };
}

} // namespace zan::conformance
