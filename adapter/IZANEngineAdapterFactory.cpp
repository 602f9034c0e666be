#include "adapter/IZANEngineAdapterFactory.h"

IZANEngineAdapterFactory::~IZANEngineAdapterFactory() = default;
