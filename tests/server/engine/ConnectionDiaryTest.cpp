#include "server/engine/ConnectionDiary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>

namespace {

using namespace zan::server;

class ConnectionDiaryTest : public testing::Test {
protected:
    void SetUp() override {
        setDiagnosticSink(
            [this](DiagnosticLevel level, std::string const& category, std::string const& text) {
                told_ += std::string(levelName(level)) + " " + category + ": " + text + "\n";
            },
            DiagnosticLevel::Debug);
        queue_.emplace();
        diary_.emplace("C", *queue_);
    }

    void TearDown() override { setDiagnosticSink(nullptr); }

    /// What was told until now; nothing can be told after it.
    std::string told() {
        queue_.reset();
        return told_;
    }

    void log(FixStream stream, std::string text, FixOrigin origin = FixOrigin::wire,
             std::string const& note = "") {
        FixEntry entry;
        entry.stream = stream;
        entry.origin = origin;
        std::ranges::replace(text, '|', '\x01');
        entry.text = text;
        entry.note = note;
        diary_->logged({entry});
    }

    void become(long flags, std::string const& lastError = "") {
        LinkState state;
        state.flags = flags;
        state.local = "here";
        state.remote = "there";
        state.lastError = lastError;
        diary_->stateChanged(state, {7, 8});
    }

    std::string told_;
    std::optional<DiagnosticQueue> queue_;
    std::optional<ConnectionDiary> diary_;
};

TEST_F(ConnectionDiaryTest, TellsResendRequestsOfBothSides) {
    log(FixStream::adminIn, "8=FIX.4.4|35=2|7=3|16=0|");
    log(FixStream::adminOut, "8=FIX.4.4|35=2|7=4|16=9|");
    EXPECT_EQ(told(), "WARNING session: connection C: the counterparty asks for our messages 3 and "
                      "all after it again\n"
                      "WARNING session: connection C: a gap: the counterparty is asked for its "
                      "messages 4 to 9 again\n");
}

TEST_F(ConnectionDiaryTest, TellsRejectsOfBothSidesAndBothKinds) {
    log(FixStream::adminIn, "8=FIX.4.4|35=3|45=7|371=55|58=no such symbol|");
    log(FixStream::adminOut, "8=FIX.4.4|35=3|45=8|");
    log(FixStream::appIn, "8=FIX.4.4|35=j|45=9|372=D|58=closed|");
    log(FixStream::appOut, "8=FIX.4.4|35=j|45=10|58=what|");
    EXPECT_EQ(told(), "WARNING session: connection C: the counterparty rejects our message 7, tag "
                      "55: no such symbol\n"
                      "WARNING session: connection C: the counterparty gets a reject for its "
                      "message 8\n"
                      "WARNING session: connection C: the counterparty rejects our message 9: "
                      "closed\n"
                      "WARNING session: connection C: the counterparty gets a reject for its "
                      "message 10: what\n");
}

TEST_F(ConnectionDiaryTest, TellsWhatWasRefusedAndWhatWasNoted) {
    log(FixStream::appIn, "8=FIX.4.4|35=8|", FixOrigin::remark, "refused: wrong checksum");
    log(FixStream::adminOut, "", FixOrigin::remark, "sequence numbers reset to 1 by me");
    EXPECT_EQ(told(), "WARNING session: connection C: a message is refused: wrong checksum\n"
                      "INFO session: connection C: sequence numbers reset to 1 by me\n");
}

TEST_F(ConnectionDiaryTest, TellsLogouts) {
    log(FixStream::adminIn, "8=FIX.4.4|35=5|58=good night|");
    log(FixStream::adminOut, "8=FIX.4.4|35=5|");
    EXPECT_EQ(told(), "INFO session: connection C: the counterparty logs out: good night\n"
                      "INFO session: connection C: logs out\n");
}

TEST_F(ConnectionDiaryTest, TellsNothingOfTheUsualMessages) {
    log(FixStream::adminIn, "8=FIX.4.4|35=0|");
    log(FixStream::adminIn, "8=FIX.4.4|35=A|554=secret|");
    log(FixStream::appOut, "8=FIX.4.4|35=D|");
    log(FixStream::appIn, "8=FIX.4.4|35=8|");
    log(FixStream::appIn, "8=FIX.4.4|35=j|58=posted|", FixOrigin::internal);
    log(FixStream::resent, "8=FIX.4.4|35=j|58=again|", FixOrigin::again);
    EXPECT_EQ(told(), "");
}

TEST_F(ConnectionDiaryTest, TellsALogonAndALogoff) {
    become(FLAG_LINK_ACTIVE);
    become(FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE);
    become(FLAG_LINK_ACTIVE);
    EXPECT_EQ(told(), "INFO session: connection C: the link is up, from here to there\n"
                      "INFO session: connection C: is logged on; the next numbers are 7 out and 8 "
                      "in\n"
                      "INFO session: connection C: is logged off\n");
}

TEST_F(ConnectionDiaryTest, TellsALostLinkFromOneThatWasClosed) {
    become(FLAG_LINK_ACTIVE);
    become(FLAG_DISCONNECTED, "the counterparty closed the link");
    become(FLAG_LINK_ACTIVE);
    become(FLAG_DISCONNECTED | FLAG_LOGGED_OUT, "logged out by the counterparty");
    EXPECT_EQ(told(), "INFO session: connection C: the link is up, from here to there\n"
                      "WARNING session: connection C: the link is lost: the counterparty closed "
                      "the link\n"
                      "INFO session: connection C: the link is up, from here to there\n"
                      "INFO session: connection C: the link is closed\n");
}

TEST_F(ConnectionDiaryTest, TellsNothingOfAStateThatStaysTheSame) {
    become(FLAG_UNREACHABLE);
    become(FLAG_UNREACHABLE, "refused");
    EXPECT_EQ(told(), "");
}

TEST_F(ConnectionDiaryTest, TellsTroubleOfTheStorageAsAnError) {
    diary_->trouble(FixTrouble::storage, "C.log: database or disk is full");
    become(FLAG_DB_ERROR);
    become(0);
    diary_->trouble(FixTrouble::badBytes, "no BeginString");
    EXPECT_EQ(told(), "ERROR log: connection C: nothing can be stored: C.log: database or disk is "
                      "full\n"
                      "INFO log: connection C: messages are stored again\n"
                      "WARNING session: connection C: no BeginString\n");
}

TEST_F(ConnectionDiaryTest, TellsACounterpartyThatDoesNotRead) {
    become(FLAG_UNAVAILABLE);
    become(0);
    EXPECT_EQ(told(), "WARNING session: connection C: the counterparty does not read\n"
                      "INFO session: connection C: the counterparty reads again\n");
}

TEST_F(ConnectionDiaryTest, TellsTroubleWithListenersOnStandardOutputToo) {
    testing::internal::CaptureStdout();
    diary_->listenerTrouble("a listener failed on message 7: no\nmore");
    std::string const printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, "Connection C: a listener failed on message 7: no more\n");
    EXPECT_EQ(told(), "WARNING delivery: connection C: a listener failed on message 7: no more\n");
}

} // namespace
