/// The virtual calls of recording fields and groups, and of their reference, in their order.
#ifndef ZANENGINE_TESTS_MESSAGE_MODEL_CALLS_H
#define ZANENGINE_TESTS_MESSAGE_MODEL_CALLS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What a call throws when it is told to.
struct CallFailed {};

class Calls {
public:
    struct Call {
        int id;
        std::string_view name;
        bool operator==(Call const& other) const { return id == other.id && name == other.name; }
    };

    static constexpr std::size_t never = static_cast<std::size_t>(-1);

    Calls() { calls_.reserve(most); }

    /// Forgets all calls; the one with the index `failing` will throw.
    void start(std::size_t failing = never) {
        calls_.clear();
        failing_ = failing;
        isOn_ = true;
    }
    void stop() { isOn_ = false; }

    /// Takes no memory.
    void add(int id, std::string_view name) {
        if (!isOn_) {
            return;
        }
        if (calls_.size() == failing_) {
            throw CallFailed();
        }
        if (calls_.size() < most) {
            calls_.push_back({id, name});
        }
    }

    std::vector<Call> const& all() const { return calls_; }

    std::string text() const {
        std::string text;
        for (Call const& call : calls_) {
            text += std::to_string(call.id) + "." + std::string(call.name) + " ";
        }
        return text;
    }

private:
    static constexpr std::size_t most = 1 << 20;

    std::vector<Call> calls_;
    std::size_t failing_ = never;
    bool isOn_ = false;
};

/// The calls of the real objects.
inline Calls& realCalls() {
    static Calls calls;
    return calls;
}

#endif
