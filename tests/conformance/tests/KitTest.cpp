// The kit sees what is wrong: each fault must break the promise that it is about.
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

struct Case {
    char const* fault;
    char const* promise;
    char const* inner = "echo:local";
};

void PrintTo(Case const& each, std::ostream* out) {
    *out << each.fault << " in " << each.inner;
}

class KitTest : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "zan-kit-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    /// The last words of the kit's program about the promise of this case.
    std::string verdict(std::string const& fault) const {
        std::ofstream(folder_ + "/faults") << fault << '\n';
        std::string const inner = GetParam().inner;
        ChildProcess kit(ZAN_CONFORMANCE,
                         {"fault:any?inner=" + inner + "&script=" + folder_ + "/faults",
                          "--abilities",
                          inner == "echo:local" ? "connections,sending,events,clock"
                                                : "all,-persistence,-guaranteed",
                          std::string("--gtest_filter=Adapter_") + GetParam().promise});
        kit.waitForLine("Global test environment tear-down");
        bool const isBroken =
            !kit.waitForLine(std::string("] Adapter_") + GetParam().promise + " (")
                 .starts_with("[       OK ]");
        return isBroken ? "broken" : "kept";
    }

    std::string folder_;
};

TEST_P(KitTest, SeesTheFault) {
    EXPECT_EQ(verdict(GetParam().fault), "broken");
    EXPECT_EQ(verdict("# no fault"), "kept");
}

char const* const demo = "embedded:demo";

INSTANTIATE_TEST_SUITE_P(
    Faults, KitTest,
    testing::Values(
        Case{"throw uninitialize 1 ZANEngineException stuck", "LifeCycle.StartsAndStops"},
        Case{"drop getConnectionNameList *", "Connections.HaveNames"},
        Case{"drop connect *", "Connections.LogOn"},
        Case{"drop disconnect *", "Connections.LogOut"},
        Case{"drop sendMessage 2", "Sending.ReturnsRisingNumbers"},
        Case{"throw sendMessage 1 ZANEngineException no", "Sending.NeedsASession"},
        Case{"throw getConnectionState 3 ZANEngineException busy", "Threads.GetAnswers"},
        Case{"drop event 3", "Events.ComeOnceAndInOrder"},
        Case{"reorder event 2 3", "Events.ComeOnceAndInOrder"},
        Case{"drop getMillisTime *", "Clock.TellsTheTime"},
        Case{"drop pingConnection *", "Sessions.AnswerPings", demo},
        Case{"drop unsubscribeDirect 1", "Direct.TakesKindsAway", demo},
        Case{"drop destroyDirectSubscriber 1", "Direct.EndsWithItsListener", demo},
        Case{"drop sendMultipleMessages 1", "Batches.AreRefusedWhole", demo},
        Case{"drop postInternalMessage 2", "Posting.ReachesListeners", demo},
        Case{"drop retrieveMessagesByIdRange 5", "Log.FindsRangesOfIds", demo},
        Case{"drop retrieveMessagesByDateRange 3", "Log.FindsRangesOfTime", demo},
        Case{"drop retrieveMessagesByIdSet 2", "Log.FindsSetsOfIds", demo},
        Case{"drop getMessageIds 4", "Log.GivesTheIdsOfStreams", demo},
        Case{"drop retrieveMessageChain 3", "Log.FollowsChains", demo},
        Case{"drop retrieveMessagesByQuery 7", "Expressions.AnswerQueries", demo},
        Case{"drop updateMessageLogData 1", "Edits.ChangeNotes", demo},
        Case{"drop deleteMessageLogData 1", "Edits.DeleteRows", demo},
        Case{"drop resendMessages 1", "Resending.SendsAgainWhatWasSent", demo}));

} // namespace
