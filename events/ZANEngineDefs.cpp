#include "events/ZANEngineDefs.h"

std::string const ZANEngineDefs::APP_EVENT_TYPE = "APP";
std::string const ZANEngineDefs::ADMIN_EVENT_TYPE = "ADMIN";
std::string const ZANEngineDefs::STATE_EVENT_TYPE = "STATE";
