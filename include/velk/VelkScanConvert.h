#ifndef VELK_VELKSCANCONVERT_H
#define VELK_VELKSCANCONVERT_H

#include <velk/velk_export.h>

// Rasterises a convex polygon onto a pixel grid and hands every covered pixel,
// with its linearly interpolated values, to a pixel function. A pixel is
// covered when its centre (x + 0.5, y + 0.5) lies inside the polygon or on its
// boundary; a horizontal top edge lying exactly on a row of centres yields
// only the top corner's pixel in that row. Values are sampled at pixel
// centres; y grows downwards. Owns nothing and allocates nothing.
class VELK_EXPORT VelkScanConvert {
  public:
    struct Vertex {
        float x;
        float y;
        float values[6];  // only the first nValues are read or written
    };

    // `values` points at the converter's running span values and is valid
    // during the call only; writing through it changes the following pixels.
    typedef void (*PixelCallback)(int x, int y, float* values, void* userData);

    int nValues;  // interpolated entries per vertex, at most 6
    int width;    // canvas, 100 x 100 unless set
    int height;
    void* userData;
    PixelCallback callback;

    explicit VelkScanConvert(int nValues);
    ~VelkScanConvert();

    void setCanvas(int width, int height);
    // A null callback walks the pixels without reporting any.
    void setPixelCallback(PixelCallback callback, void* userData);
    // Corners in order around the boundary, either orientation. Rows outside
    // [0, height) and columns below 0 are clipped; column `width` itself can be
    // reported, so pixel functions must ignore columns outside their own grid.
    void scanConvert(int n, const Vertex* vertices);

  private:
    void increment_y(const Vertex& p1, const Vertex& p2, Vertex& p, Vertex& dp, int y);
    void increment_x(const Vertex& p1, const Vertex& p2, Vertex& p, Vertex& dp, int x);
    void scanline(int y, Vertex& l, Vertex& r);
    int valueCount() const;
};

#endif
