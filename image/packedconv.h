#ifndef VELK_IMAGE_PACKEDCONV_H
#define VELK_IMAGE_PACKEDCONV_H

#include <cstddef>

namespace velk {

// Bytes of scratch that packedConvolve needs for a line of n samples.
inline size_t packedScratchSize(int n) {
    return static_cast<size_t>(n) + 16;
}

// Whether the tables hold a kernel velk_fastconv can use (1 to 9 half-taps).
bool packedTablesUsable();

// velk_fastconv with the caller's scratch of packedScratchSize(n) bytes, so
// that convolving many lines allocates once.
void packedConvolve(const unsigned char* src, int n, int step, unsigned char* dst,
                    unsigned char* scratch);

}  // namespace velk

#endif
