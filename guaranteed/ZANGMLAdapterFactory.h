/// `ZANGMLAdapterFactory`: gives guaranteed listeners their adapters and takes them back.
/// Transports derive from it and override both operations; the defaults serve a transport without
/// guaranteed delivery.
///
/// Threads: called on whatever thread builds or ends a listener, without any lock of the library.
///
/// The order of the virtual operations is part of the contract.
#ifndef ZANENGINE_GUARANTEED_ZANGMLADAPTERFACTORY_H
#define ZANENGINE_GUARANTEED_ZANGMLADAPTERFACTORY_H

#include "infra/Export.h"

#include <cstddef>

class ZANGMLAdapter;
class ZANGuaranteedEngineMessageListener;

class ZAN_API ZANGMLAdapterFactory {
public:
    ZANGMLAdapterFactory() = default;
    ZANGMLAdapterFactory(ZANGMLAdapterFactory const&) = default;
    ZANGMLAdapterFactory& operator=(ZANGMLAdapterFactory const&) = default;
    virtual ~ZANGMLAdapterFactory();

    /// A new adapter for a listener, owned by the factory until it comes back. `listener` is still
    /// under construction: its address may be kept, its operations must not be called yet. The
    /// default says on standard output that it was called and returns null.
    virtual ZANGMLAdapter* newGMLAdapter(ZANGuaranteedEngineMessageListener* listener);

    /// Takes an adapter back; its listener is about to end. Copies of a listener share an adapter,
    /// so the same one may come back several times, also to the factory of a later transport, while
    /// other copies go on with it: it must live until `listenersOf` tells none. A listener that was
    /// assigned another one does not give back what it had before. Null comes back when null was
    /// given. The default says on standard output that it was called and deletes nothing.
    virtual void deleteGMLAdapter(ZANGMLAdapter* adapter);

    /// How many listeners have this adapter: the one that it was made for and its copies. One that
    /// is about to end counts until `deleteGMLAdapter` has returned; one under construction does
    /// not count yet.
    static std::size_t listenersOf(ZANGMLAdapter const* adapter) noexcept;
};

#endif
