/// An adapter to an engine that sends every message straight back. It shows what each adapter
/// needs: connections, a thread of its own that delivers events, typed failures, and a clean stop.
#ifndef ECHO_ADAPTER_ECHOADAPTER_H
#define ECHO_ADAPTER_ECHOADAPTER_H

#include "Delivery.h"
#include "UnsupportedOperations.h"
#include "guaranteed/ZANGMLAdapterFactory.h"

#include <map>

/// Threads: the facade calls one operation at a time, because `isThreadSafe` answers false; so the
/// connections need no lock. Events leave on the thread of `Delivery`.
class EchoAdapter : public UnsupportedOperations {
public:
    /// Reads the property `connections`: names separated by commas, by default `ECHO`.
    explicit EchoAdapter(counted_ptr<IZANEngineConfigProvider> provider);

    void initialize() override;
    void uninitialize() override;
    bool isThreadSafe() override;
    ZANGMLAdapterFactory& getGMLAdapterFactory() override;

    void connect(UserTicket const& ticket, Name const& name,
                 counted_ptr<ZANFieldGroup> logonFields) override;
    void connect(UserTicket const& ticket, Name const& name) override;
    void disconnect(UserTicket const& ticket, Name const& name, Text const& reason) override;
    bool isConnected(UserTicket const& ticket, Name const& name) override;
    void getConnectionNameList(UserTicket const& ticket, std::vector<std::string>& names) override;
    counted_ptr<ZANConnectionState> getConnectionState(UserTicket const& ticket,
                                                       Name const& name) const override;
    long sendMessage(UserTicket const& ticket, Name const& name,
                     counted_ptr<ZANMessage> message) override;
    long sendMessage(UserTicket const& ticket, Name const& name, Text const& message) override;
    std::int64_t getMillisTime(UserTicket const& ticket) override;

private:
    struct Connection {
        ZANConnectionState state;
        long lastMessageId = 0;
    };

    Connection& find(Name const& name);
    Connection const& find(Name const& name) const;
    long echo(Name const& name, counted_ptr<ZANFieldGroup> body);

    std::map<Name, Connection> connections_;
    ZANGMLAdapterFactory guaranteedListeners_;
    Delivery delivery_;
};

#endif
