#include "errors/ZANUtilityFunctions.h"

#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineRemoteExceptionRegistrator.h"
#include "errors/ZANEngineUnknownRemoteException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "errors/ZANSecurityException.h"

#include <functional>
#include <gtest/gtest.h>
#include <type_traits>

namespace {

using Prototype = counted_ptr<ZANEngineRemoteException>;

// An exception of an adapter's own; what throwing does is up to the test.
class OwnException : public ZANEngineRemoteException {
public:
    explicit OwnException(
        std::string const& type, std::function<void()> beforeThrowing = [] {})
        : type_(type), beforeThrowing_(beforeThrowing) {}

    std::string const& getType() const override { return type_; }
    void throwInstance(std::string const& message) override {
        beforeThrowing_();
        throw ZANSecurityException(message + " by " + type_);
    }

private:
    std::string type_;
    std::function<void()> beforeThrowing_;
};

class QuietException : public OwnException {
public:
    using OwnException::OwnException;
    void throwInstance(std::string const&) override {}
};

// Registered for as long as a test runs.
class Registered {
public:
    explicit Registered(Prototype const& prototype) : prototype_(prototype) {
        ZANUtilityFunctions::registerRemoteException(prototype_);
    }
    Registered(Registered const&) = delete;
    Registered& operator=(Registered const&) = delete;
    ~Registered() { ZANUtilityFunctions::unregisterRemoteException(prototype_); }

private:
    Prototype prototype_;
};

struct Thrown {
    std::string className;
    std::string message;
    std::string type;
};

Thrown thrownFor(std::string const& type, std::string const& message) {
    try {
        ZANUtilityFunctions::throwConcreteRemoteException(type, message);
    } catch (ZANEngineRemoteException const& caught) {
        return {typeid(caught).name(), caught.getMessage(), caught.getType()};
    }
}

template <class Exception>
std::string className() {
    return typeid(Exception).name();
}

std::string const UNKNOWN = className<ZANEngineUnknownRemoteException>();

struct Row {
    char const* type;
    std::string className;
};

Row const KNOWN[] = {
    {"kestrow.moravane.engine.ZANConnectionUnavailableException",
     className<ZANConnectionUnavailableException>()},
    {"kestrow.moravane.engine.ZANConnectionUnknownException",
     className<ZANConnectionUnknownException>()},
    {"kestrow.moravane.message.ZANInvalidLogonException", className<ZANInvalidLogonException>()},
    {"kestrow.moravane.message.ZANInvalidMessageException",
     className<ZANInvalidMessageException>()},
    {"kestrow.moravane.engine.ZANNotConnectedException", className<ZANNotConnectedException>()},
    {"kestrow.util.PersistentStorageException", className<ZANPersistentStorageException>()},
    {"java.lang.SecurityException", className<ZANSecurityException>()},
};

TEST(ZANUtilityFunctions, ThrowsTheClassThatTheLibraryRegistered) {
    for (Row const& row : KNOWN) {
        SCOPED_TRACE(row.type);
        Thrown const thrown = thrownFor(row.type, "why");
        EXPECT_EQ(row.className, thrown.className);
        EXPECT_EQ(std::string(row.type) + ": why", thrown.message);
        EXPECT_EQ(row.type, thrown.type);
    }
}

std::string const UNKNOWN_NAMES[] = {
    "nobody.registered.This",          "",
    "java.lang.securityexception",     "java.lang.SecurityException ",
    "java.lang.SecurityExceptio",      std::string("java.lang.SecurityException\0", 28),
    "ZANEngineUnknownRemoteException", "Undefinded",
};

TEST(ZANUtilityFunctions, ThrowsTheFallbackForANameThatNobodyRegistered) {
    for (std::string const& row : UNKNOWN_NAMES) {
        SCOPED_TRACE(row);
        Thrown const thrown = thrownFor(row, "why");
        EXPECT_EQ(UNKNOWN, thrown.className);
        EXPECT_EQ(row + ": why", thrown.message);
        EXPECT_EQ("ZANEngineUnknownRemoteException", thrown.type);
    }
}

TEST(ZANUtilityFunctions, MakesAColonAndABlankOfEmptyTexts) {
    Thrown const thrown = thrownFor("", "");
    EXPECT_EQ(UNKNOWN, thrown.className);
    EXPECT_EQ(": ", thrown.message);
}

TEST(ZANUtilityFunctions, ThrowsAnAdaptersOwnException) {
    Registered const own(Prototype(new OwnException("own.First")));
    EXPECT_EQ("own.First: why by own.First", thrownFor("own.First", "why").message);
}

TEST(ZANUtilityFunctions, KeepsTheFirstPrototypeOfAName) {
    Prototype const first(new OwnException("own.Twice"));
    Prototype const second(new OwnException("own.Twice"));
    Registered const registered(first);
    ZANUtilityFunctions::registerRemoteException(second);
    EXPECT_EQ(3u, first.use_count()) << "this test, the guard and the registry";
    EXPECT_EQ(1u, second.use_count()) << "the registry let go of it";
}

TEST(ZANUtilityFunctions, RemovesByNameWhicheverObjectHoldsIt) {
    ZANUtilityFunctions::unregisterRemoteException(Prototype(new ZANNotConnectedException));
    std::string const name = "kestrow.moravane.engine.ZANNotConnectedException";
    Thrown const thrown = thrownFor(name, "why");
    ZANUtilityFunctions::registerRemoteException(Prototype(new ZANNotConnectedException));
    EXPECT_EQ(UNKNOWN, thrown.className);
    EXPECT_EQ(name + ": why", thrown.message);
    EXPECT_EQ(className<ZANNotConnectedException>(), thrownFor(name, "why").className);
}

TEST(ZANUtilityFunctions, ReleasesAPrototypeThatIsUnregistered) {
    Prototype const prototype(new OwnException("own.Released"));
    ZANUtilityFunctions::registerRemoteException(prototype);
    EXPECT_EQ(2u, prototype.use_count());
    ZANUtilityFunctions::unregisterRemoteException(prototype);
    EXPECT_EQ(1u, prototype.use_count());
}

TEST(ZANUtilityFunctions, TakesAnEmptyPointerForNothing) {
    EXPECT_NO_THROW(ZANUtilityFunctions::registerRemoteException(nullptr));
    EXPECT_NO_THROW(ZANUtilityFunctions::unregisterRemoteException(nullptr));
    EXPECT_EQ(className<ZANSecurityException>(),
              thrownFor("java.lang.SecurityException", "").className);
}

TEST(ZANUtilityFunctions, TakesTheUnregistrationOfAnAbsentNameForNothing) {
    ZANUtilityFunctions::unregisterRemoteException(Prototype(new OwnException("own.Absent")));
    EXPECT_EQ(UNKNOWN, thrownFor("own.Absent", "why").className);
}

TEST(ZANUtilityFunctions, ThrowsTheFallbackWhenAPrototypeReturns) {
    Registered const quiet(Prototype(new QuietException("own.Quiet")));
    Thrown const thrown = thrownFor("own.Quiet", "why");
    EXPECT_EQ(UNKNOWN, thrown.className);
    EXPECT_EQ("own.Quiet: why", thrown.message);
}

TEST(ZANUtilityFunctions, LetsAPrototypeUnregisterItselfWhileItThrows) {
    auto const unregister = [] {
        ZANUtilityFunctions::unregisterRemoteException(Prototype(new OwnException("own.Leaving")));
    };
    ZANUtilityFunctions::registerRemoteException(
        Prototype(new OwnException("own.Leaving", unregister)));
    EXPECT_EQ("own.Leaving: why by own.Leaving", thrownFor("own.Leaving", "why").message);
    EXPECT_EQ(UNKNOWN, thrownFor("own.Leaving", "why").className);
}

TEST(ZANUtilityFunctions, HasNoObjects) {
    EXPECT_FALSE(std::is_default_constructible_v<ZANUtilityFunctions>);
    EXPECT_FALSE(std::is_copy_constructible_v<ZANUtilityFunctions>);
    EXPECT_FALSE(std::is_destructible_v<ZANUtilityFunctions>);
}

TEST(ZANEngineRemoteExceptionRegistrator, RegistersAndLeavesRegistered) {
    Prototype const prototype(new OwnException("own.Static"));
    { ZANEngineRemoteExceptionRegistrator const registrator(prototype); }
    EXPECT_EQ(className<ZANSecurityException>(), thrownFor("own.Static", "why").className);
    ZANUtilityFunctions::unregisterRemoteException(prototype);
}

TEST(ZANEngineRemoteExceptionRegistrator, RegistersNothingWhenCopied) {
    Prototype const prototype(new OwnException("own.Copied"));
    ZANEngineRemoteExceptionRegistrator const registrator(prototype);
    ZANUtilityFunctions::unregisterRemoteException(prototype);
    ZANEngineRemoteExceptionRegistrator copy(registrator);
    copy = registrator;
    EXPECT_EQ(1u, prototype.use_count());
    EXPECT_EQ(UNKNOWN, thrownFor("own.Copied", "why").className);
}

TEST(ZANEngineRemoteExceptionRegistrator, TakesAnEmptyPointerForNothing) {
    EXPECT_NO_THROW(ZANEngineRemoteExceptionRegistrator{Prototype()});
}

TEST(ZANEngineRemoteExceptionRegistrator, HasAVirtualDestructor) {
    EXPECT_TRUE(std::has_virtual_destructor_v<ZANEngineRemoteExceptionRegistrator>);
    EXPECT_EQ(sizeof(void*), sizeof(ZANEngineRemoteExceptionRegistrator));
}

} // namespace
