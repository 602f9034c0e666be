#include "infra/UserTicket.h"
#include "infra/UtilityFunctions.h"
#include "infra/ltoa.h"
#include "support/Slots.h"

#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <type_traits>
#include <utility>

namespace {

template <class T, class = void>
struct CanBePrinted : std::false_type {};

template <class T>
struct CanBePrinted<T, std::void_t<decltype(std::declval<std::ostream&>() << std::declval<T>())>>
    : std::true_type {};

TEST(UserTicket, IsEmptyByDefault) {
    EXPECT_EQ("", UserTicket().getUser());
    EXPECT_EQ("", UserTicket().getSecret());
}

TEST(UserTicket, KeepsUserAndSecret) {
    UserTicket const ticket("trader", "hunter2");
    EXPECT_EQ("trader", ticket.getUser());
    EXPECT_EQ("hunter2", ticket.getSecret());
}

TEST(UserTicket, CopiesAreIndependent) {
    UserTicket ticket("trader", "hunter2");
    UserTicket const copy(ticket);
    ticket = UserTicket();
    EXPECT_EQ("trader", copy.getUser());
    EXPECT_EQ("hunter2", copy.getSecret());
    EXPECT_EQ("", ticket.getSecret());
}

TEST(UserTicket, CannotBePrinted) {
    EXPECT_TRUE(CanBePrinted<std::string>::value) << "the check itself works";
    EXPECT_FALSE(CanBePrinted<UserTicket>::value);
}

TEST(UtilityFunctions, IsOnlyABase) {
    EXPECT_FALSE(std::is_default_constructible_v<UtilityFunctions>);
    EXPECT_FALSE(std::is_destructible_v<UtilityFunctions>);
    EXPECT_TRUE(std::is_polymorphic_v<UtilityFunctions>);
}

TEST(Ltoa, ReturnsTheStartOfTheBuffer) {
    Ltoabuf buffer;
    EXPECT_EQ(buffer, ltoa(7, buffer));
}

long const NUMBERS[] = {
    0, 1, -1, 42, std::numeric_limits<long>::max(), std::numeric_limits<long>::min(),
};

TEST(Ltoa, WritesDecimalText) {
    for (long number : NUMBERS) {
        SCOPED_TRACE(number);
        Ltoabuf buffer;
        EXPECT_EQ(std::to_string(number), ltoa(number, buffer));
    }
}

struct Sample {
    virtual ~Sample() = default;
    virtual void first() {}
    virtual int second(int number) const { return number; }
    virtual void overloaded(long) {}
    virtual void overloaded(double) {}
    void plain() {}
};

TEST(SlotOf, CountsTheDestructorTwice) {
    EXPECT_EQ(2u, slotOf(&Sample::first));
    EXPECT_EQ(3u, slotOf(&Sample::second));
}

// The compiler's order for overloads is part of what the tests of slots rely on.
TEST(SlotOf, TellsOverloadsApart) {
    EXPECT_EQ(4u, (slotOf<void, Sample, long>(&Sample::overloaded)));
    EXPECT_EQ(5u, (slotOf<void, Sample, double>(&Sample::overloaded)));
}

TEST(SlotOf, RefusesAFunctionThatIsNotVirtual) {
    EXPECT_THROW(slotOf(&Sample::plain), std::logic_error);
}

} // namespace
