#include "server/wire/MessageRules.h"

#include "server/wire/FieldText.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace zan::server {

namespace {

constexpr int firstUserTag = 5000;
constexpr int applicationVersionTag = 1128;

MessageFault fault(RejectReason reason, int tag) {
    return {reason, tag};
}

bool isAdmin(std::string_view type) {
    return type.size() == 1 && std::string_view("012345A").find(type) != std::string_view::npos;
}

// The tags of one list of fields: the top of a message or an instance of a group.
using Seen = std::unordered_set<int>;

// Goes over one message from field to field.
class RuleWalk {
public:
    RuleWalk(std::string_view message, CompiledDictionary const& dictionary,
             ValidationSettings const& settings)
        : cursor_(message, fieldSeparator, Reading::Tolerant), dictionary_(dictionary),
          settings_(settings) {}

    MessageFault walk(TypeGroups const& type) {
        type_ = &type;
        for (advance(); hasField_ && !fault_;) {
            int const tag = cursor_.tag();
            PlacedTag const* const count = type.counts.find(tag);
            note(seen_, tag);
            checkField();
            checkPlace(tag);
            if (count && !fault_) {
                takeGroup(*count);
            } else {
                advance();
            }
        }
        requireAll();
        return outOfOrder_ ? outOfOrder_ : missing_ ? missing_ : fault_;
    }

    /// Only the order of header, body and trailer.
    MessageFault walkOrder() {
        for (advance(); hasField_; advance()) {
            checkOrder(cursor_.tag());
        }
        return outOfOrder_;
    }

private:
    void advance() { hasField_ = cursor_.next(); }

    void refuse(RejectReason reason, int tag) { fault_ = fault_ ? fault_ : fault(reason, tag); }

    void note(Seen& seen, int tag) {
        if (!seen.insert(tag).second) {
            refuse(RejectReason::repeatedTag, tag);
        }
    }

    // Whether the dictionary has to know the tag where it stands.
    bool isLookedAt(int tag) const {
        return tag < firstUserTag ? !settings_.allowUnknownFields : settings_.userDefinedFields;
    }

    void checkField() {
        int const tag = cursor_.tag();
        std::string_view const value = cursor_.value();
        CompiledField const* const field = dictionary_.field(tag);
        if (!field) {
            if (isLookedAt(tag)) {
                refuse(RejectReason::invalidTag, tag);
            }
        } else if (!value.empty() && !hasFormat(field->type, value)) {
            refuse(RejectReason::wrongFormat, tag);
        } else if (!value.empty() && !isAllowed(*field, value)) {
            refuse(RejectReason::wrongValue, tag);
        }
    }

    bool isAllowed(CompiledField const& field, std::string_view value) const {
        // The type has been looked at, and everybody knows the versions.
        if (field.firstValue == field.endOfValues || field.tag == messageTypeTag) {
            return true;
        }
        if (field.type != FieldType::Values) {
            return dictionary_.allows(field, value);
        }
        while (!value.empty()) {
            std::size_t const end = std::min(value.find(' '), value.size());
            if (!dictionary_.allows(field, value.substr(0, end))) {
                return false;
            }
            value.remove_prefix(std::min(end + 1, value.size()));
        }
        return true;
    }

    void checkPlace(int tag) {
        if (settings_.fieldsOutOfOrder) {
            checkOrder(tag);
        }
        bool const isOfType = dictionary_.placeOf(tag) != TagPlace::body || type_->fields.find(tag);
        if (!isOfType && isLookedAt(tag)) {
            refuse(RejectReason::tagNotOfType, tag);
        }
    }

    // Header, body, trailer: none begins again.
    void checkOrder(int tag) {
        TagPlace const place = dictionary_.placeOf(tag);
        auto const rank = [](TagPlace which) {
            return which == TagPlace::header ? 0 : which == TagPlace::body ? 1 : 2;
        };
        if (rank(place) < rank_ && !outOfOrder_) {
            outOfOrder_ = fault(RejectReason::outOfOrder, tag);
        }
        rank_ = std::max(rank_, rank(place));
    }

    // The count is the field at hand; afterwards the field behind the group is.
    void takeGroup(PlacedTag const& count) {
        CompiledGroup const& group = dictionary_.group(count);
        std::string_view const digits = cursor_.value();
        std::size_t told = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), told);
        std::size_t instances = 0;
        advance();
        for (; hasField_ && !fault_ && cursor_.tag() == group.delimiter; ++instances) {
            takeInstance(group);
        }
        if (!fault_ && instances != told) {
            refuse(RejectReason::wrongGroupCount, group.countTag);
        }
    }

    void takeInstance(CompiledGroup const& group) {
        Seen seen;
        PlacedTag const* member = group.members.find(cursor_.tag());
        do {
            note(seen, cursor_.tag());
            checkField();
            if (member->group != PlacedTag::noGroup) {
                takeGroup(*member);
            } else {
                advance();
            }
            member = hasField_ && cursor_.tag() != group.delimiter
                         ? group.members.find(cursor_.tag())
                         : nullptr;
        } while (member && !fault_);
        require(group.required, seen);
    }

    void require(std::vector<int> const& tags, Seen const& seen) {
        for (int const tag : tags) {
            if (!seen.contains(tag) && !missing_) {
                missing_ = fault(RejectReason::requiredTagMissing, tag);
            }
        }
    }

    // The walk ends with the first fault: what is behind it may be there all the same.
    void requireAll() {
        for (; hasField_; advance()) {
            seen_.insert(cursor_.tag());
        }
        require(dictionary_.header().required, seen_);
        require(dictionary_.requiredInTrailer(), seen_);
        require(type_->required, seen_);
    }

    FieldCursor cursor_;
    CompiledDictionary const& dictionary_;
    ValidationSettings const& settings_;
    TypeGroups const* type_ = nullptr;
    bool hasField_ = false;
    int rank_ = 0;
    Seen seen_;
    MessageFault fault_;
    MessageFault missing_;
    MessageFault outOfOrder_;
};

} // namespace

MessageRules::MessageRules(CompiledDictionary const& dictionary, ValidationSettings settings)
    : dictionary_(dictionary), settings_(std::move(settings)) {}

MessageFault MessageRules::check(std::string const& message) const {
    RuleWalk walk(message, dictionary_, settings_);
    if (!settings_.useDictionary) {
        return settings_.fieldsOutOfOrder ? walk.walkOrder() : MessageFault();
    }
    std::string_view const version = valueOf(message, applicationVersionTag);
    if (!version.empty() && version != settings_.applicationVersion) {
        return {};
    }
    std::string_view const type = valueOf(message, messageTypeTag);
    if (TypeGroups const* const known = dictionary_.find(type)) {
        return walk.walk(*known);
    }
    if (isAdmin(type)) {
        return {}; // a dictionary of application messages alone
    }
    return isTypeOfStandard(type, settings_.version)
               ? MessageFault{RejectReason::unsupportedType, FixScanner::noNumber}
               : MessageFault{RejectReason::invalidType, FixScanner::noNumber};
}

} // namespace zan::server
