#ifndef VELK_LIC_NODATA_H
#define VELK_LIC_NODATA_H

class VelkImage;

// The finished picture's pixels that no line reached, told by the engine's
// weight image (of the LIC's size; the picture may have been zoomed since):
// every channel of them becomes `fill`.
void fillNoData(const VelkImage& weight, int fill, VelkImage& picture);

// An alpha channel of width x height: 0 where no line reached, 255 elsewhere.
void noDataAlpha(const VelkImage& weight, int width, int height, VelkImage& alpha);

#endif
