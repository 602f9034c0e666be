#include "comfort/make_counted.h"

#include "message/ZANFieldGroup.h"
#include "message/ZANMessage.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace {

struct Base {
    virtual ~Base() = default;
    virtual int number() const { return 0; }
};

struct Derived : Base {
    Derived(int number, std::unique_ptr<int> ends) : number_(number), ends_(std::move(ends)) {}
    ~Derived() override { ++ended; }
    int number() const override { return number_ + *ends_; }

    static inline int ended = 0;
    int number_;
    std::unique_ptr<int> ends_;
};

struct Refusing : Base {
    Refusing() { throw std::runtime_error("no"); }
};

TEST(MakeCounted, HoldsADerivedObjectAsItsBase) {
    Derived::ended = 0;
    {
        auto const made = make_counted<Base, Derived>(40, std::make_unique<int>(2));
        static_assert(std::is_same_v<decltype(made), counted_ptr<Base> const>);
        EXPECT_EQ(made->number(), 42);
        EXPECT_EQ(made.use_count(), 1U);
    }
    EXPECT_EQ(Derived::ended, 1);
}

TEST(MakeCounted, WithOneTypeHoldsTheObjectAsWhatItIs) {
    auto const body = make_counted<ZANFieldGroup>("D");
    auto const message = zan::make_counted<ZANMessage>(body);
    static_assert(std::is_same_v<decltype(message), counted_ptr<ZANMessage> const>);
    EXPECT_EQ(message->getFieldGroup(), body);
}

// One argument that is itself of the derived type goes to its constructor.
TEST(MakeCounted, CopiesADerivedObject) {
    struct Plain : Base {
        int number() const override { return 7; }
    };
    auto const made = make_counted<Base, Plain>(Plain());
    EXPECT_EQ(made->number(), 7);
}

TEST(MakeCounted, LetsTheConstructorsExceptionPass) {
    EXPECT_THROW(static_cast<void>(make_counted<Base, Refusing>()), std::runtime_error);
}

} // namespace
