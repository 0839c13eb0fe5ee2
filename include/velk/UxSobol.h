#ifndef VELK_UXSOBOL_H
#define VELK_UXSOBOL_H

#include <velk/velk_export.h>

// Two permutation tables, of 0 .. nx-1 and of 0 .. ny-1, each in the order of a
// one-dimensional base-2 Sobol sequence (Gray-code order). The LIC driver pairs
// their entries to visit sub-pixels in a well-spread order.
//
// The tables are malloc/realloc blocks owned by whoever holds the object: there
// is no destructor, the holder frees both with free().
class VELK_EXPORT UxSobol {
  public:
    int xIndex = 0;  // next position in xTable
    int yIndex = 0;  // running position in yTable, used modulo ny
    int nx = 0;
    int ny = 0;
    int count = 0;  // draws taken so far
    int* xTable = nullptr;
    int* yTable = nullptr;

    // Builds both tables and resets the three counters.
    void init(int nx, int ny);
    // Sizes xTable (realloc) and fills it with a permutation of 0 .. n-1; nothing for n < 1.
    void initX(int n);
    // Sizes yTable (realloc) and fills it with a permutation of 0 .. n-1; nothing for n < 1.
    void initY(int n);
};

#endif
