// The commands about connections: which there are, how they stand, on and off.
#include "apps/zan/Command.h"
#include "apps/zan/ConnectionView.h"
#include "apps/zan/ExitCodes.h"
#include "apps/zan/Properties.h"
#include "apps/zan/Question.h"
#include "infra/InfraException.h"

#include <iostream>

namespace zan::cli {

namespace {

class ConnectionsCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "connections", "Lists the connections of the engine");
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt, Purpose::Reads);
        for (std::string const& name : session.names()) {
            bool const isOn = session.engine().isConnected(session.ticket(), name);
            context.output.print(
                {{"name", name}, {"connected", isOn, "", isOn ? Tone::Good : Tone::Plain}});
        }
        return ExitCode::Ok;
    }
};

class StateCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "state", "Shows how connections stand");
        Options(*app_).allConnections(name_);
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt, Purpose::Reads);
        for (std::string const& name : session.namesOr(name_)) {
            context.output.print(stateRecord(session, name));
        }
        return ExitCode::Ok;
    }

private:
    std::string name_;
};

class ConnectCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "connect", "Logs a connection on and shows its state",
                           "With an engine in this program (embedded:) it is logged out again at "
                           "the end, unless --stay or --keep is given.");
        Options(*app_)
            .onlyConnection(name_)
            .flag(stays_, "--stay", "stay until Ctrl-C, and show the state when it changes")
            .flag(keeps_, "--keep", "the same, and try until it is logged on")
            .number(nextOut_, "--next-out", 1, "set the sequence number of the next message out")
            .number(nextIn_, "--next-in", 1, "set the sequence number of the next message in")
            .flag(resets_, "--reset", "let both numbers begin with 1, here and there");
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt);
        std::string const name = session.nameOr(name_);
        connect(session, name, context);
        context.output.print(stateRecord(session, name));
        context.output.flush();
        if (stays_ || keeps_) {
            showStates(session, name, context);
        }
        if (session.isInProcess()) {
            std::cerr << "zan: the engine is in this program, so " << printable(name)
                      << " is logged out again; --stay would keep it" << std::endl;
        }
        return ExitCode::Ok;
    }

private:
    counted_ptr<ZANFieldGroup> logonFields() const {
        counted_ptr<ZANFieldGroup> fields(new ZANFieldGroup("A"));
        if (nextOut_ > 0) {
            fields->setFieldValue(34, nextOut_);
        }
        if (nextIn_ > 0) {
            fields->setFieldValue(789, nextIn_);
        }
        if (resets_) {
            fields->setFieldValue(141, "Y");
        }
        return fields;
    }

    // What is told once need not be told with every attempt.
    void connect(Session& session, std::string const& name, Context& context) const {
        for (std::string told;;) {
            try {
                session.connect(name, logonFields());
                return;
            } catch (InfraException const& failure) {
                if (!keeps_ || exitCodeOf(failure) != ExitCode::CannotConnect) {
                    throw;
                }
                if (told != lineOf(failure)) {
                    told = lineOf(failure);
                    std::cerr << "zan: " << told << "; tries on, Ctrl-C ends it" << std::endl;
                }
            }
            context.interrupt.wait(pauseOf(session, name));
        }
    }

    static std::chrono::seconds pauseOf(Session const& session, std::string const& name) {
        std::string const interval = propertyOf(session, name, "ReconnectInterval");
        return std::chrono::seconds(interval.empty() ? 30 : std::stol(interval));
    }

    [[noreturn]] static void showStates(Session& session, std::string const& name,
                                        Context& context) {
        EventWatch const watch(session, name, context.interrupt);
        for (std::string last = watch.stateText();;) {
            context.interrupt.wait(std::chrono::seconds(1));
            std::string const now = watch.stateText();
            if (now != last) {
                context.output.print(stateRecord(session, name));
                context.output.flush();
                last = now;
            }
        }
    }

    std::string name_;
    bool stays_ = false;
    bool keeps_ = false;
    bool resets_ = false;
    long nextOut_ = 0;
    long nextIn_ = 0;
};

class DisconnectCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "disconnect", "Logs a connection out and shows its state");
        Options(*app_).onlyConnection(name_).text(reason_, "--reason", textKind,
                                                  "what the counterparty is told");
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt);
        std::string const name = session.nameOr(name_);
        session.engine().disconnect(session.ticket(), name, reason_);
        context.output.print(stateRecord(session, name));
        return ExitCode::Ok;
    }

private:
    std::string name_;
    std::string reason_ = "logged out by an operator";
};

class ResetCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "reset",
                           "Lets both sequence numbers of a connection begin with 1 again");
        Options(*app_).onlyConnection(name_).yes(isSure_);
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt);
        std::string const name = session.nameOr(name_);
        // Ask of what exists only.
        session.engine().getConnectionState(session.ticket(), name);
        if (!isSure_) {
            ask("Reset both sequence numbers of " + printable(name) + " to 1?", context.interrupt);
        }
        session.engine().resetConnection(session.ticket(), name);
        context.output.print(stateRecord(session, name));
        return ExitCode::Ok;
    }

private:
    std::string name_;
    bool isSure_ = false;
};

class PingCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ =
            &addCommand(program, "ping", "Asks the counterparty for a sign of life", logsOnDetail);
        Options(*app_)
            .onlyConnection(name_)
            .seconds(timeout_, "--timeout", "how long to wait for the answer (5)")
            .connects(connects_);
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt);
        std::string const name = session.nameOr(name_);
        if (connects_ || session.isInProcess()) {
            session.connect(name);
        }
        auto const began = std::chrono::steady_clock::now();
        bool const isAlive = session.engine().pingConnection(session.ticket(), name,
                                                             static_cast<long>(timeout_ * 1000));
        std::chrono::duration<double, std::milli> const took =
            std::chrono::steady_clock::now() - began;
        auto const millis = static_cast<long long>(took.count());
        context.output.print({{"name", name},
                              {"answered", isAlive, "", isAlive ? Tone::Good : Tone::Bad},
                              {"millis", millis}});
        return isAlive ? ExitCode::Ok : ExitCode::CheckFailed;
    }

private:
    std::string name_;
    double timeout_ = 5;
    bool connects_ = false;
};

class PropertiesCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "properties", "Shows the effective settings of connections");
        Options(*app_).allConnections(name_);
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt, Purpose::Reads);
        for (std::string const& name : session.namesOr(name_)) {
            for (auto const& [key, value] : propertiesOf(session, name)) {
                context.output.print({{"name", name}, {"key", key}, {"value", value}});
            }
        }
        return ExitCode::Ok;
    }

private:
    std::string name_;
};

} // namespace

void addConnectionCommands(Commands& commands) {
    commands.push_back(std::make_unique<ConnectionsCommand>());
    commands.push_back(std::make_unique<StateCommand>());
    commands.push_back(std::make_unique<ConnectCommand>());
    commands.push_back(std::make_unique<DisconnectCommand>());
    commands.push_back(std::make_unique<ResetCommand>());
    commands.push_back(std::make_unique<PingCommand>());
    commands.push_back(std::make_unique<PropertiesCommand>());
}

} // namespace zan::cli
