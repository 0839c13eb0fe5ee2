#ifndef VELK_LIC_CELLLAYOUT_H
#define VELK_LIC_CELLLAYOUT_H

#include "lanes.h"

namespace velk {

// Where the accumulation keeps the cell of output pixel (px, py): tile by
// tile (square tiles of a power of two, those of the last column and row
// narrower), row by row within a tile, so that the cells a line visits share
// cache lines and pages however large the image. A tile at least as large as
// the image gives the plain row order. Written once for one pixel (I int, F
// float) and for four (Int4, Float4).
template <class F, class I>
struct CellLayout {
    I tileMask;  // tile size - 1
    I tileSize;
    I width, height;
    F widthF;    // width, for the four-pixel index formed exactly as floats
    bool tiled;  // false: the tile covers the image, the plain row order

    VELK_ALWAYS_INLINE I cellOf(I px, I py) const {
        if (!tiled) return rowIndex(px, py);
        const I x0 = px & ~tileMask;
        const I y0 = py & ~tileMask;
        const I tileHeight = select(height - y0 < tileSize, height - y0, tileSize);
        const I tileWidth = select(width - x0 < tileSize, width - x0, tileSize);
        return index(y0, x0, tileHeight, py & tileMask, tileWidth, px & tileMask);
    }

  private:
    VELK_ALWAYS_INLINE int rowIndex(int px, int py) const { return px + py * width; }
    VELK_ALWAYS_INLINE Int4 rowIndex(Int4 px, Int4 py) const {
        return toInt(toFloat(py) * widthF + toFloat(px));
    }
    // Rows of tiles above, tiles to the left, rows above within the tile.
    VELK_ALWAYS_INLINE int index(int y0, int x0, int th, int ly, int tw, int lx) const {
        return y0 * width + x0 * th + ly * tw + lx;
    }
    // Every term and partial sum is an integer below the pixel count, which
    // the four-record code keeps below 2^24: exact.
    VELK_ALWAYS_INLINE Int4 index(Int4 y0, Int4 x0, Int4 th, Int4 ly, Int4 tw, Int4 lx) const {
        return toInt(toFloat(y0) * widthF + toFloat(x0) * toFloat(th) + toFloat(ly) * toFloat(tw) +
                     toFloat(lx));
    }
};

// The largest tile shift: the plain row order for every image the engine takes.
const int kRowOrderShift = 30;

inline CellLayout<float, int> cellLayout(int shift, int width, int height) {
    const int size = 1 << shift;
    return {
        size - 1, size, width, height, static_cast<float>(width), size < width || size < height};
}

}  // namespace velk

#endif
