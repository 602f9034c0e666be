#include "apps/zan/ProgramRun.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds patience{100};

// In the new process.
[[noreturn]] void become(RunSettings const& settings) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (auto const& [name, value] : settings.environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<std::string> words{ZAN_PROGRAM};
    words.insert(words.end(), settings.arguments.begin(), settings.arguments.end());
    std::vector<char*> texts;
    for (std::string& word : words) {
        texts.push_back(word.data());
    }
    texts.push_back(nullptr);
    execv(ZAN_PROGRAM, texts.data());
    _exit(127);
}

void closeEnd(int& descriptor) {
    if (descriptor >= 0) {
        close(descriptor);
    }
    descriptor = -1;
}

// False when nothing comes any more.
bool takeFrom(int& descriptor, std::string& text) {
    std::array<char, 65536> bytes{};
    ssize_t const size = read(descriptor, bytes.data(), bytes.size());
    if (size <= 0) {
        closeEnd(descriptor);
        return false;
    }
    text.append(bytes.data(), static_cast<std::size_t>(size));
    return true;
}

} // namespace

ProgramRun::ProgramRun(RunSettings const& settings) {
    if (settings.width) {
        startOnTerminal(settings);
    } else {
        startInPipes(settings);
    }
    type(settings.input);
    if (!settings.width && !settings.input.empty()) {
        closeInput();
    }
}

ProgramRun::~ProgramRun() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    closeInput();
    closeEnd(outputEnd_);
    closeEnd(errorsEnd_);
}

void ProgramRun::startInPipes(RunSettings const& settings) {
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    std::array<int, 2> errors{};
    if (pipe2(in.data(), O_CLOEXEC) != 0 || pipe2(out.data(), O_CLOEXEC) != 0 ||
        pipe2(errors.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipes");
    }
    pid_ = fork();
    if (pid_ == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        dup2(errors[1], STDERR_FILENO);
        become(settings);
    }
    close(in[0]);
    close(out[1]);
    close(errors[1]);
    input_ = in[1];
    outputEnd_ = out[0];
    errorsEnd_ = errors[0];
}

void ProgramRun::startOnTerminal(RunSettings const& settings) {
    winsize size{};
    size.ws_row = 24;
    size.ws_col = *settings.width;
    pid_ = forkpty(&outputEnd_, nullptr, nullptr, &size);
    if (pid_ == 0) {
        become(settings);
    }
    input_ = dup(outputEnd_);
}

void ProgramRun::type(std::string const& text) const {
    if (!text.empty() && write(input_, text.data(), text.size()) < 0) {
        throw std::runtime_error("it takes no input");
    }
}

void ProgramRun::sendSignal(int signal) const {
    kill(pid_, signal);
}

void ProgramRun::closeInput() {
    closeEnd(input_);
}

void ProgramRun::closeOutput() {
    closeEnd(outputEnd_);
}

bool ProgramRun::read(int milliseconds) {
    std::array<pollfd, 2> waited{{{outputEnd_, POLLIN, 0}, {errorsEnd_, POLLIN, 0}}};
    poll(waited.data(), waited.size(), milliseconds);
    if (waited[0].revents != 0) {
        takeFrom(outputEnd_, output_);
        std::erase(output_, '\r');
    }
    if (waited[1].revents != 0) {
        takeFrom(errorsEnd_, errors_);
    }
    return outputEnd_ >= 0 || errorsEnd_ >= 0;
}

bool ProgramRun::waitFor(std::string const& text) {
    auto const deadline = Clock::now() + patience;
    while (output_.find(text) == std::string::npos) {
        if (Clock::now() > deadline || !read(100)) {
            return output_.find(text) != std::string::npos;
        }
    }
    return true;
}

int ProgramRun::wait() {
    auto const deadline = Clock::now() + patience;
    while (read(100)) {
        if (Clock::now() > deadline) {
            throw std::runtime_error("the program does not end; so far: " + output_ + errors_);
        }
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
