#include "infra/IMutex.h"

IMutex::IMutex() = default;

IMutex::~IMutex() = default;
