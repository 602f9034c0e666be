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

class ConversationTest : public testing::TestWithParam<std::string> {
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
    std::string const path = std::string(CONVERSATIONS) + "/" + GetParam();
    conversations::Conversation conversation(conversations::readScript(path), folder_);
    try {
        conversation.run();
    } catch (std::exception const& e) {
        ADD_FAILURE_AT(path.c_str(), conversation.line()) << e.what() << "\nUntil then:\n"
                                                          << conversation.transcript();
    }
}

std::string nameOf(testing::TestParamInfo<std::string> const& info) {
    std::string name = info.param.substr(0, info.param.rfind('.'));
    std::ranges::replace_if(
        name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Conversation, ConversationTest, testing::ValuesIn(files), nameOf);

} // namespace
