#include "apps/zan/Checks.h"

#include "apps/zan/AdapterModules.h"
#include "apps/zan/ExitCodes.h"
#include "apps/zan/Properties.h"
#include "apps/zan/SequenceAdvice.h"
#include "apps/zan/Session.h"
#include "apps/zan/TcpProbe.h"
#include "errors/ZANInvalidLogonException.h"
#include "events/ZANConnectionState.h"
#include "infra/DynamicMethod.h"
#include "infra/InfraException.h"
#include "infra/Time.h"
#include "infra/Url.h"
#include "server/sessions/SessionHours.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include <unistd.h>

namespace zan::cli {

namespace {

// Of what may be shown of a URL: the values of its parameters may be secrets of a transport's.
std::string withoutValues(Url const& url) {
    std::string const text = url.toString();
    std::string shown = text.substr(0, text.find('?'));
    char separator = '?';
    for (std::string const& name : url.getParameterNames()) {
        shown += separator + name + "=***";
        separator = '&';
    }
    return shown;
}

// Less than this is soon full, and less than that is full already.
constexpr std::uintmax_t littleSpace = 1024ULL * 1024 * 1024;
constexpr std::uintmax_t noSpace = 32ULL * 1024 * 1024;

class Doctor {
public:
    Doctor(Settings const& settings, bool logsOn, Interrupt& interrupt, CheckSink const& sink)
        : settings_(settings), logsOn_(logsOn), interrupt_(interrupt), sink_(sink) {}

    void run() {
        checkConfig();
        std::optional<Url> const url = checkedUrl();
        if (!url || !checkModule(*url)) {
            return;
        }
        if (url->getProtocol() == "embedded" && url->getPath() != "demo") {
            checkFiles(*url);
        }
        checkEngine();
    }

private:
    void tell(std::string const& name, CheckResult result, std::string const& found,
              std::string const& advice = {}) {
        interrupt_.check();
        sink_({name, result, found, advice});
    }

    void checkConfig() {
        bool const isThere = access(settings_.configFile.c_str(), R_OK) == 0;
        if (settings_.warnings.empty()) {
            tell("config file", CheckResult::Good,
                 settings_.configFile + (isThere ? " is read" : " is not there, and need not be"));
        }
        for (std::string const& warning : settings_.warnings) {
            tell("secret", CheckResult::Warning, warning);
        }
    }

    std::optional<Url> checkedUrl() {
        if (settings_.url.empty()) {
            tell("URL", CheckResult::Fault, "there is none",
                 "give --url, set ZAN_URL, or write a line url = embedded:sessions.cfg into " +
                     settings_.configFile);
            return std::nullopt;
        }
        try {
            Url url(settings_.url);
            tell("URL", CheckResult::Good, withoutValues(url) + " from " + settings_.urlFrom);
            return url;
        } catch (InfraException const& failure) {
            tell("URL", CheckResult::Fault, failure.getMessage(),
                 "correct the URL of " + settings_.urlFrom);
            return std::nullopt;
        }
    }

    bool checkModule(Url const& url) {
        std::string const& protocol = url.getProtocol();
        std::vector<FoundModule> const modules = findModules();
        auto const found = std::ranges::find(modules, protocol, &FoundModule::protocol);
        if (found == modules.end()) {
            tell("module", CheckResult::Warning,
                 "none for the protocol " + protocol + " in " + foldersText(),
                 "install it, or name its folder in ZAN_ADAPTER_PATH; \"zan modules\" lists what "
                 "is there");
            // The platform may know a place.
            return true;
        }
        ModuleReport const report = tryModule(found->file, protocol);
        if (report.isGood) {
            tell("module", CheckResult::Good, found->file);
        } else {
            tell("module", CheckResult::Fault, found->file + ": " + report.problem,
                 "build the module again with this library, or install what it misses");
        }
        return report.isGood;
    }

    static std::string foldersText() {
        std::string text;
        for (std::string const& folder : getModuleFolders()) {
            text += (text.empty() ? "" : ", ") + folder;
        }
        return text;
    }

    void checkFiles(Url const& url) {
        std::string const& file = url.getPath();
        if (access(file.c_str(), R_OK) == 0) {
            tell("session file", CheckResult::Good, file);
        } else {
            tell("session file", CheckResult::Fault, file + " cannot be read",
                 "name an existing file in the URL; the path is relative to " +
                     std::filesystem::current_path().string());
        }
        std::string const folder = url.getParameter("data", file + ".data");
        std::string const parent =
            std::filesystem::absolute(folder).lexically_normal().parent_path().string();
        bool const isThere = access(folder.c_str(), F_OK) == 0;
        if (access((isThere ? folder : parent).c_str(), W_OK | X_OK) == 0) {
            tell("data folder", CheckResult::Good, folder + (isThere ? "" : " will be made"));
        } else {
            tell("data folder", CheckResult::Fault,
                 (isThere ? folder : parent) + " cannot be written by this user",
                 "change its owner or rights, or name another folder by ?data= in the URL");
        }
        checkSpace(isThere ? folder : parent);
    }

