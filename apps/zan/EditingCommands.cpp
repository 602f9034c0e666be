// edit: changes to a message log.
#include "apps/zan/Command.h"
#include "apps/zan/ConnectionDictionary.h"
#include "apps/zan/ExpressionNames.h"
#include "apps/zan/LogSearch.h"
#include "apps/zan/MessageInput.h"
#include "apps/zan/Properties.h"
#include "apps/zan/Question.h"
#include "apps/zan/ShownMessages.h"

namespace zan::cli {

namespace {

class EditCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "edit", "Changes entries of a message log",
                           "What they were stays in the audit, under the name of the user.");
        requireCommand(*app_);
        update_ = &addCommand(*app_, "update", "Assigns to the columns note and text");
        addWhich(*update_)
            .text(assignments_, "assignments", "ASSIGNMENTS", "such as \"note = 'seen'\"")
            .required();
        delete_ = &addCommand(*app_, "delete", "Removes entries");
        addWhich(*delete_);
        undo_ = &addCommand(*app_, "undo", "Takes edits back",
                            "Each entry becomes what it was before the oldest of the edits. The "
                            "expression is about the audit: edited, user and action beside the "
                            "columns of log.");
        addWhich(*undo_);
        insert_ = &addCommand(*app_, "insert", "Puts messages in; listeners do not get them");
        Options(*insert_)
            .connection(name_)
            .texts(messages_, "message", "MESSAGE",
                   "messages with their SenderCompID (49); without any, the lines of standard "
                   "input")
            .yes(isSure_);
    }

    ExitCode run(Context& context) override {
        long const stream = streamOf(stream_);
        Session session(context.settings, context.interrupt);
        useDictionaryOf(session, name_, context.names);
        where_ = withTagNumbers(where_, context.names);
        long const count = isGiven(*update_)   ? update(session, stream, context)
                           : isGiven(*delete_) ? remove(session, stream, context)
                           : isGiven(*undo_)   ? undo(session, stream, context)
                                               : insert(session, context);
        context.output.print({{"name", name_}, {"entries", static_cast<long long>(count)}});
        return ExitCode::Ok;
    }

private:
    Options addWhich(CLI::App& edit) {
        return Options(edit).connection(name_).where(where_).required().stream(stream_).yes(
            isSure_);
    }

    // Asks with the number of entries that the edit would touch now.
    bool isWanted(Session& session, long stream, std::string const& what, Context& context,
                  char const* columns = "id") const {
        if (isSure_) {
            return true;
        }
        std::vector<std::vector<std::string>> table;
        session.engine().retrieveMessageLogData(session.ticket(), name_, stream, columns, where_,
                                                "id", table);
        std::size_t const count = table.empty() ? 0 : table.size() - 1;
        if (count > 0) {
            ask(what + " " + std::to_string(count) + (count == 1 ? " entry" : " entries") +
                    " of the log of " + printable(name_) + "?",
                context.interrupt);
        }
        return count > 0;
    }

    long update(Session& session, long stream, Context& context) const {
        return isWanted(session, stream, "Change", context)
                   ? session.engine().updateMessageLogData(session.ticket(), name_, stream,
                                                           assignments_, where_)
                   : 0;
    }

    long remove(Session& session, long stream, Context& context) const {
        return isWanted(session, stream, "Delete", context)
                   ? session.engine().deleteMessageLogData(session.ticket(), name_, stream, where_)
                   : 0;
    }

    long undo(Session& session, long stream, Context& context) const {
        return isWanted(session, stream, "Take back the edits that the audit tells in", context,
                        "action")
                   ? session.engine().updateMessageLogData(session.ticket(), name_, stream, "undo",
                                                           where_)
                   : 0;
    }

    long insert(Session& session, Context& context) const {
        Dictionary const& dictionary = context.names.of(propertyOf(session, name_, "BeginString"));
        MessageInput input(messages_, "-", context.interrupt);
        std::vector<counted_ptr<ZANMessage>> batch;
        for (std::string message; input.next(message);) {
            batch.push_back(modelOf(message, dictionary));
        }
        if (!isSure_) {
            ask("Put " + std::to_string(batch.size()) + " entries into the log of " +
                    printable(name_) + "?",
                context.interrupt);
        }
        return session.engine().insertMessageLogData(session.ticket(), name_, batch);
    }

    CLI::App* update_ = nullptr;
    CLI::App* delete_ = nullptr;
    CLI::App* undo_ = nullptr;
    CLI::App* insert_ = nullptr;
    std::string name_;
    std::string stream_ = "all";
    std::string where_;
    std::string assignments_;
    std::vector<std::string> messages_;
    bool isSure_ = false;
};

} // namespace

void addEditingCommands(Commands& commands) {
    commands.push_back(std::make_unique<EditCommand>());
}

} // namespace zan::cli
