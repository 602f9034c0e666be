// Builds a message with a repeating group, changes it, and walks over it. No engine is needed.
#include "comfort/comfort.h"

#include <iostream>

namespace tag = zan::tag;

namespace {

// Fields come by ascending tag, and the instances of a group as they were added.
void print(ZANFieldGroup const& group, std::string const& indent) {
    for (ZANField const& field : group) {
        std::cout << indent << field.getTag() << " = " << field.getValue() << '\n';
    }
    for (ZANFieldGroup const& instance : group.instances(tag::NoPartyIDs)) {
        std::cout << indent << "group " << instance.getGroupTag() << '\n';
        print(instance, indent + "    ");
    }
}

zan::GroupBuilder party(char const* id, zan::PartyRole role) {
    zan::GroupBuilder instance(tag::NoPartyIDs);
    instance.set(tag::PartyID, id)
        .set(tag::PartyIDSource, zan::PartyIDSource::Proprietary)
        .set(tag::PartyRole, role);
    return instance;
}

} // namespace

int main() {
    zan::MessageBuilder order(zan::MsgType::NewOrderSingle);
    order.set(tag::ClOrdID, "order-2")
        .set(tag::Symbol, "IBM")
        .set(tag::Side, zan::Side::Buy)
        .set(tag::OrderQty, 100)
        .set(tag::Price, 95.5)
        .add(party("DESK-7", zan::PartyRole::CustomerAccount))
        .add(party("BANK", zan::PartyRole::ExecutingFirm));
    print(order.fields(), "");

    // A copy is deep: the original does not see what happens to it.
    ZANFieldGroup larger(order.fields());
    larger.setFieldValue(tag::OrderQty, 200);
    larger.removeField(tag::Price);
    std::cout << "quantity " << order.fields().getLong(tag::OrderQty, 0) << " here, "
              << larger.getLong(tag::OrderQty, 0) << " in the copy\n";
    std::cout << "price in the copy: " << (larger.has(tag::Price) ? "yes" : "no") << '\n';

    // Values keep their types, and tell when they cannot be read as another one.
    try {
        static_cast<void>(larger.getField(tag::Symbol)->getValue().asLong());
    } catch (InfraException const& e) {
        std::cout << e.what() << '\n';
    }
}
