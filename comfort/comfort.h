/// All of the comfort: names for tags and values, builders and readers, listeners out of functions.
/// Nothing of it is in the library; all of it stands on the library's public headers.
#ifndef ZANENGINE_COMFORT_COMFORT_H
#define ZANENGINE_COMFORT_COMFORT_H

#include "comfort/Decimal.h"
#include "comfort/EngineScope.h"
#include "comfort/FieldReader.h"
#include "comfort/FieldType.h"
#include "comfort/MessageBuilder.h"
#include "comfort/Orders.h"
#include "comfort/Signal.h"
#include "comfort/Tag.h"
#include "comfort/Tags.h"
#include "comfort/Values.h"
#include "comfort/listen.h"
#include "comfort/make_counted.h"

#endif
