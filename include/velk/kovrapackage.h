#ifndef VELK_KOVRAPACKAGE_H
#define VELK_KOVRAPACKAGE_H

#include <velk/velk_export.h>

// Package entry called by a host when it loads the library: the build
// information as "key|value|key|value|..." (read-only, static storage).
extern "C" VELK_EXPORT const char* kovrapackage_velk(void);

#endif
