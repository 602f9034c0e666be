/// `zan::FieldReader`: reads the fields of a message, or of an instance of a repeating group, by
/// the names of their tags. What a counterparty leaves out gives no null pointer.
///
///     zan::FieldReader const report(event);
///     if (report.get(zan::tag::OrdStatus) == zan::OrdStatus::Filled) ...
///     double const open = report.get(zan::tag::LeavesQty, 100);
///
/// Threads: it shares the fields, and belongs to their thread.
#ifndef ZANENGINE_COMFORT_FIELDREADER_H
#define ZANENGINE_COMFORT_FIELDREADER_H

#include "comfort/FieldType.h"
#include "comfort/Tag.h"
#include "events/ZANEvent.h"
#include "infra/InfraException.h"
#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"
#include "message/ZANMessage.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace zan {

/// Shares the fields, so it may outlive the message and the event. Without a message, or without
/// fields in it, every field is absent.
class FieldReader {
public:
    explicit FieldReader(counted_ptr<ZANFieldGroup> fields) : fields_(std::move(fields)) {}
    explicit FieldReader(ZANMessage const& message) : fields_(message.getFieldGroup()) {}
    explicit FieldReader(counted_ptr<ZANMessage> const& message)
        : fields_(message ? message->getFieldGroup() : nullptr) {}
    explicit FieldReader(ZANEvent const& event) : FieldReader(event.getMessage()) {}

    bool has(int tag) const { return fields_ && fields_->has(tag); }

    /// The value as text, whatever stands there; empty when the field is absent.
    std::string text(int tag) const { return fields_ ? fields_->getString(tag) : std::string(); }

    /// The value; empty when the field is absent, or when its text does not stand for a `T`.
    template <class T>
    std::optional<T> get(Tag<T> tag) const {
        if (auto const field = find(tag)) {
            try {
                return FieldType<T>::read(field->getValue());
            } catch (InfraException const&) {
                return std::nullopt;
            }
        }
        return std::nullopt;
    }

    /// The value, or `otherwise` when the field is absent. A text that does not stand for a `T` is
    /// an `InfraException` with the tag, never `otherwise`.
    template <class T>
    T get(Tag<T> tag, std::common_type_t<T> const& otherwise) const {
        return has(tag) ? at(tag) : otherwise;
    }

    /// The value, for an application that cannot do without. `InfraException`, with the tag in its
    /// text, where `get(tag)` is empty.
    template <class T>
    T at(Tag<T> tag) const {
        auto const field = find(tag);
        if (!field) {
            throw InfraException("there is no field with tag " + std::to_string(tag.number));
        }
        try {
            return FieldType<T>::read(field->getValue());
        } catch (InfraException const& e) {
            throw InfraException("tag " + std::to_string(tag.number) + ": " + e.what());
        }
    }

    /// The instances of a repeating group in their order; none when it is absent.
    std::vector<FieldReader> group(GroupTag tag) const {
        std::vector<FieldReader> instances;
        int const count = fields_ ? fields_->getGroupCount(tag) : 0;
        instances.reserve(static_cast<std::size_t>(count));
        for (int index = 0; index < count; ++index) {
            instances.emplace_back(fields_->getGroup(tag, index));
        }
        return instances;
    }

    /// Tag 35; empty when it is absent.
    std::string type() const { return text(35); }
    bool is(std::string_view msgType) const { return type() == msgType; }

    /// The engine's number of the message within its connection; 0 when it has none.
    int messageId() const { return static_cast<int>(get(Tag<long>{16580}).value_or(0)); }

    /// The fields themselves; empty when there are none.
    counted_ptr<ZANFieldGroup> const& fields() const { return fields_; }

private:
    counted_ptr<ZANField> find(int tag) const {
        return fields_ ? fields_->getField(tag) : counted_ptr<ZANField>();
    }

    counted_ptr<ZANFieldGroup> fields_;
};

} // namespace zan

#endif
