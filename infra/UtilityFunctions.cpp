#include "infra/UtilityFunctions.h"

UtilityFunctions::UtilityFunctions() = default;

UtilityFunctions::UtilityFunctions(UtilityFunctions const& other) = default;

UtilityFunctions& UtilityFunctions::operator=(UtilityFunctions const& other) = default;

UtilityFunctions::~UtilityFunctions() = default;
