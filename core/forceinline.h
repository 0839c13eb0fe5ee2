#ifndef VELK_CORE_FORCEINLINE_H
#define VELK_CORE_FORCEINLINE_H

// For the few hot helpers whose inlining the speed of the LIC engine rests on:
// the compiler's size heuristics would otherwise keep some of them out of line.
#define VELK_ALWAYS_INLINE inline __attribute__((always_inline))

#endif
