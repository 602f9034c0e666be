/// A receiver of session reports that keeps them and lets a test wait for one.
#ifndef ZANENGINE_TESTS_SUPPORT_SESSIONRECORDER_H
#define ZANENGINE_TESTS_SUPPORT_SESSIONRECORDER_H

#include "server/sessions/FixScanner.h"
#include "server/sessions/FixSession.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// Every report becomes a line: `up`, `down`, `on`, `off`, `< <message>`, `> <message>`,
/// `# <note>: <message>` for a remark, `! <kind> <text>`; SOH is written as `|`.
class SessionRecorder : public zan::server::FixSessionEvents {
public:
    void linkUp(std::string const&, std::string const&) override { add("up"); }
    void linkDown() override { add("down"); }
    void loggedOn(int) override { add("on"); }
    void loggedOff() override { add("off"); }
    void logged(std::vector<zan::server::FixEntry>& entries) override {
        for (zan::server::FixEntry const& entry : entries) {
            std::function<void(std::string const&)> const action = takeAction();
            add(entry);
            if (action && isReceived(entry))
                action(entry.text);
        }
    }
    void trouble(zan::server::FixTrouble kind, std::string const& text) override {
        static char const* const kinds[] = {"unreachable", "timedOut", "badBytes",
                                            "storage",     "closed",   "session"};
        add(std::string("! ") + kinds[static_cast<int>(kind)] + " " + text);
    }

    /// Called for every message that comes in, with the store's turn.
    void onReceived(std::function<void(std::string const&)> action) {
        std::lock_guard<std::mutex> lock(mutex_);
        action_ = action;
    }

    std::vector<std::string> lines() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lines_;
    }

    std::vector<std::string> linesWith(std::string const& part) const {
        std::vector<std::string> found;
        for (std::string const& line : lines())
            if (matches(line, part))
                found.push_back(line);
        return found;
    }

    /// Waits until that many lines contain the text (or are it: `up`, `down`, `on`, `off`); false
    /// after the time limit.
    bool waitFor(std::string const& part, std::size_t count = 1,
                 std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [&] {
            std::size_t found = 0;
            for (std::string const& line : lines_)
                found += matches(line, part) ? 1 : 0;
            return found >= count;
        });
    }

    /// Every entry that was reported, in that order.
    std::vector<zan::server::FixEntry> entries() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return entries_;
    }

    std::string all() const {
        std::string text;
        for (std::string const& line : lines())
            text += line + "\n";
        return text;
    }

private:
    // The reports of one word are looked for as whole lines: "on" stands in many a text.
    static bool matches(std::string const& line, std::string const& part) {
        bool const word = part == "up" || part == "down" || part == "on" || part == "off";
        return word ? line == part : line.find(part) != std::string::npos;
    }

    static bool isReceived(zan::server::FixEntry const& entry) {
        return entry.origin == zan::server::FixOrigin::wire &&
               (entry.stream == zan::server::FixStream::adminIn ||
                entry.stream == zan::server::FixStream::appIn);
    }

    static std::string readable(std::string message) {
        for (char& each : message)
            if (each == '\x01')
                each = '|';
        return message;
    }

    std::function<void(std::string const&)> takeAction() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return action_;
    }

    void add(zan::server::FixEntry const& entry) {
        std::string begin = isReceived(entry) ? "< " : "> ";
        if (entry.origin == zan::server::FixOrigin::remark)
            begin = "# " + entry.note + ": ";
        std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back(entry);
        addLine(begin + readable(entry.text));
    }

    void add(std::string const& line) {
        std::lock_guard<std::mutex> lock(mutex_);
        addLine(line);
    }

    void addLine(std::string const& line) {
        lines_.push_back(line);
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> lines_;
    std::vector<zan::server::FixEntry> entries_;
    std::function<void(std::string const&)> action_;
};

#endif
