#ifndef ZANENGINE_TESTS_SUPPORT_TESTFACTORY_H
#define ZANENGINE_TESTS_SUPPORT_TESTFACTORY_H

#include "adapter/IZANEngineAdapterFactory.h"

#include <functional>

/// Hands out the adapter that the test has put in, which may be empty.
class TestFactory : public IZANEngineAdapterFactory {
public:
    explicit TestFactory(counted_ptr<IZANEngineAdapter> toHandOut) : adapter(toHandOut) {}

    counted_ptr<IZANEngineAdapter> adapter;
    /// What was asked for.
    int timesAsked = 0;
    counted_ptr<IZANEngineConfigProvider> provider;
    /// Runs when an adapter is asked for; it may throw.
    std::function<void()> onCreate;

    counted_ptr<IZANEngineAdapter>
    createAdapter(counted_ptr<IZANEngineConfigProvider> given) override {
        ++timesAsked;
        provider = given;
        if (onCreate) {
            onCreate();
        }
        return adapter;
    }
};

#endif
