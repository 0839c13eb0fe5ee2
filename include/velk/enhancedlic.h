#ifndef VELK_ENHANCEDLIC_H
#define VELK_ENHANCEDLIC_H

#include <velk/velk_export.h>

class VelkCompute;
class VelkImage;
class VelkVectorField;

// Repeated LIC: `iterations` passes of engine.compute(), each after the first
// over the result of the one before, which lengthens and smooths the streaks.
// With `enhance`, the texture of every later pass is first high-pass filtered
// (each channel minus its Gaussian blur, gaussBlur(5), re-centred at 128) and
// equalised, so the next pass convolves sharp-edged streaks of full range
// and keeps them apart: LIC, high-pass, LIC is iterations = 2 with enhance.
// One iteration is engine.compute() exactly, with or without enhance. Returns
// 1, or 0 when iterations is below 1 (nothing done), when a pass fails, or
// when enhance meets an image of other than 1 or 3 channels.
VELK_EXPORT int velk_enhancedLic(VelkCompute& engine, VelkVectorField* field, VelkImage* texture,
                                 VelkImage* output, int iterations, bool enhance);

#endif
