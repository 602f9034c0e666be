// The commands that bring messages to the engine: send, post, resend.
#include "apps/zan/Command.h"
#include "apps/zan/ConnectionDictionary.h"
#include "apps/zan/ConnectionView.h"
#include "apps/zan/ExpressionNames.h"
#include "apps/zan/LogFollower.h"
#include "apps/zan/LogSearch.h"
#include "apps/zan/LogTimes.h"
#include "apps/zan/MessageInput.h"
#include "apps/zan/Properties.h"
#include "apps/zan/ShownMessages.h"
#include "infra/Time.h"

#include <iostream>
#include <set>

namespace zan::cli {

namespace {

using Clock = std::chrono::steady_clock;

// What send and post have in common.
class MessagesCommand : public Command {
protected:
    void addMessages() {
        Options options(*app_);
        options.connection(name_)
            .texts(messages_, "message", "MESSAGE",
                   "messages as tag=value, separated by | or SOH; without any, the lines of "
                   "--file, or of standard input")
            .text(file_, "--file", fileKind, "a file with a message a line; - is standard input")
            .flag(isBatch_, "--batch", "all of them at once, or none");
        shown_.addTo(options);
    }

    virtual long give(Session& session, std::string const& message) const = 0;
    virtual void give(Session& session,
                      std::vector<counted_ptr<ZANMessage>> const& batch) const = 0;

    void giveAll(Session& session, Context& context) {
        MessageInput input(messages_, file_, context.interrupt);
        std::string message;
        std::size_t count = 0;
        try {
            std::vector<counted_ptr<ZANMessage>> batch;
            for (; input.next(message); ++count) {
                if (isBatch_) {
                    batch.push_back(modelOf(message, dictionary(session, context)));
                } else {
                    given_.insert(give(session, message));
                }
                context.interrupt.check();
            }
            if (isBatch_) {
                give(session, batch);
            }
        } catch (Interruption const&) {
            throw;
        } catch (std::exception const&) {
            tellPlace(input, count);
            throw;
        }
    }

    // Whether an entry of the log is one of the messages that were given.
    bool isGiven(MessageRow const& row) const {
        return isBatch_ ? row.stream == batchStream() : given_.contains(row.id);
    }

    virtual long long batchStream() const = 0;

    std::string name_;
    ShownMessages shown_;

private:
    Dictionary const& dictionary(Session& session, Context& context) const {
        return context.names.of(propertyOf(session, name_, "BeginString"));
    }

    void tellPlace(MessageInput const& input, std::size_t count) const {
        if (isBatch_) {
            std::cerr << "zan: nothing of the batch was taken; the fault is in it up to "
                      << input.place() << std::endl;
        } else if (count > 0) {
            std::cerr << "zan: " << input.place() << " was not taken; the " << count
                      << " before it were" << std::endl;
        }
    }

    std::vector<std::string> messages_;
    std::string file_ = "-";
    bool isBatch_ = false;
    std::set<long long> given_;
};

class SendCommand final : public MessagesCommand {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "send", "Sends messages and shows them as the log has them",
                           logsOnDetail);
        addMessages();
        Options(*app_)
            .seconds(wait_, "--wait", "show also what the counterparty answers in this time")
            .number(answers_, "--answers", 1, "wait no longer when so many answers have come")
            .needs("--wait")
            .connects(connects_)
            .flag(isAdmin_, "--admin", "messages of the session's, such as a TestRequest");
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt);
        shown_.begin(session, name_, context);
        if (connects_ || session.isInProcess()) {
            session.connect(name_);
        }
        LogFollower follower(session, name_, -1, "");
        EventWatch const watch(session, name_, context.interrupt);
        giveAll(session, context);
        showNew(follower, context);
        auto const end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                            std::chrono::duration<double>(wait_));
        while (Clock::now() < end && answered_ < answers_) {
            context.interrupt.wait(std::min<std::chrono::milliseconds>(
                std::chrono::milliseconds(200),
                std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now())));
            showNew(follower, context);
        }
        return ExitCode::Ok;
    }

