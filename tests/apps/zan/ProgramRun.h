/// A run of the program `zan`, with its standard streams in pipes or on a terminal.
///
/// Threads: one at a time.
#ifndef ZANENGINE_TESTS_APPS_ZAN_PROGRAMRUN_H
#define ZANENGINE_TESTS_APPS_ZAN_PROGRAMRUN_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

struct RunSettings {
    std::vector<std::string> arguments;
    /// What it reads; on a terminal, what is typed.
    std::string input;
    /// Beside the environment of the tests.
    std::map<std::string, std::string> environment;
    /// Columns of its terminal; nothing for pipes.
    std::optional<unsigned short> width;
};

class ProgramRun {
public:
    explicit ProgramRun(RunSettings const& settings);
    /// Ends it, if it still runs.
    ~ProgramRun();
    ProgramRun(ProgramRun const&) = delete;
    ProgramRun& operator=(ProgramRun const&) = delete;

    /// Reads what it prints until the output has this text; false when it does not come in time.
    bool waitFor(std::string const& text);

    /// Types on its terminal, or writes into its input.
    void type(std::string const& text) const;
    void sendSignal(int signal) const;
    void closeInput();
    /// Nobody reads its standard output any more.
    void closeOutput();

    /// Waits for its end; the exit code, 128 and the signal when one has ended it.
    int wait();

    /// What it has printed; on a terminal both streams in one, without carriage returns.
    std::string const& output() const { return output_; }
    std::string const& errors() const { return errors_; }

private:
    void startInPipes(RunSettings const& settings);
    void startOnTerminal(RunSettings const& settings);
    bool read(int milliseconds);

    pid_t pid_ = 0;
    int input_ = -1;
    int outputEnd_ = -1;
    int errorsEnd_ = -1;
    std::string output_;
    std::string errors_;
};

#endif
