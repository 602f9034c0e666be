#ifndef ZANENGINE_TESTS_SUPPORT_RECORDINGGML_H
#define ZANENGINE_TESTS_SUPPORT_RECORDINGGML_H

#include "conformance/CallText.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGMLAdapterFactory.h"

#include <functional>
#include <string>
#include <vector>

using zan::conformance::callText;

/// The transport's side of a guaranteed listener: writes down its calls as `callText` shows them.
class RecordingGMLAdapter : public ZANGMLAdapter {
public:
    using Stream = ZANGuaranteedEngineMessageListener::MessageTypeIds;

    std::vector<std::string> calls;
    /// What `getSubscriptionFilter` answers.
    std::string filter;

    void setLastConsumedMessage(std::string const& name, int id, Stream stream) override {
        calls.push_back(callText("setLastConsumedMessage", name, id, static_cast<int>(stream)));
    }
    void retrievePotentiallyLostMessages() override {
        calls.push_back(callText("retrievePotentiallyLostMessages"));
    }
    void setSubscriptionFilter(std::string const& given) override {
        calls.push_back(callText("setSubscriptionFilter", given));
    }
    std::string getSubscriptionFilter() override {
        calls.push_back(callText("getSubscriptionFilter"));
        return filter;
    }
    void resetSubscriptionFilter() override {
        calls.push_back(callText("resetSubscriptionFilter"));
    }
    int getLastConsumedMessage(std::string const&, Stream) override { return -1; }
    void resetConsumedMessages(std::string const&) override {}
    void flush() override {}
    std::string getSubscriberName() override { return {}; }
};

/// Hands out one adapter, its own, to every listener.
class RecordingGMLFactory : public ZANGMLAdapterFactory {
public:
    RecordingGMLAdapter adapter;
    /// The listeners that asked for an adapter, and the adapters that came back.
    std::vector<ZANGuaranteedEngineMessageListener*> listeners;
    std::vector<ZANGMLAdapter*> returned;
    /// Runs when an adapter comes back; it may throw.
    std::function<void()> onDelete;

    ZANGMLAdapter* newGMLAdapter(ZANGuaranteedEngineMessageListener* listener) override {
        listeners.push_back(listener);
        return &adapter;
    }
    void deleteGMLAdapter(ZANGMLAdapter* given) override {
        returned.push_back(given);
        if (onDelete) {
            onDelete();
        }
    }
};

#endif
