/// A program in another process, and the lines that it prints.
#ifndef ZANENGINE_TESTS_SUPPORT_CHILDPROCESS_H
#define ZANENGINE_TESTS_SUPPORT_CHILDPROCESS_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

/// Ends with this object. Its lines are read all the time, so that it never waits for a reader.
class ChildProcess {
public:
    ChildProcess(std::string const& program, std::vector<std::string> arguments) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        arguments.insert(arguments.begin(), program);
        std::vector<char*> texts;
        for (std::string& argument : arguments) {
            texts.push_back(argument.data());
        }
        texts.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        int const error =
            posix_spawn(&pid_, program.c_str(), &actions, nullptr, texts.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        output_ = ends[0];
        if (error != 0) {
            close(output_);
            throw std::runtime_error("cannot start " + program);
        }
        reader_ = std::thread([this] { readLines(); });
    }

    ChildProcess(ChildProcess const&) = delete;
    ChildProcess& operator=(ChildProcess const&) = delete;

    ~ChildProcess() {
        end(SIGTERM);
        reader_.join();
    }

    /// Returns when the process is gone.
    void end(int signal) {
        if (pid_ > 0) {
            kill(pid_, signal);
            // One that was stopped or is stuck is not waited for politely.
            if (!waitForEnd(std::chrono::seconds(3))) {
                kill(pid_, SIGKILL);
                waitpid(pid_, nullptr, 0);
            }
            pid_ = 0;
        }
    }

    void sendSignal(int signal) const { kill(pid_, signal); }

    /// 0 when it has ended.
    pid_t pid() const { return pid_; }

    /// The first line, also one that came already, that holds `text`; empty when none came in time.
    std::string waitForLine(std::string const& text) {
        std::unique_lock lock(mutex_);
        std::string found;
        arrived_.wait_for(lock, std::chrono::seconds(10), [&] {
            auto const line =
                std::find_if(lines_.begin(), lines_.end(), [&](std::string const& each) {
                    return each.find(text) != std::string::npos;
                });
            found = line == lines_.end() ? "" : *line;
            return !found.empty();
        });
        return found;
    }

    std::vector<std::string> lines() {
        std::lock_guard const lock(mutex_);
        return lines_;
    }

private:
    bool waitForEnd(std::chrono::milliseconds patience) const {
        auto const deadline = std::chrono::steady_clock::now() + patience;
        while (waitpid(pid_, nullptr, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return true;
    }

    void readLines() {
        std::FILE* const input = fdopen(output_, "r");
        char* line = nullptr;
        std::size_t capacity = 0;
        for (ssize_t size = 0; (size = getline(&line, &capacity, input)) > 0;) {
            std::lock_guard const lock(mutex_);
            lines_.emplace_back(line, static_cast<std::size_t>(size - 1));
            arrived_.notify_all();
        }
        std::free(line);
        std::fclose(input);
    }

    pid_t pid_ = 0;
    int output_ = -1;
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::string> lines_;
    std::thread reader_;
};

#endif
