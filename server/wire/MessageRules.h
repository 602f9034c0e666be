/// Refuses messages that break a data dictionary, or what every message has to keep to.
///
/// Threads: it does not change, and may be used from several threads.
#ifndef ZANENGINE_SERVER_WIRE_MESSAGERULES_H
#define ZANENGINE_SERVER_WIRE_MESSAGERULES_H

#include "server/sessions/MessageFault.h"
#include "server/wire/CompiledDictionary.h"

#include <string>
#include <string_view>

namespace zan::server {

/// The keys of a session file that say what is looked at.
struct ValidationSettings {
    bool useDictionary = false;      ///< UseDataDictionary
    bool fieldsOutOfOrder = false;   ///< ValidateFieldsOutOfOrder
    bool userDefinedFields = true;   ///< ValidateUserDefinedFields
    bool allowUnknownFields = false; ///< AllowUnknownMsgFields
    /// DefaultApplVerID; messages that tell another one are not checked. Empty without FIXT.1.1.
    std::string applicationVersion;
    std::string version = "FIX.4.4"; ///< whose message types the standard knows
};

class MessageRules final : public MessageCheck {
public:
    /// The dictionary outlives this.
    MessageRules(CompiledDictionary const& dictionary, ValidationSettings settings);

    /// The first fault in this order: a type that is not taken, a field out of its place, one that
    /// is missing, and then from field to field.
    MessageFault check(std::string const& message) const override;

private:
    CompiledDictionary const& dictionary_;
    ValidationSettings const settings_;
};

/// Whether the standard defines the type for a version, or leaves it to users (`U...`).
bool isTypeOfStandard(std::string_view type, std::string_view version);

} // namespace zan::server

#endif
