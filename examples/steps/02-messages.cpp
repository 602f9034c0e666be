// Builds a message with a repeating group, changes it, and walks over it. No engine is needed.
#include "zanengine.h"

#include <iostream>
#include <utility>

namespace {

// Iterators give fields by ascending tag, and the instances of groups as they were added.
void print(ZANFieldGroup const& group, std::string const& indent) {
    for (auto each = group.fieldIterator(); each->hasNext(); each->next()) {
        ZANField const& field = *std::as_const(*each).current();
        std::cout << indent << field.getTag() << " = " << field.getValue() << '\n';
    }
    for (auto each = group.groupIterator(); each->hasNext(); each->next()) {
        ZANFieldGroup const& instance = *std::as_const(*each).current();
        std::cout << indent << "group " << instance.getGroupTag() << '\n';
        print(instance, indent + "    ");
    }
}

counted_ptr<ZANFieldGroup> party(char const* id, int role) {
    counted_ptr<ZANFieldGroup> group(new ZANFieldGroup(453)); // NoPartyIDs
    group->setFieldValue(448, id);
    group->setFieldValue(447, 'D');
    group->setFieldValue(452, static_cast<long>(role));
    return group;
}

} // namespace

int main() {
    ZANFieldGroup order(ZAN::MSGTYPE_NEW_ORDER_SINGLE); // sets tag 35
    order.setFieldValue(11, "order-2");
    order.setFieldValue(55, "IBM");
    order.setFieldValue(54, '1');
    order.setFieldValue(38, 100L);
    order.setFieldValue(44, 95.5);
    order.addGroup(party("DESK-7", 24));
    order.addGroup(party("BANK", 1));
    print(order, "");

    // A copy is deep: the original does not see what happens to it.
    ZANFieldGroup larger(order);
    larger.setFieldValue(38, 200L);
    larger.removeField(44);
    std::cout << "quantity " << order.getField(38)->getValue().asLong() << " here, "
              << larger.getField(38)->getValue().asLong() << " in the copy\n";
    std::cout << "price in the copy: " << (larger.getField(44) ? "yes" : "no") << '\n';

    // Values keep their types, and tell when they cannot be read as another one.
    try {
        static_cast<void>(order.getField(55)->getValue().asLong());
    } catch (InfraException const& e) {
        std::cout << e.what() << '\n';
    }
}
