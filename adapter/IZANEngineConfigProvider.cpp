#include "adapter/IZANEngineConfigProvider.h"

IZANEngineConfigProvider::~IZANEngineConfigProvider() = default;
