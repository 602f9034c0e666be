/// An entry of the message log as commands show it, and the expressions that find entries.
///
/// Threads: values and functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_MESSAGEROW_H
#define ZANENGINE_APPS_ZAN_MESSAGEROW_H

#include "apps/zan/Names.h"
#include "apps/zan/Record.h"
#include "apps/zan/Table.h"

#include <string>
#include <vector>

namespace zan::cli {

/// One entry; all as text, as the log gives it.
struct MessageRow {
    long long id = 0;
    std::string time;
    long long stream = 0;
    std::string type;
    long long seq = 0;
    std::string sender;
    std::string target;
    std::string text; ///< the bytes, separated by SOH
    std::string note;
};

/// The columns to ask the log for, in the order that `messageRow` expects.
inline constexpr char const* messageColumns = "id,time,stream,type,seq,sender,target,text,note";

/// A row of the log's table. Throws `ZANEngineException` for one that has another shape.
MessageRow messageRow(std::vector<std::string> const& row);

/// The same with `***` in place of passwords.
MessageRow withoutSecrets(MessageRow row);

/// What a table shows of an entry when nothing else is asked for.
std::vector<std::string> const& usualMessageColumns();

/// The columns of a list with commas: those of the log, `fields` for the fields of the message with
/// their names, and tags by number or name. Empty: the usual ones. Throws `UsageError` for a column
/// that nobody knows.
std::vector<std::string> messageColumnsOf(std::string const& list, Names& names);

/// The same for a table, with room for what usually stands in them.
std::vector<TableColumn> tableColumnsOf(std::vector<std::string> const& columns);

/// The entry with the columns of the log, then `fields`'s and those tags that `columns` name.
Record messageRecord(MessageRow const& row, std::vector<std::string> const& columns, Names& names);

/// What stands between the commas of a list.
std::vector<std::string> listOf(std::string const& list);

/// `admin-in`, `admin-out`, `app-in`, `app-out`, `resent` for 0 to 4.
std::string streamName(long long stream);

/// The number of a stream by number or name, -1 for `all`. Throws `UsageError`.
long streamOf(std::string const& name);

} // namespace zan::cli

#endif
