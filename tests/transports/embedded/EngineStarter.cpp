// Starts the engine of the URL that is given, and prints why it does not start.
#include "engine/ZANEngineProxy.h"
#include "infra/InfraException.h"
#include "infra/Url.h"

#include <iostream>

int main(int argc, char** argv) {
    try {
        ZANEngineProxy::initialize(Url(argc > 1 ? argv[1] : ""));
        ZANEngineProxy::uninitialize();
        std::cout << "started" << std::endl;
    } catch (InfraException const& e) {
        std::cout << e.getMessage() << std::endl;
    }
}
