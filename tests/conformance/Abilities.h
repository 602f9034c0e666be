/// What an adapter can do beyond its life cycle. The kit runs the promises that belong to these
/// abilities, shows the others as skipped, and checks that absent operations are refused.
#ifndef ZANENGINE_CONFORMANCE_ABILITIES_H
#define ZANENGINE_CONFORMANCE_ABILITIES_H

#include <initializer_list>
#include <string>
#include <vector>

namespace zan::conformance {

enum class Ability {
    /// Names, states, `connect` and `disconnect` of connections.
    Connections,
    /// `sendMessage`, as text and as a model.
    Sending,
    /// What is sent comes to the listeners of the facade, under the number that sending returned.
    Events,
    /// `sendAdminMessage`.
    Admin,
    /// `sendMultipleMessages`.
    Batches,
    /// `postInternalMessage` and `postMultipleInternalMessages`.
    Posting,
    /// `subscribeDirect`, `unsubscribeDirect` and `destroyDirectSubscriber`.
    Direct,
    /// State events for direct subscribers.
    States,
    /// A session with sequence numbers and a counterparty: `pingConnection`, `resetConnection`.
    Sessions,
    /// A message log: the operations that retrieve by ranges, sets and chains, and as a table.
    Log,
    /// SQL expressions as filters, and `retrieveMessagesByQuery`.
    Expressions,
    /// `updateMessageLogData`, `insertMessageLogData` and `deleteMessageLogData`.
    Edits,
    /// `resendMessages` and `retrieveMessagesForResend`.
    Resending,
    /// Guaranteed listeners: marks, filters, redelivery.
    Guaranteed,
    /// What the log and the marks hold is there after a stop and a start.
    Persistence,
    /// A listener may stop the facade.
    StopInListener,
    /// `getConnectionProperties`.
    Properties,
    /// `getMillisTime`.
    Clock
};

/// Every ability, in the order above.
std::vector<Ability> const& everyAbility();

/// The name of an ability on the command line: `connections`, `stop-in-listener`.
std::string const& nameOf(Ability ability);

/// A set of abilities. Threads: one at a time.
class Abilities {
public:
    /// None.
    Abilities() = default;
    Abilities(std::initializer_list<Ability> abilities);

    static Abilities all();

    /// Reads names with commas between them. `all` and `none` stand for sets, and a name behind `-`
    /// takes one away: `all,-edits`. Throws `std::invalid_argument` for a name that nobody knows,
    /// with the names that there are.
    static Abilities parse(std::string const& text);

    bool has(Ability ability) const;
    void add(Ability ability);
    void remove(Ability ability);

private:
    unsigned bits_ = 0;
};

} // namespace zan::conformance

#endif
