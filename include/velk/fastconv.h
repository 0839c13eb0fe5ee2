#ifndef VELK_FASTCONV_H
#define VELK_FASTCONV_H

#include <velk/velk_export.h>

// Packed-table convolution of byte lines with a symmetric kernel of n half-taps
// (kernel[0] is the centre, kernel[i] the weight at distance i on both sides),
// n from 1 to 9. The tables are process-wide: a velk_initPackedLuts call and
// the velk_fastconv calls that use it must not overlap with another convolution.

// Fills the tables. Warns on the standard error stream when the taps do not
// sum to 1; ends the process with status 1 when three consecutive taps (the
// centre one halved) have absolute values summing to more than 1.
VELK_EXPORT void velk_initPackedLuts(float* kernel, int n);

// Convolves the n samples at src, src + step, ... into dst, dst + step, ...
// with the kernel last given to velk_initPackedLuts; lines are extended by
// replicating their end samples. Writes nothing when that kernel had more
// than 9 half-taps (or none). Lines of any length are accepted.
VELK_EXPORT void velk_fastconv(unsigned char* src, int n, int step, unsigned char* dst);

#endif
