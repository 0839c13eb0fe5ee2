#include <velk/UxSobol.h>

#include <cstdint>
#include <cstdlib>

#include "resizeblock.h"

namespace {

// Smallest b with 2^b >= n, and 0 for n < 2.
int log2Ceil(int n) {
    int b = 0;
    while (b < 31 && (std::int64_t{1} << b) < n) b++;
    return b;
}

// One block of 2^b ints, b as in log2Ceil(n): every value the walk stores fits.
int* sizeTable(int* table, int n) {
    std::size_t bytes = sizeof(int) << log2Ceil(n);
    return static_cast<int*>(velk::resizeBlock(table, bytes));
}

// Walks the Gray-code ordered sequence of the b direction numbers in v and
// stores the values below n, which makes a permutation of 0 .. n-1 because the
// walk visits every value below 2^b exactly once.
void walk(const int* v, int b, int n, int* table) {
    int cap = b - 1;
    int x = 0;
    std::uint32_t i = 0;
    int stored = 0;
    while (stored < n) {
        int c = 0;
        for (std::uint32_t bits = i; (bits & 1u) && c < cap; bits >>= 1) c++;
        x ^= v[c];
        i++;
        if (x < n) table[stored++] = x;
    }
}

// Number of direction numbers for a table of n: at least 1 with 2^b >= n, and 0
// (all direction numbers zero) when n is 1 or less.
int directionBits(int n) {
    return n <= 1 ? 0 : log2Ceil(n);
}

}  // namespace

void UxSobol::init(int nx, int ny) {
    this->nx = nx;
    initX(nx);
    this->ny = ny;
    initY(ny);
    xIndex = 0;
    yIndex = 0;
    count = 0;
}

void UxSobol::initX(int n) {
    xTable = sizeTable(xTable, n);
    if (n < 1 || xTable == nullptr) return;
    int b = directionBits(n);
    int v[32] = {0};
    if (b >= 1) {
        // Primitive polynomial x + 1.
        v[0] = 1 << (b - 1);
        for (int k = 1; k < b; k++) v[k] = v[k - 1] ^ (v[k - 1] >> 1);
    }
    walk(v, b, n, xTable);
}

void UxSobol::initY(int n) {
    yTable = sizeTable(yTable, n);
    if (n < 1 || yTable == nullptr) return;
    int b = directionBits(n);
    int v[32] = {0};
    if (b >= 1) {
        // Primitive polynomial x^2 + x + 1.
        v[0] = 1 << (b - 1);
        if (b >= 2) v[1] = 1 << (b - 2);
        for (int k = 2; k < b; k++) v[k] = v[k - 2] ^ v[k - 1] ^ (v[k - 2] >> 2);
    }
    walk(v, b, n, yTable);
}
