#include "server/log/AuditTrail.h"

#include "server/log/LogClock.h"
#include "server/wire/FieldText.h"
#include "server/wire/Secrets.h"

#include <utility>

namespace zan::server {

namespace {

std::int64_t newestEntry(Database const& database) {
    Statement newest(database, "SELECT ifnull(max(entry),0) FROM audit");
    newest.step();
    return newest.number(0);
}

constexpr char const* auditByEntry =
    "SELECT edited,user,action,id,time,stream,seq,text,note,checksum=row_sum(entry,edited,user,"
    "action,id,time,stream,type,seq,text,note) FROM audit WHERE entry=?1";

FixEntry readAudited(Database const& database, Statement& audit, long entry) {
    if (!audit.step() || audit.number(9) != 1) {
        database.failWith("the entry " + std::to_string(entry) +
                          " of the audit is damaged: its checksum does not fit what it holds");
    }
    FixEntry then;
    then.id = static_cast<long>(audit.number(3));
    then.millis = millisOf(std::string(audit.bytes(4)));
    then.stream = static_cast<FixStream>(audit.number(5));
    then.seq = static_cast<int>(audit.number(6));
    then.text = audit.bytes(7);
    then.note = audit.bytes(8);
    return then;
}

} // namespace

TableRow tableRowOf(FixEntry const& entry) {
    return {"",
            "",
            "",
            std::to_string(entry.id),
            timeText(entry.millis),
            std::to_string(static_cast<int>(entry.stream)),
            std::string(typeOf(entry.text)),
            std::to_string(entry.seq),
            std::string(valueOf(entry.text, senderTag)),
            std::string(valueOf(entry.text, targetTag)),
            entry.text,
            entry.note};
}

TableRow auditRow(ReadConnection& connection, long entry) {
    Statement& audit = connection.statement(auditByEntry);
    StatementUse const use(audit);
    FixEntry const then = readAudited(connection.database(), audit.bind(1, entry), entry);
    TableRow row = tableRowOf(then);
    row[0] = audit.bytes(0);
    row[1] = audit.bytes(1);
    row[2] = audit.bytes(2);
    row[10] = maskSecrets(row[10]);
    row[11] = maskSecrets(row[11]);
    return row;
}

AuditedEntry auditedEntry(Database const& database, long entry) {
    Statement audit(database, auditByEntry);
    FixEntry then = readAudited(database, audit.bind(1, entry), entry);
    return {std::string(audit.bytes(2)), std::move(then)};
}

EditTraces::EditTraces(std::string who, char const* what)
    : user(std::move(who)), action(what), edited(timeText(nowMillis())) {}

AuditTrail::AuditTrail(Database const& database, EditTraces const& traces)
    : insert_(database, "INSERT INTO audit(edited,user,action,id,time,stream,type,seq,text,note,"
                        "entry,checksum) VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,"
                        "row_sum(?11,?1,?2,?3,?4,?5,?6,?7,?8,?9,?10))"),
      entry_(newestEntry(database)), traces_(traces) {}

void AuditTrail::add(FixEntry const& entry, std::string const& action) {
    std::string const time = timeText(entry.millis);
    insert_.bindText(1, traces_.edited)
        .bindText(2, traces_.user)
        .bindText(3, action)
        .bind(4, entry.id)
        .bindText(5, time)
        .bind(6, static_cast<std::int64_t>(entry.stream))
        .bindText(7, typeOf(entry.text))
        .bind(8, entry.seq)
        .bindBytes(9, entry.text)
        .bindText(10, entry.note)
        .bind(11, ++entry_)
        .run();
}

} // namespace zan::server
