// tail: the end of a message log, and what comes to it.
#include "apps/zan/Command.h"
#include "apps/zan/ConnectionView.h"
#include "apps/zan/ExpressionNames.h"
#include "apps/zan/LogFollower.h"
#include "apps/zan/LogSearch.h"
#include "apps/zan/LogTimes.h"
#include "apps/zan/ShownMessages.h"

#include <algorithm>
#include <iostream>

namespace zan::cli {

namespace {

class TailCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "tail", "Shows the end of a message log and follows it",
                           "With an engine in this program (embedded:) it follows only with "
                           "--connect, because nothing comes otherwise.");
        Options options(*app_);
        options.onlyConnection(name_)
            .number(count_, "-n,--lines", 0, "begin with this many entries (10)")
            .text(from_, "--from", "ID|TIME",
                  std::string("begin with this id, or this time: ") + timeForms)
            .excludes("--lines")
            .stream(stream_)
            .where(where_)
            .flag(connects_, "--connect", "log the connection on, to see what comes then")
            .flag(ends_, "--no-follow", "end after what is there");
        shown_.addTo(options);
    }

    ExitCode run(Context& context) override {
        long const stream = streamOf(stream_);
        Session session(context.settings, context.interrupt,
                        connects_ ? Purpose::Changes : Purpose::Reads);
        std::string const name = session.nameOr(name_);
        shown_.begin(session, name, context);
        where_ = withTagNumbers(where_, context.names);
        LogFollower follower(session, name, stream, where_);
        showBeginning(session, name, stream, follower, context);
        if (ends_) {
            return ExitCode::Ok;
        }
        if (session.isInProcess() && !connects_) {
            std::cerr << "zan: the engine is in this program and logs on only with --connect, so "
                         "nothing can come"
                      << std::endl;
            return ExitCode::Ok;
        }
        follow(session, name, follower, context);
    }

private:
    void showBeginning(Session& session, std::string const& name, long stream,
                       LogFollower& follower, Context& context) const {
        LogSearch what;
        what.connection = name;
        what.stream = stream;
        what.where = where_;
        bool const isId =
            from_.size() < 8 && from_.find_first_not_of("0123456789") == std::string::npos;
        what.ids = isId && !from_.empty() ? idRangeOf(from_ + "-") : IdRange();
        what.ids.last = static_cast<int>(follower.lastId());
        what.from = isId ? "" : timeBeginning(from_);
        std::vector<MessageRow> rows;
        if (from_.empty()) {
            what.newestFirst = true;
            what.limit = count_;
            search(session, what, context.interrupt,
                   [&](MessageRow const& row) { rows.push_back(row); });
            std::ranges::for_each(rows.rbegin(), rows.rend(),
                                  [&](MessageRow const& row) { shown_.print(row, context); });
        } else {
            search(session, what, context.interrupt,
                   [&](MessageRow const& row) { shown_.print(row, context); });
        }
        context.output.flush();
    }

    [[noreturn]] void follow(Session& session, std::string const& name, LogFollower& follower,
                             Context& context) const {
        EventWatch const watch(session, name, context.interrupt);
        if (connects_) {
            session.connect(name);
        }
        while (true) {
            follower.takeNew([&](MessageRow const& row) { shown_.print(row, context); });
            context.output.flush();
            context.interrupt.wait(std::chrono::seconds(1));
        }
    }

    std::string name_;
    long count_ = 10;
    std::string from_;
    std::string stream_ = "all";
    std::string where_;
    bool connects_ = false;
    bool ends_ = false;
    ShownMessages shown_;
};

} // namespace

void addTailCommand(Commands& commands) {
    commands.push_back(std::make_unique<TailCommand>());
}

} // namespace zan::cli