    void checkSpace(std::string const& folder) {
        std::error_code error;
        std::uintmax_t const space = std::filesystem::space(folder, error).available;
        if (error) {
            return;
        }
        CheckResult const result = space < noSpace       ? CheckResult::Fault
                                   : space < littleSpace ? CheckResult::Warning
                                                         : CheckResult::Good;
        tell("free space", result, std::to_string(space / (1024 * 1024)) + " MiB in " + folder,
             result == CheckResult::Good ? ""
                                         : "make room: every message is kept, and nothing is sent "
                                           "that cannot be stored");
    }

    void checkEngine() {
        try {
            Session session(settings_, interrupt_, logsOn_ ? Purpose::Changes : Purpose::Reads);
            std::vector<std::string> const names = session.names();
            tell("engine", CheckResult::Good,
                 "it starts; connections: " + std::to_string(names.size()));
            for (std::string const& name : names) {
                checkConnection(session, name);
            }
        } catch (InfraException const& failure) {
            tell("engine", CheckResult::Fault, lineOf(failure), adviceFor(failure));
        }
    }

    void checkConnection(Session& session, std::string const& name) {
        auto const state = session.engine().getConnectionState(session.ticket(), name);
        if (state->isStateActive(FLAG_DB_ERROR)) {
            tell(name + " storage", CheckResult::Fault, state->getLastError(),
                 "make room on the disk, or correct the rights of the data folder");
        }
        checkHours(session, name);
        if (!state->isLinkActive()) {
            checkPort(session, name);
        }
        checkLogon(session, name);
    }

    void checkHours(Session const& session, std::string const& name) {
        server::SessionHours const hours(propertiesOf(session, name));
        std::int64_t const now = infra::Time::now().getMillis();
        if (!hours.isOpen(now)) {
            tell(name + " hours", CheckResult::Warning, "it is " + hours.closedText(now),
                 "wait, \"zan connect --keep\" does; or correct StartTime and EndTime");
        } else if (hours.endsAt(now) == server::SessionHours::never) {
            tell(name + " hours", CheckResult::Good, "it goes on from day to day");
        } else {
            tell(name + " hours", CheckResult::Good,
                 "it is open; its numbers begin with 1 at " + server::utcText(hours.endsAt(now)));
        }
    }

    void checkPort(Session const& session, std::string const& name) {
        std::string const host = propertyOf(session, name, "SocketConnectHost");
        std::string const port = propertyOf(session, name, "SocketConnectPort");
        if (host.empty() || port.empty()) {
            return;
        }
        std::string const problem = tcpProblem(host, port);
        tell(name + " port", problem.empty() ? CheckResult::Good : CheckResult::Fault,
             host + ":" + port + (problem.empty() ? " takes links" : ": " + problem),
             problem.empty() ? ""
                             : "check SocketConnectHost and SocketConnectPort, the firewall, and "
                               "whether the counterparty is up");
    }

    void checkLogon(Session& session, std::string const& name) {
        if (session.engine().isConnected(session.ticket(), name)) {
            tell(name + " logon", CheckResult::Good, "it is logged on");
        } else if (!logsOn_) {
            tell(name + " logon", CheckResult::Skipped, "not tried", "--logon tries it");
        } else {
            try {
                session.connect(name);
                tell(name + " logon", CheckResult::Good, "the counterparty took it");
            } catch (InfraException const& failure) {
                std::string const advice = numbersAdvice(failure, name);
                tell(name + " logon", CheckResult::Fault, lineOf(failure),
                     advice.empty() ? adviceFor(failure) : advice);
            }
        }
    }

    static std::string numbersAdvice(InfraException const& failure, std::string const& name) {
        bool const isTheirs = dynamic_cast<ZANInvalidLogonException const*>(&failure) != nullptr;
        return sequenceAdvice(failure.getMessage(),
                              isTheirs ? Refuser::Counterparty : Refuser::Engine, name);
    }

    static std::string adviceFor(std::exception const& failure) {
        switch (exitCodeOf(failure)) {
        case ExitCode::Configuration:
            return "correct what the text names; \"zan properties\" shows the effective settings";
        case ExitCode::CannotConnect:
            return "check company ids, sequence numbers and credentials with the counterparty; "
                   "\"zan log\" shows what was said";
        case ExitCode::Storage:
            return "check the disk and the rights of the data folder";
        case ExitCode::Security:
            return "check user and secret";
        default:
            return "read the text: it tells what would be right";
        }
    }

    Settings const& settings_;
    bool const logsOn_;
    Interrupt& interrupt_;
    CheckSink const& sink_;
};

} // namespace

void runChecks(Settings const& settings, bool logsOn, Interrupt& interrupt, CheckSink const& sink) {
    Doctor(settings, logsOn, interrupt, sink).run();
}

} // namespace zan::cli
