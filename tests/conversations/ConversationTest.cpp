// Plays every script of this folder; each is a test of its own.
#include "conversations/Conversation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

namespace {

std::vector<std::string> const files = {
#include "conversations.inc"
};

struct Played {
    std::string file;
    std::string version; ///< of a file that is played with every version
};

std::vector<Played> allPlayed() {
    std::vector<Played> all;
    for (std::string const& file : files) {
        if (!file.starts_with("every_version/")) {
            all.push_back({file, ""});
            continue;
        }
        for (char const* version : {"FIX.4.0", "FIX.4.1", "FIX.4.2", "FIX.4.3", "FIX.4.4",
                                    "FIX.5.0", "FIX.5.0SP1", "FIX.5.0SP2"}) {
            all.push_back({file, version});
        }
    }
    return all;
}

class ConversationTest : public testing::TestWithParam<Played> {
protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "zan-conversation-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string folder_;
};

TEST_P(ConversationTest, Goes) {
    std::string const path = std::string(CONVERSATIONS) + "/" + GetParam().file;
    conversations::Conversation conversation(conversations::readScript(path, GetParam().version),
                                             folder_);
    try {
        conversation.run();
    } catch (std::exception const& e) {
        ADD_FAILURE_AT(path.c_str(), conversation.line()) << e.what() << "\nUntil then:\n"
                                                          << conversation.transcript();
    }
}

std::string nameOf(testing::TestParamInfo<Played> const& info) {
    std::string const& file = info.param.file;
    std::string name = file.substr(0, file.rfind('.'));
    name += info.param.version.empty() ? "" : "_" + info.param.version;
    std::ranges::replace_if(
        name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Conversation, ConversationTest, testing::ValuesIn(allPlayed()), nameOf);

} // namespace
