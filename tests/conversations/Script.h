/// Conversations as they are written in files: one step a line.
#ifndef ZANENGINE_TESTS_CONVERSATIONS_SCRIPT_H
#define ZANENGINE_TESTS_CONVERSATIONS_SCRIPT_H

#include "conformance/FixText.h"
#include "conformance/ScriptedPeer.h"

#include <map>
#include <string>
#include <vector>

namespace conversations {

using zan::conformance::composed;
using zan::conformance::expanded;
using zan::conformance::Identity;
using zan::conformance::isAdmin;
using zan::conformance::mismatch;
using zan::conformance::readable;
using zan::conformance::ScriptedPeer;
using zan::conformance::splitFields;
using zan::conformance::takeWord;
using zan::conformance::Unexpected;
using zan::conformance::valueOf;
using zan::conformance::wired;

struct Step {
    int line = 0;
    std::string verb;
    std::string rest;
};

struct Script {
    /// Keys of the session file that the conversation needs otherwise than usual.
    std::map<std::string, std::string> settings;
    std::vector<Step> steps;
};

/// With a version, such as `FIX.5.0SP2`, for that one. Throws std::runtime_error for a file that
/// cannot be read.
Script readScript(std::string const& path, std::string const& version);

} // namespace conversations

#endif
