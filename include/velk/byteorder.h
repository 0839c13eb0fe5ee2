#ifndef VELK_BYTEORDER_H
#define VELK_BYTEORDER_H

#include <velk/velk_export.h>

// Reverses the bytes of each of n consecutive 4-byte words at `data` in place
// (b0 b1 b2 b3 becomes b3 b2 b1 b0). Nothing happens for n <= 0.
VELK_EXPORT void swapByteOrder(int n, void* data);

#endif
