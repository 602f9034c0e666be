#include "adapter/IZANEngine.h"

IZANEngine::~IZANEngine() = default;
