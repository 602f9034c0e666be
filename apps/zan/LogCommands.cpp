// The commands that read the message log.
#include "apps/zan/Command.h"
#include "apps/zan/ConnectionDictionary.h"
#include "apps/zan/ExpressionNames.h"
#include "apps/zan/LogSearch.h"
#include "apps/zan/LogTimes.h"
#include "apps/zan/ShownMessages.h"

#include <algorithm>
#include <charconv>

namespace zan::cli {

namespace {

class LogCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "log", "Shows entries of a message log");
        Options options(*app_);
        options.onlyConnection(search_.connection)
            .text(search_.from, "--from", timeKind, std::string("from this time on: ") + timeForms)
            .text(search_.to, "--to", timeKind, "up to this time, included")
            .text(ids_, "--ids", "IDS", "these ids: 17, 100-200, 100- or -200")
            .stream(stream_)
            .where(search_.where)
            .text(search_.orderBy, "--order-by", expressionKind,
                  "an expression to sort by; by id without it")
            .flag(search_.newestFirst, "--newest-first", "turn the order round")
            .number(search_.limit, "-n,--limit", 1, "no more entries than this");
        shown_.addTo(options);
    }

    ExitCode run(Context& context) override {
        search_.stream = streamOf(stream_);
        search_.ids = ids_.empty() ? IdRange() : idRangeOf(ids_);
        search_.from = timeBeginning(search_.from);
        search_.to = timeBeginning(search_.to);
        Session session(context.settings, context.interrupt, Purpose::Reads);
        search_.connection = session.nameOr(search_.connection);
        shown_.begin(session, search_.connection, context);
        search_.where = withTagNumbers(search_.where, context.names);
        search_.orderBy = withTagNumbers(search_.orderBy, context.names);
        search(session, search_, context.interrupt,
               [&](MessageRow const& row) { shown_.print(row, context); });
        return ExitCode::Ok;
    }

private:
    LogSearch search_;
    std::string stream_ = "all";
    std::string ids_;
    ShownMessages shown_;
};

class ChainCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "chain",
                           "Shows every message of the orders that belong to ids or ClOrdIDs");
        Options options(*app_);
        options.connection(name_)
            .texts(orders_, "order", "ORDER", "ClOrdIDs; #17 is the message with the id 17")
            .required()
            .flag(newestFirst_, "--newest-first", "turn the order round");
        shown_.addTo(options);
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt, Purpose::Reads);
        shown_.begin(session, name_, context);
        for (MessageRow const& row : rowsOf(session)) {
            shown_.print(row, context);
        }
        return ExitCode::Ok;
    }

private:
    // The chain tells which messages; what is shown of them is in the log's table.
    std::vector<MessageRow> rowsOf(Session& session) const {
        std::vector<int> ids;
        std::vector<std::string> clientOrderIds;
        for (std::string const& order : orders_) {
            if (order.starts_with('#')) {
                ids.push_back(idIn(order));
            } else {
                clientOrderIds.push_back(order);
            }
        }
        std::vector<counted_ptr<ZANMessage>> messages;
        session.engine().retrieveMessageChain(session.ticket(), name_, messages, ids,
                                              clientOrderIds, newestFirst_);
        std::vector<int> found;
        found.reserve(messages.size());
        for (counted_ptr<ZANMessage> const& message : messages) {
            found.push_back(message->getConnectionMessageId());
        }
        return rowsOfIds(session, found);
    }

    std::vector<MessageRow> rowsOfIds(Session& session, std::vector<int> const& ids) const {
        constexpr std::size_t atATime = 500;
        LogSearch search;
        search.connection = name_;
        std::vector<MessageRow> rows;
        for (std::size_t at = 0; at < ids.size(); at += atATime) {
            std::string list;
            for (std::size_t each = at; each < std::min(ids.size(), at + atATime); ++each) {
                list += (list.empty() ? "" : ",") + std::to_string(ids[each]);
            }
            std::vector<MessageRow> piece = rowsWhere(session, search, "id IN (" + list + ")");
            if (newestFirst_) {
                std::ranges::reverse(piece);
            }
            rows.insert(rows.end(), piece.begin(), piece.end());
        }
        return rows;
    }

    static int idIn(std::string const& order) {
        int id = 0;
        char const* const end = order.data() + order.size();
        auto const [stop, error] = std::from_chars(order.data() + 1, end, id);
        if (error != std::errc() || stop != end) {
            throw UsageError("\"" + order + "\" is no id; # and a number would be right");
        }
        return id;
    }

    std::string name_;
    std::vector<std::string> orders_;
    bool newestFirst_ = false;
    ShownMessages shown_;
};

class AuditCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "audit",
                           "Shows what entries of a message log were before they were edited");
        Options(*app_)
            .onlyConnection(name_)
            .stream(stream_)
            .where(where_)
            .text(list_, "--columns", "COLUMNS",
                  "what the table shows, with commas: edited, user, action and the columns of log")
            .flag(newestFirst_, "--newest-first", "turn the order round");
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt, Purpose::Reads);
        std::string const name = session.nameOr(name_);
        useDictionaryOf(session, name, context.names);
        columns_ = list_.empty() ? std::vector<std::string>{"edited", "user",   "action", "id",
                                                            "time",   "stream", "type",   "fields"}
                                 : auditColumns(context);
        context.output.setColumns(tableColumnsOf(columns_));
        std::vector<std::vector<std::string>> table;
        std::string const order = newestFirst_ ? "edited DESC, id DESC" : "edited, id";
        session.engine().retrieveMessageLogData(session.ticket(), name, streamOf(stream_), asked,
                                                withTagNumbers(where_, context.names), order,
                                                table);
        for (std::size_t row = 1; row < table.size(); ++row) {
            context.output.print(record(table[row], context));
        }
        return ExitCode::Ok;
    }

private:
    static constexpr char const* asked =
        "edited,user,action,id,time,stream,type,seq,sender,target,text,note";
    static constexpr std::size_t auditOnly = 3;

    std::vector<std::string> auditColumns(Context& context) const {
        std::vector<std::string> columns;
        for (std::string const& column : listOf(list_)) {
            bool const isOwn = column == "edited" || column == "user" || column == "action";
            columns.push_back(isOwn ? column : messageColumnsOf(column, context.names).front());
        }
        return columns;
    }

    Record record(std::vector<std::string> const& row, Context& context) const {
        std::vector<std::string> const ofLog(row.begin() + auditOnly, row.end());
        std::vector<std::string> others;
        std::ranges::copy_if(columns_, std::back_inserter(others), [](std::string const& column) {
            return column != "edited" && column != "user" && column != "action";
        });
        Record record{{"edited", row[0]}, {"user", row[1]}, {"action", row[2]}};
        MessageRow then = messageRow(ofLog);
        if (!context.settings.showsSecrets) {
            then = withoutSecrets(std::move(then));
        }
        std::ranges::move(messageRecord(then, others, context.names), std::back_inserter(record));
        return record;
    }

    std::string name_;
    std::string stream_ = "all";
    std::string where_;
    std::string list_;
    bool newestFirst_ = false;
    std::vector<std::string> columns_;
};

} // namespace

void addLogCommands(Commands& commands) {
    commands.push_back(std::make_unique<LogCommand>());
    commands.push_back(std::make_unique<ChainCommand>());
    commands.push_back(std::make_unique<AuditCommand>());
}

} // namespace zan::cli
