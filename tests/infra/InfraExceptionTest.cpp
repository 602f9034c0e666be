#include "infra/InfraException.h"
#include "infra/WrongConfigurationException.h"
#include "support/Slots.h"

#include <gtest/gtest.h>
#include <type_traits>

namespace {

class Opened : public InfraException {
public:
    using InfraException::setMessage;
};

TEST(InfraException, HasAnEmptyMessageByDefault) {
    InfraException const exception;
    EXPECT_EQ("", exception.getMessage());
    EXPECT_STREQ("", exception.what());
}

TEST(InfraException, TakesItsMessageFromCharacters) {
    EXPECT_EQ("no route", InfraException("no route").getMessage());
}

TEST(InfraException, TakesANullPointerForAnEmptyMessage) {
    char const* const nothing = nullptr;
    EXPECT_EQ("", InfraException(nothing).getMessage());
}

TEST(InfraException, KeepsEveryByteOfAString) {
    std::string const text("a\0b", 3);
    EXPECT_EQ(text, InfraException(text).getMessage());
}

TEST(InfraException, SaysItsMessageInWhat) {
    EXPECT_STREQ("no route", InfraException(std::string("no route")).what());
}

TEST(InfraException, CopiesCarryTheMessage) {
    InfraException const first("first");
    InfraException copy(first);
    EXPECT_EQ("first", copy.getMessage());
    copy = InfraException("second");
    EXPECT_EQ("second", copy.getMessage());
    EXPECT_EQ("first", first.getMessage());
}

TEST(InfraException, LetsADerivedClassReplaceTheMessage) {
    Opened exception;
    exception.setMessage("complete");
    EXPECT_EQ("complete", exception.getMessage());
    EXPECT_STREQ("complete", exception.what());
}

TEST(InfraException, IsCaughtAsAStandardException) {
    try {
        throw InfraException("no route");
    } catch (std::exception const& caught) {
        EXPECT_STREQ("no route", caught.what());
    }
}

TEST(InfraException, KeepsItsVirtualFunctionsInOrder) {
    EXPECT_TRUE(std::has_virtual_destructor_v<InfraException>);
    EXPECT_EQ(2u, slotOf(&InfraException::what));
    EXPECT_EQ(3u, slotOf(&InfraException::getMessage));
    EXPECT_EQ(4u, slotOf(&Opened::setMessage));
}

TEST(WrongConfigurationException, IsCaughtAsTheRootWithItsMessage) {
    try {
        throw WrongConfigurationException("no such key");
    } catch (InfraException const& caught) {
        EXPECT_EQ("no such key", caught.getMessage());
    }
}

TEST(WrongConfigurationException, CopiesCarryTheMessage) {
    WrongConfigurationException const first("first");
    WrongConfigurationException copy(first);
    EXPECT_EQ("first", copy.getMessage());
    copy = WrongConfigurationException("second");
    EXPECT_EQ("second", copy.getMessage());
}

} // namespace
