/// The counterparty's end of the link: it accepts the engine's connection, and what it says is all
/// up to the script.
#ifndef ZANENGINE_CONFORMANCE_SCRIPTEDPEER_H
#define ZANENGINE_CONFORMANCE_SCRIPTEDPEER_H

#include <chrono>
#include <stdexcept>
#include <string>

namespace zan::conformance {

/// What was expected and did not come.
class Unexpected : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Listens on a loopback port that the system picks. One thread.
class ScriptedPeer {
public:
    enum class Got { message, end, nothing };
    using Patience = std::chrono::milliseconds;

    ScriptedPeer();
    ~ScriptedPeer();
    ScriptedPeer(ScriptedPeer const&) = delete;
    ScriptedPeer& operator=(ScriptedPeer const&) = delete;

    int port() const;
    bool hasLink() const { return link_ >= 0; }

    /// Takes the next connection, in place of the one that there was.
    bool accept(Patience patience);

    void write(std::string const& bytes);
    /// Tells the engine that nothing more comes; what it still says can be read.
    void finishWriting();
    void close();
    /// Ends the link with a reset.
    void cut();

    /// The engine's next message. Throws `Unexpected` for bytes that are none.
    Got next(std::string& message, Patience patience);

private:
    bool takeMessage(std::string& message);
    bool wait(int socket, std::chrono::steady_clock::time_point deadline) const;

    int listener_;
    int link_ = -1;
    std::string buffer_;
};

} // namespace zan::conformance

#endif
