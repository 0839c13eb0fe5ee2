#include <velk/kovrapackage.h>

#include <cstring>

#include "buildinfo.h"

namespace {

// The record sits directly behind the marker, so `strings` on the library finds both.
const char kBuildInfo[] = VELK_BUILDINFO_MARKER "\0" VELK_BUILDINFO_RECORD;

}  // namespace

const char* kovrapackage_velk(void) {
    return kBuildInfo + std::strlen(kBuildInfo) + 1;
}
