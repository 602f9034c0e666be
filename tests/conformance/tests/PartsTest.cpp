// The parts of the kit that read what people write.
#include "conformance/Abilities.h"
#include "conformance/ScriptedCounterparty.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace zan::conformance;

namespace {

TEST(Abilities, AreReadFromTheLeftToTheRight) {
    Abilities const some = Abilities::parse("all,-edits,-log,log");
    EXPECT_TRUE(some.has(Ability::Log));
    EXPECT_FALSE(some.has(Ability::Edits));
    EXPECT_TRUE(some.has(Ability::Clock));
    EXPECT_FALSE(Abilities::parse("log,none").has(Ability::Log));
    EXPECT_FALSE(Abilities::parse("").has(Ability::Log));
}

TEST(Abilities, HaveNamesThatAreReadAgain) {
    for (Ability const each : everyAbility()) {
        EXPECT_TRUE(Abilities::parse(nameOf(each)).has(each)) << nameOf(each);
    }
}

TEST(Abilities, TellWhichThereAre) {
    try {
        Abilities::parse("log,flying");
        FAIL() << "nothing was thrown";
    } catch (std::invalid_argument const& e) {
        EXPECT_EQ(std::string(e.what()).find("\"flying\" is no ability; these are: all, none, "),
                  0u);
    }
}

TEST(ScriptedCounterparty, RefusesALineThatIsNoRule) {
    ScriptedCounterparty counterparty({"FIX.4.4", "THEM", "US"});
    for (char const* const line : {"D send 8", "on D say 8", "on", "on D"}) {
        EXPECT_THROW(counterparty.setScript(line), std::runtime_error) << line;
    }
    EXPECT_NO_THROW(counterparty.setScript("# nothing\n\non D send 8 11={11}\non 5 close\n"));
}

} // namespace
