#include "adapter/IZANEventListener.h"

IZANEventListener::~IZANEventListener() = default;

void IZANEventListener::processStateEvent(counted_ptr<ZANConnectionStateEvent>) {}
