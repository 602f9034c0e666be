#ifndef ZANENGINE_CONFORMANCE_TESTS_SESSIONFILECONTEXT_H
#define ZANENGINE_CONFORMANCE_TESTS_SESSIONFILECONTEXT_H

#include "conformance/ConformanceContext.h"
#include "conformance/ScriptedCounterparty.h"

#include <string>

/// The embedded engine with a session file of its own, and a scripted counterparty.
class SessionFileContext : public zan::conformance::ConformanceContext {
public:
    SessionFileContext();
    ~SessionFileContext() override;

    zan::conformance::Abilities abilities() const override;
    void start() override;
    zan::conformance::ScriptedCounterparty* counterparty() override { return &counterparty_; }

private:
    zan::conformance::ScriptedCounterparty counterparty_;
    std::string folder_;
};

#endif
