#include "server/log/LogRow.h"

#include "infra/InfraException.h"
#include "server/log/LogClock.h"
#include "server/log/RowChecksum.h"
#include "server/wire/FieldText.h"

namespace zan::server {

namespace {

// What a row's checksum ends with when the row is hidden; `shownRows` has it too.
constexpr std::int64_t hiddenMark = -1;

// What the checksum is made of, as one row has it.
std::int64_t checksumOf(LogRow const& row, std::string_view time, std::string_view type) {
    FixEntry const& entry = row.entry;
    RowChecksum sum;
    sum.add(std::int64_t{entry.id});
    sum.add(time);
    sum.add(static_cast<std::int64_t>(entry.stream));
    sum.add(type);
    sum.add(std::int64_t{entry.seq});
    sum.add(static_cast<std::int64_t>(entry.origin));
    sum.add(std::int64_t{row.after.nextOut});
    sum.add(std::int64_t{row.after.nextIn});
    sum.add(entry.text);
    sum.add(entry.note);
    if (row.wire) {
        sum.add(*row.wire);
    }
    if (row.isHidden) {
        sum.add(hiddenMark);
    }
    return sum.value();
}

} // namespace

std::string_view typeOf(std::string_view text) {
    return valueOf(text, 35);
}

bool isSent(FixEntry const& entry) {
    return entry.origin == FixOrigin::wire && entry.stream != FixStream::adminIn &&
           entry.stream != FixStream::appIn;
}

std::optional<LogRow> readSoundRow(Statement const& statement) {
    LogRow row;
    row.entry.id = static_cast<long>(statement.number(0));
    std::string_view const time = statement.bytes(1);
    row.entry.stream = static_cast<FixStream>(statement.number(2));
    row.entry.seq = static_cast<int>(statement.number(4));
    row.entry.origin = static_cast<FixOrigin>(statement.number(5));
    row.after.nextOut = static_cast<int>(statement.number(6));
    row.after.nextIn = static_cast<int>(statement.number(7));
    row.entry.text = statement.bytes(8);
    row.entry.note = statement.bytes(9);
    if (!statement.isNull(11)) {
        row.wire = statement.bytes(11);
    }
    row.isHidden = statement.number(12) != 0;
    if (statement.number(10) != checksumOf(row, time, statement.bytes(3))) {
        return std::nullopt;
    }
    try {
        row.entry.millis = millisOf(time);
    } catch (InfraException const&) {
        return std::nullopt;
    }
    return row;
}

LogRow readRow(Database const& database, Statement const& statement) {
    std::optional<LogRow> row = readSoundRow(statement);
    if (!row) {
        database.failWith("the row with id " + std::to_string(statement.number(0)) +
                          " is damaged: its checksum does not fit what it holds");
    }
    return std::move(*row);
}

RowWriter::RowWriter(Database const& database)
    : insert_(database, "INSERT INTO messages(id,time,stream,type,seq,origin,next_out,next_in,"
                        "text,note,checksum) VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11)"),
      update_(database, "UPDATE messages SET type=?2,text=?3,note=?4,checksum=?5,wire=?6,hidden=?7 "
                        "WHERE id=?1") {}

void RowWriter::insert(LogRow const& row, std::string const& time) {
    FixEntry const& entry = row.entry;
    std::string_view const type = typeOf(entry.text);
    insert_.bind(1, entry.id)
        .bindText(2, time)
        .bind(3, static_cast<std::int64_t>(entry.stream))
        .bindText(4, type)
        .bind(5, entry.seq)
        .bind(6, static_cast<std::int64_t>(entry.origin))
        .bind(7, row.after.nextOut)
        .bind(8, row.after.nextIn)
        .bindBytes(9, entry.text)
        .bindText(10, entry.note)
        .bind(11, checksumOf(row, time, type))
        .run();
}

void RowWriter::update(LogRow const& row, std::string const& time) {
    FixEntry const& entry = row.entry;
    std::string_view const type = typeOf(entry.text);
    update_.bind(1, entry.id)
        .bindText(2, type)
        .bindBytes(3, entry.text)
        .bindText(4, entry.note)
        .bind(5, checksumOf(row, time, type))
        .bind(7, row.isHidden ? 1 : 0);
    if (row.wire) {
        update_.bindBytes(6, *row.wire);
    } else {
        update_.bindNull(6);
    }
    update_.run();
}

} // namespace zan::server