private:
    long give(Session& session, std::string const& message) const override {
        return isAdmin_ ? session.engine().sendAdminMessage(session.ticket(), name_, message)
                        : session.engine().sendMessage(session.ticket(), name_, message);
    }

    void give(Session& session, std::vector<counted_ptr<ZANMessage>> const& batch) const override {
        session.engine().sendMultipleMessages(session.ticket(), name_, batch);
    }

    long long batchStream() const override { return 3; }

    // An answer is what comes in from the application over there, or a Reject.
    bool isAnswer(MessageRow const& row) const {
        bool const isReject = row.stream == 0 && row.type == "3";
        bool const isForAdmin = isAdmin_ && row.stream == 0;
        return wait_ > 0 && answered_ < answers_ && (row.stream == 2 || isReject || isForAdmin);
    }

    void showNew(LogFollower& follower, Context& context) {
        follower.takeNew([&](MessageRow const& row) {
            bool const isOneAnswer = isAnswer(row);
            answered_ += isOneAnswer ? 1 : 0;
            if (isOneAnswer || isGiven(row)) {
                shown_.print(row, context);
            }
        });
        context.output.flush();
    }

    double wait_ = 0;
    long answers_ = std::numeric_limits<long>::max();
    long answered_ = 0;
    bool connects_ = false;
    bool isAdmin_ = false;
};

class PostCommand final : public MessagesCommand {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "post", "Stores messages for the listeners of a connection",
                           "The counterparty does not get them.");
        addMessages();
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt);
        shown_.begin(session, name_, context);
        LogFollower follower(session, name_, -1, "");
        giveAll(session, context);
        follower.takeNew([&](MessageRow const& row) {
            if (isGiven(row)) {
                shown_.print(row, context);
            }
        });
        return ExitCode::Ok;
    }

private:
    long give(Session& session, std::string const& message) const override {
        return session.engine().postInternalMessage(session.ticket(), name_, message);
    }

    void give(Session& session, std::vector<counted_ptr<ZANMessage>> const& batch) const override {
        session.engine().postMultipleInternalMessages(session.ticket(), name_, batch);
    }

    long long batchStream() const override { return 2; }
};

class ResendCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "resend", "Sends the application messages of a time again",
                           std::string("They get new numbers and PossResend. ") + logsOnDetail);
        Options(*app_)
            .connection(name_)
            .text(from_, "--from", timeKind, std::string("from this time on: ") + timeForms)
            .required()
            .text(to_, "--to", timeKind, "up to this time, included; up to now without it")
            .where(where_)
            .connects(connects_);
    }

    ExitCode run(Context& context) override {
        infra::Time const from = completed(from_, "00000101-00:00:00.000");
        infra::Time const to =
            to_.empty() ? infra::Time::now() : completed(to_, "99991231-23:59:59.999");
        Session session(context.settings, context.interrupt);
        useDictionaryOf(session, name_, context.names);
        std::string const filter = withTagNumbers(where_, context.names);
        if (connects_ || session.isInProcess()) {
            session.connect(name_);
        }
        long const count =
            session.engine().resendMessages(session.ticket(), name_, from, to, filter);
        context.output.print({{"name", name_}, {"resent", static_cast<long long>(count)}});
        return ExitCode::Ok;
    }

private:
    // The first or the last moment of a time that is told in part.
    static infra::Time completed(std::string const& time, std::string const& rest) {
        std::string const beginning = timeBeginning(time);
        return infra::Time::fromString(beginning + rest.substr(beginning.size()));
    }

    std::string name_;
    std::string from_;
    std::string to_;
    std::string where_;
    bool connects_ = false;
};

} // namespace

void addSendingCommands(Commands& commands) {
    commands.push_back(std::make_unique<SendCommand>());
    commands.push_back(std::make_unique<PostCommand>());
    commands.push_back(std::make_unique<ResendCommand>());
}

} // namespace zan::cli
