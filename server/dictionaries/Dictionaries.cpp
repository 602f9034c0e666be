#include "server/dictionaries/Dictionaries.h"

namespace zan::server {

extern char const fix42[];
extern unsigned long const fix42Size;
extern char const fix44[];
extern unsigned long const fix44Size;
extern char const fixt11[];
extern unsigned long const fixt11Size;
extern char const values[];
extern unsigned long const valuesSize;

std::string_view dictionaryFor(std::string_view beginString) {
    bool const isOld =
        beginString == "FIX.4.0" || beginString == "FIX.4.1" || beginString == "FIX.4.2";
    return isOld ? std::string_view(fix42, fix42Size) : std::string_view(fix44, fix44Size);
}

std::string_view transportDictionary() {
    return {fixt11, fixt11Size};
}

std::string_view valueNames() {
    return {values, valuesSize};
}

} // namespace zan::server
