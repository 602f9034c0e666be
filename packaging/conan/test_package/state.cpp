// Fails when the library cannot be linked or loaded.
#include "zanengine.h"

int main() {
    ZANFieldGroup order;
    order.setFieldValue(55, "IBM");
    return order.getField(55)->getValue().asString() == "IBM" && !ZANEngineProxy::isInitialized()
               ? 0
               : 1;
}
