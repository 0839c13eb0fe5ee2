#ifndef VELK_VELKCOLORMAP_H
#define VELK_VELKCOLORMAP_H

#include <velk/velk_export.h>

// 256 RGB entries (floats, [0, 1] by convention) looked up by a normalised
// value t in [0, 1], plus the data range callers normalise with:
// t = (v - min) * scale.
//
// Operations with a trailing `VelkColormap* dst` write into `dst` when it is
// non-null and into this colour map when it is null; `dst` may be this map.
class VELK_EXPORT VelkColormap {
  public:
    float colors[256][3];
    float min;
    float max;
    float scale;  // 1 / (max - min), kept in step by setMinMax

    // A grey ramp over the range 0 .. 1, usable as it is.
    VelkColormap();
    VelkColormap(const VelkColormap& other) = default;
    VelkColormap& operator=(const VelkColormap& other) = default;

    // No test for max == min (scale becomes infinite).
    void setMinMax(float min, float max);
    void getMinMax(float& min, float& max);

    // Presets replace the table and keep the range.
    void createGreyRamp();
    void createHotIron();
    void createBlueWhiteRed();
    void createHueRamp();  // red through the hues to magenta

    // Whole-table transformations; the range stays (and is copied to dst).
    void flip(VelkColormap* dst);
    void multiply(float factor, VelkColormap* dst);  // clamped above at 1 only
    void gamma(float g, VelkColormap* dst);

    // Entry 0 for t <= 0 or NaN, entry 255 for t >= 1, linear in between.
    void getColor1(float t, float* rgb) const;

    // icol text files. 1 on success; 0 after a message on the standard error
    // stream. readIcol takes the three-column (256 lines of r g b) and the
    // four-group (written by writeIcol) variants; a failed read may leave the
    // table partly replaced.
    int writeIcol(const char* path);
    int readIcol(const char* path);
};

#endif
