#include "guaranteed/ZANGMLAdapter.h"

ZANGMLAdapter::~ZANGMLAdapter() = default;
