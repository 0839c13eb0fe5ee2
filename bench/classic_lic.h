#ifndef VELK_BENCH_CLASSIC_LIC_H
#define VELK_BENCH_CLASSIC_LIC_H

class VelkImage;
class VelkVectorField;

// The textbook line integral convolution, the yardstick of the engine: for
// every output pixel its own streamline of 2L + 1 points through the pixel
// centre, traced with the midpoint rule at the engine's step, sampled with the
// engine's bilinear lookup and averaged with the box kernel. `output` gets the
// size of the one-channel `texture`.
void classicLic(const VelkVectorField& field, const VelkImage& texture, int L, float stepSize,
                VelkImage& output);

#endif
