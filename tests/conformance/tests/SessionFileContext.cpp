#include "conformance/tests/SessionFileContext.h"

#include "engine/ZANEngineProxy.h"
#include "infra/Url.h"

#include <filesystem>
#include <fstream>

using namespace zan::conformance;

SessionFileContext::SessionFileContext() : counterparty_({"FIX.4.4", "THEM", "US"}) {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "zan-conformance-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    std::ofstream(folder_ + "/sessions.cfg")
        << "[SESSION]\nConnectionName=C\nConnectionType=initiator\nBeginString=FIX.4.4\n"
           "SenderCompID=US\nTargetCompID=THEM\nStartTime=00:00:00\nEndTime=00:00:00\n"
           "HeartBtInt=30\nReconnectInterval=1\nLogonTimeout=2\nLogoutTimeout=1\n"
           "SocketConnectHost=127.0.0.1\nSocketConnectPort="
        << counterparty_.port() << "\n";
}

SessionFileContext::~SessionFileContext() {
    std::filesystem::remove_all(folder_);
}

Abilities SessionFileContext::abilities() const {
    return Abilities::all();
}

void SessionFileContext::start() {
    ZANEngineProxy::initialize(Url("embedded:" + folder_ + "/sessions.cfg"));
}
