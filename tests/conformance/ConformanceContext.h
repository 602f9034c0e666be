/// `ConformanceContext`: how the kit reaches the adapter that it tests. The author of an adapter
/// writes one, or takes `UrlContext` when a URL is all that it needs.
#ifndef ZANENGINE_CONFORMANCE_CONFORMANCECONTEXT_H
#define ZANENGINE_CONFORMANCE_CONFORMANCECONTEXT_H

#include "conformance/Abilities.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace zan::conformance {

class ScriptedCounterparty;

/// Each test gets a context of its own, starts the facade with it, and ends the facade before the
/// context. Threads: the test's own.
class ConformanceContext {
public:
    ConformanceContext() = default;
    ConformanceContext(ConformanceContext const&) = delete;
    ConformanceContext& operator=(ConformanceContext const&) = delete;
    virtual ~ConformanceContext();

    virtual Abilities abilities() const = 0;

    /// Starts the facade: calls one of the two `ZANEngineProxy::initialize`. Called once or more,
    /// each time after an `uninitialize`; an adapter that has the ability `persistence` then finds
    /// what it left.
    virtual void start() = 0;

    /// The connection that is tested; by default the first one that the adapter names.
    virtual std::string connection() const;

    /// An application message that the engine takes, as text; its ClOrdID (11) is `id`. By default
    /// an order.
    virtual std::string order(std::string const& id) const;

    /// The counterparty of the tested connection when it does what a test says; by default null,
    /// and the promises about what a counterparty does are skipped.
    virtual ScriptedCounterparty* counterparty();

    /// How long a test waits for something that must happen; by default half a minute.
    virtual std::chrono::milliseconds patience() const;
};

/// Makes the context of one test.
using MakeContext = std::function<std::unique_ptr<ConformanceContext>()>;

/// An adapter that a URL starts, with nothing around it.
class UrlContext : public ConformanceContext {
public:
    /// `connection` empty: the first one that the adapter names.
    UrlContext(std::string url, Abilities abilities, std::string connection = {});

    Abilities abilities() const override;
    void start() override;
    std::string connection() const override;

private:
    std::string url_;
    Abilities abilities_;
    std::string connection_;
};

} // namespace zan::conformance

#endif
