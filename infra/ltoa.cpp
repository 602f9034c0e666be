#include "infra/ltoa.h"

#include <cstdio>

char* ltoa(long number, Ltoabuf& buffer) {
    std::snprintf(buffer, sizeof(buffer), "%ld", number);
    return buffer;
}
