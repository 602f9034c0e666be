// import: a session that another program has kept with QuickFIX goes on here.
#include "apps/zan/Command.h"
#include "apps/zan/LogImport.h"
#include "apps/zan/Progress.h"
#include "errors/ZANConnectionUnknownException.h"
#include "infra/Url.h"
#include "infra/WrongConfigurationException.h"
#include "server/config/SessionFile.h"
#include "server/engine/ConnectionSetup.h"
#include "server/engine/DataFolder.h"

#include <algorithm>
#include <filesystem>
#include <optional>

namespace zan::cli {

namespace {

// The files of a new log, until it is complete.
class NewLog {
public:
    explicit NewLog(server::LogSettings settings)
        : file_(settings.file), settings_(std::move(settings)) {
        if (std::filesystem::exists(file_) && server::MessageLog(settings_).lastId() > 0) {
            throw WrongConfigurationException(
                file_ + ": the log holds messages already; only an empty one can take over "
                        "another's: another data folder (?data= in the URL) would be right");
        }
        settings_.file += ".importing";
        removeAll(settings_.file);
    }
    ~NewLog() { removeAll(settings_.file); }
    NewLog(NewLog const&) = delete;
    NewLog& operator=(NewLog const&) = delete;

    server::LogSettings const& settings() const { return settings_; }

    /// Puts it in its place. It must not be open.
    void keep() const {
        removeAll(file_);
        std::filesystem::rename(settings_.file, file_);
    }

private:
    static void removeAll(std::string const& file) {
        for (char const* ending : {"", "-wal", "-shm", ".last", ".orders", ".reserve"}) {
            std::error_code ignored;
            std::filesystem::remove(file + ending, ignored);
        }
    }

    std::string const file_;
    server::LogSettings settings_;
};

class ImportCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ = &addCommand(program, "import",
                           "Takes over a session that QuickFIX has kept: messages and numbers",
                           "For an engine in this program (embedded:) that is not running, and a "
                           "connection whose log is empty. The session goes on with the numbers "
                           "of the store.");
        Options(*app_)
            .connection(name_)
            .text(store_, "--store", "FOLDER|PREFIX",
                  "the file store: its FileStorePath, or a path such as "
                  "store/FIX.4.4-US-THEM for the files .seqnums, .session, .header and .body")
            .text(log_, "--log", fileKind,
                  "the message log: a file such as FIX.4.4-US-THEM.messages.current.log");
    }

    ExitCode run(Context& context) override {
        if (store_.empty() && log_.empty()) {
            throw UsageError("what is to be taken over? --store, --log or both would be right");
        }
        Url const url = embeddedUrl(context.settings);
        server::ConnectionSettings const connection = connectionOf(url);
        std::string const folder = url.getParameter("data", url.getPath() + ".data");
        server::DataFolder const taken(folder);
        NewLog const target(server::logSettings(connection, folder));
        context.output.print(import(target.settings(), connection, context));
        target.keep();
        return ExitCode::Ok;
    }

private:
    static Url embeddedUrl(Settings const& settings) {
        try {
            Url url(settings.url);
            if (url.getProtocol() == "embedded" && url.getPath() != "demo") {
                return url;
            }
        } catch (InfraException const&) {
            // No URL at all is as wrong as one of another engine.
        }
        throw WrongConfigurationException(
            "only a log of the embedded engine can be filled; a URL such as "
            "embedded:sessions.cfg?data=<folder> would be right");
    }

    server::ConnectionSettings connectionOf(Url const& url) const {
        std::vector<server::ConnectionSettings> const all = server::readSessionFile(url.getPath());
        auto const found = std::ranges::find(all, name_, &server::ConnectionSettings::name);
        if (found == all.end()) {
            std::string names;
            for (server::ConnectionSettings const& each : all) {
                names += (names.empty() ? "" : ", ") + each.name;
            }
            throw ZANConnectionUnknownException("there is no connection " + name_ + " in " +
                                                url.getPath() + "; one of " + names +
                                                " would be right");
        }
        return *found;
    }

    Record import(server::LogSettings const& settings, server::ConnectionSettings const& connection,
                  Context& context) const {
        std::optional<FileStore> store;
        if (!store_.empty()) {
            store = readFileStore(prefixOf(connection));
        }
        server::MessageLog log(settings);
        LogImport import(log, connection.valueOf("SenderCompID"), std::move(store));
        if (!log_.empty()) {
            std::error_code unknown;
            Progress progress("imported", std::filesystem::file_size(log_, unknown));
            readMessageLog(log_, context.interrupt, [&](LoggedMessage const& message) {
                import.add(message);
                progress.step(message.text.size());
            });
        }
        import.finish();
        return {{"name", name_},
                {"entries", static_cast<long long>(import.entries())},
                {"leftOut", static_cast<long long>(import.leftOut())},
                {"nextOut", static_cast<long long>(import.numbers().nextOut)},
                {"nextIn", static_cast<long long>(import.numbers().nextIn)}};
    }

    std::string prefixOf(server::ConnectionSettings const& connection) const {
        if (!std::filesystem::is_directory(store_)) {
            return store_;
        }
        std::string prefix = store_ + "/" + connection.valueOf("BeginString") + "-" +
                             connection.valueOf("SenderCompID") + "-" +
                             connection.valueOf("TargetCompID");
        std::string const qualifier = connection.valueOf("SessionQualifier");
        return qualifier.empty() ? prefix : prefix + "-" + qualifier;
    }

    std::string name_;
    std::string store_;
    std::string log_;
};

} // namespace

void addImportCommand(Commands& commands) {
    commands.push_back(std::make_unique<ImportCommand>());
}

} // namespace zan::cli
