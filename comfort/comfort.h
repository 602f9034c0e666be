/// All that an application includes: every public header of the library, and the comfort on top of
/// them: names for tags and values, builders and readers, listeners out of functions.
#ifndef ZANENGINE_COMFORT_COMFORT_H
#define ZANENGINE_COMFORT_COMFORT_H

#include "comfort/Decimal.h"
#include "comfort/EngineScope.h"
#include "comfort/FieldReader.h"
#include "comfort/FieldType.h"
#include "comfort/MessageBuilder.h"
#include "comfort/Orders.h"
#include "comfort/Signal.h"
#include "comfort/Subscription.h"
#include "comfort/Tag.h"
#include "comfort/Tags.h"
#include "comfort/Values.h"
#include "comfort/listen.h"
#include "comfort/listenGuaranteed.h"
#include "comfort/make_counted.h"

#include "zanengine.h"

#endif
