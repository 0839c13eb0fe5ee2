#ifndef VELK_FUZZ_FIELDCHECK_H
#define VELK_FUZZ_FIELDCHECK_H

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "FuzzSupport.h"

// The checks the vector and scalar field targets share; Field is
// VelkVectorField (2 floats a node) or VelkScalarField (1).

namespace velkfuzz {

// The value an ASCII field file brings back: the float printed with "%g"
// and read again.
inline float throughText(float v) {
    char text[64];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(v));
    return std::strtof(text, nullptr);
}

inline bool sameFloat(float a, float b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    std::uint32_t x, y;
    std::memcpy(&x, &a, 4);
    std::memcpy(&y, &b, 4);
    return x == y;
}

inline float byteSwapped(float v) {
    std::uint32_t x;
    std::memcpy(&x, &v, 4);
    x = (x >> 24) | ((x >> 8) & 0xff00u) | ((x << 8) & 0xff0000u) | (x << 24);
    std::memcpy(&v, &x, 4);
    return v;
}

inline float unchanged(float v) {
    return v;
}

// Field::read on the input. A loaded field must come back from the library's
// own writer: up to "%g" precision from an ASCII file, and each value as
// `binaryBack` makes it from a binary one.
template <typename Field>
void checkRead(const std::uint8_t* data, std::size_t size, int floatsPerNode,
               float (*binaryBack)(float)) {
    constexpr long long kRoundTripNodes = 1 << 16;
    const char* path = writeScratch(0, data, size);
    Field field;
    Quiet quiet;
    int ok = field.read(path);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));
    if (!ok) {
        // Rejected before any store, or left with the size the header gave.
        FUZZ_CHECK((field.width == 0 && field.height == 0) ||
                   (field.width >= 2 && field.height >= 2 && field.data != nullptr));
        return;
    }
    FUZZ_CHECK(field.width >= 2 && field.width <= 10000);
    FUZZ_CHECK(field.height >= 2 && field.height <= 10000);
    FUZZ_CHECK(field.data != nullptr);
    long long n = static_cast<long long>(field.width) * field.height;
    if (n > kRoundTripNodes) return;

    int ascii = size % 2;
    const char* copyPath = scratchPath(1);
    Field back;
    Quiet again;
    FUZZ_CHECK(field.write(copyPath, ascii) == 1);
    FUZZ_CHECK(back.read(copyPath) == 1);
    again.finish();
    FUZZ_CHECK(back.width == field.width && back.height == field.height);
    for (long long i = 0; i < floatsPerNode * n; i++) {
        float v = field.data[i];
        FUZZ_CHECK(sameFloat(back.data[i], ascii ? throughText(v) : binaryBack(v)));
    }
}

// Field::readUCD of the mesh at `path` onto an nx x ny grid (and through the
// box, when one is given) into a 3 x 2 field of known values: a successful
// read gives the grid asked for, a failed one leaves the field as it was.
template <typename Field, typename... Box>
void checkReadUCD(const char* path, int nx, int ny, int floatsPerNode, Box... box) {
    const int known = 6 * floatsPerNode;
    Field field;
    field.setSize(3, 2);
    for (int i = 0; i < known; i++) field.data[i] = static_cast<float>(i) - 5.5f;
    Quiet quiet;
    int ok = field.readUCD(path, nx, ny, box...);
    quiet.finish();
    FUZZ_CHECK(ok == 0 || ok == 1);
    FUZZ_CHECK((ok == 0) == (quiet.errors() > 0));
    if (ok) {
        FUZZ_CHECK(field.width == nx && field.height == ny && field.data != nullptr);
        return;
    }
    if (field.width == 0 && field.height == 0) return;  // its memory could not be had
    FUZZ_CHECK(field.width == 3 && field.height == 2);
    for (int i = 0; i < known; i++) FUZZ_CHECK(field.data[i] == static_cast<float>(i) - 5.5f);
}

}  // namespace velkfuzz

#endif
