#include "errors/ZANEngineException.h"
#include "errors/ZANAdapterCreationException.h"
#include "errors/ZANCannotConnectException.h"
#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineRemoteException.h"
#include "errors/ZANEngineUnknownRemoteException.h"
#include "errors/ZANInvalidConfigPropertiesException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "errors/ZANSecurityException.h"
#include "support/Slots.h"

#include <gtest/gtest.h>
#include <memory>
#include <type_traits>

namespace {

template <class Exception>
class EveryException : public testing::Test {};

using EveryClass = testing::Types<ZANEngineException, ZANAdapterCreationException,
                                  ZANCannotConnectException, ZANInvalidConfigPropertiesException,
                                  ZANConnectionUnavailableException, ZANConnectionUnknownException,
                                  ZANInvalidLogonException, ZANInvalidMessageException,
                                  ZANNotConnectedException, ZANPersistentStorageException,
                                  ZANSecurityException, ZANEngineUnknownRemoteException>;
TYPED_TEST_SUITE(EveryException, EveryClass);

TYPED_TEST(EveryException, HasAnEmptyMessageByDefault) {
    EXPECT_EQ("", TypeParam().getMessage());
}

TYPED_TEST(EveryException, KeepsItsMessage) {
    TypeParam const exception(std::string("no route"));
    EXPECT_EQ("no route", exception.getMessage());
    EXPECT_STREQ("no route", exception.what());
}

TYPED_TEST(EveryException, CopiesItsMessage) {
    TypeParam const first(std::string("first"));
    TypeParam copy(first);
    EXPECT_EQ("first", copy.getMessage());
    copy = TypeParam(std::string("second"));
    EXPECT_EQ("second", copy.getMessage());
    EXPECT_EQ("first", first.getMessage());
}

TYPED_TEST(EveryException, IsCaughtAsTheRootOfTheFamily) {
    EXPECT_THROW(throw TypeParam(std::string("x")), ZANEngineException);
    EXPECT_THROW(throw TypeParam(std::string("x")), InfraException);
    EXPECT_THROW(throw TypeParam(std::string("x")), std::exception);
}

TYPED_TEST(EveryException, AddsNoMember) {
    EXPECT_EQ(sizeof(InfraException), sizeof(TypeParam));
}

TEST(ZANEngineException, TakesItsMessageFromCharacters) {
    char const* const nothing = nullptr;
    EXPECT_EQ("no route", ZANEngineException("no route").getMessage());
    EXPECT_EQ("", ZANEngineException(nothing).getMessage());
}

struct RemoteClass {
    std::shared_ptr<ZANEngineRemoteException> prototype;
    char const* type;
    bool (*isOwnClass)(ZANEngineRemoteException const&);
};

template <class Exception>
RemoteClass remote(char const* type) {
    return {std::make_shared<Exception>(), type,
            [](ZANEngineRemoteException const& e) { return typeid(e) == typeid(Exception); }};
}

RemoteClass const REMOTE_CLASSES[] = {
    remote<ZANConnectionUnavailableException>(
        "kestrow.moravane.engine.ZANConnectionUnavailableException"),
    remote<ZANConnectionUnknownException>("kestrow.moravane.engine.ZANConnectionUnknownException"),
    remote<ZANInvalidLogonException>("kestrow.moravane.message.ZANInvalidLogonException"),
    remote<ZANInvalidMessageException>("kestrow.moravane.message.ZANInvalidMessageException"),
    remote<ZANNotConnectedException>("kestrow.moravane.engine.ZANNotConnectedException"),
    remote<ZANPersistentStorageException>("kestrow.util.PersistentStorageException"),
    remote<ZANSecurityException>("java.lang.SecurityException"),
    remote<ZANEngineUnknownRemoteException>("ZANEngineUnknownRemoteException"),
};

TEST(EveryRemoteException, KnowsTheEnginesNameForIt) {
    for (RemoteClass const& row : REMOTE_CLASSES) {
        SCOPED_TRACE(row.type);
        EXPECT_EQ(row.type, row.prototype->getType());
    }
}

TEST(EveryRemoteException, NamesItselfWithAlwaysTheSameString) {
    for (RemoteClass const& row : REMOTE_CLASSES) {
        SCOPED_TRACE(row.type);
        EXPECT_EQ(&row.prototype->getType(), &row.prototype->getType());
    }
}

TEST(EveryRemoteException, ThrowsANewExceptionOfItsOwnClass) {
    for (RemoteClass const& row : REMOTE_CLASSES) {
        SCOPED_TRACE(row.type);
        try {
            row.prototype->throwInstance("x");
            FAIL() << "it returned";
        } catch (ZANEngineRemoteException const& caught) {
            EXPECT_TRUE(row.isOwnClass(caught));
            EXPECT_EQ("x", caught.getMessage());
            EXPECT_EQ(row.type, caught.getType());
        }
        EXPECT_EQ("", row.prototype->getMessage());
    }
}

TEST(EveryRemoteException, IsCaughtByEachOfItsBases) {
    for (RemoteClass const& row : REMOTE_CLASSES) {
        SCOPED_TRACE(row.type);
        EXPECT_THROW(row.prototype->throwInstance("x"), ZANEngineRemoteException);
        EXPECT_THROW(row.prototype->throwInstance("x"), ZANEngineException);
        EXPECT_THROW(row.prototype->throwInstance("x"), InfraException);
        EXPECT_THROW(row.prototype->throwInstance("x"), std::exception);
    }
}

struct Nameless : ZANEngineRemoteException {
    void throwInstance(std::string const&) override { throw Nameless(*this); }
};

TEST(ZANEngineRemoteException, HasAPlaceholderForANameThatNobodyGave) {
    EXPECT_EQ("Undefinded", Nameless().getType());
}

TEST(ZANEngineRemoteException, IsAbstract) {
    EXPECT_TRUE(std::is_abstract_v<ZANEngineRemoteException>);
}

TEST(ZANEngineRemoteException, IsNoLocalException) {
    EXPECT_FALSE((std::is_base_of_v<ZANEngineRemoteException, ZANCannotConnectException>));
    try {
        throw ZANNotConnectedException("x");
    } catch (ZANEngineException const& caught) {
        EXPECT_EQ(nullptr, dynamic_cast<ZANCannotConnectException const*>(&caught));
    }
}

TEST(ZANEngineRemoteException, KeepsItsVirtualFunctionsInOrder) {
    EXPECT_EQ(2u, slotOf(&ZANEngineRemoteException::what));
    EXPECT_EQ(3u, slotOf(&ZANEngineRemoteException::getMessage));
    EXPECT_EQ(5u, slotOf(&ZANEngineRemoteException::getType));
    EXPECT_EQ(6u, slotOf(&ZANEngineRemoteException::throwInstance));
    EXPECT_EQ(5u, slotOf(&ZANSecurityException::getType));
    EXPECT_EQ(6u, slotOf(&ZANSecurityException::throwInstance));
}

} // namespace
