#ifndef VELK_VELKIMAGE_H
#define VELK_VELKIMAGE_H

#include <velk/velk_export.h>

class VelkVectorField;

// An 8-bit raster with 1 (grey) or 3 (RGB) interleaved channels; row 0 is the
// bottom row of the picture. An image either owns its pixels (malloc/free) or
// borrows a caller's buffer, which it never frees.
//
// Operations with a trailing `VelkImage* dst` write into `dst` when it is
// non-null and into this image when it is null.
class VELK_EXPORT VelkImage {
  public:
    unsigned char* ownedData;  // null when empty or borrowing
    unsigned char* data;       // first byte of row 0
    int width;
    int height;
    int nChannels;
    int bytesPerLine;  // distance between row starts; width * nChannels when owning

    VelkImage();
    VelkImage(int width, int height);
    VelkImage(int width, int height, int nChannels);
    // Borrows `data` (grey) when non-null; otherwise owns a fresh buffer.
    VelkImage(int width, int height, int bytesPerLine, unsigned char* data);
    // Borrows `data` when non-null; otherwise owns a fresh buffer.
    VelkImage(int width, int height, int nChannels, int bytesPerLine, unsigned char* data);
    // Compact owning copy, whatever the stride of `other`.
    VelkImage(const VelkImage& other);
    ~VelkImage();

    // Owns a buffer of the new size from now on; contents undefined.
    void setSize(int width, int height, int nChannels);
    // Resizes to `other` and copies its pixels compactly; not chainable.
    void operator=(const VelkImage& other);
    // Sets every image byte to the low 8 bits of `value`; row padding untouched.
    void clear(int value);
    // Noise from drand48; a positive seed reseeds it (reproducible), 0 continues.
    void createRandom(int binary, int seed);
    // Periodic samples of a compact one-channel image (period width-1, height-1).
    int interp(float x, float y);
    int interpConst(float x, float y);

    // PNM files (P2, P3, P5, P6). readPNM: 1 on success, 0 after an error report
    // through velk_error. writePNM/writeHistogram: 0 when the file cannot be
    // opened, said on stderr ("VelkImage: Can't open file %s" / "VelkImage: Can't
    // write histogram %s"); writeHistogram also prints "Mean = %g" on stdout.
    int readPNM(const char* filename);
    int writePNM(const char* filename, int ascii);
    int writeHistogram(const char* filename);

    // Point and arithmetic operations. Where an int is returned, 0 means nothing
    // was written; the reason goes to stderr as stated per operation.
    void getStatistics(float& mean, float& sigma);
    void autoAdjust(float mean, float sigma, VelkImage* dst);
    void brighten(int lo, int hi, VelkImage* dst);
    // This image becomes RGB from three grey planes. 0: sizes differ ("Images
    // must have equal size.") or no memory ("Not enough memory.").
    int glue(const VelkImage& r, const VelkImage& g, const VelkImage& b);
    void oneband(int channel, VelkImage* dst);
    void colorToGrey(VelkImage* dst);
    // Inclusive rectangle; outside pixels are 0. 0 (silently) when its byte count
    // does not fit in an int.
    int crop(int x0, int y0, int x1, int y1, VelkImage* dst);
    // 0: sizes differ ("Images must have same size.") or channel counts differ
    // ("Images must have same number of channels.").
    int subtract(const VelkImage& other, VelkImage* dst);
    // 0: sizes differ ("Images must have same size.") or either image has other
    // than 1 or 3 channels ("Illegal number of channels (1 and 3 required).").
    int mix(const VelkImage& other, VelkImage* dst);
    // Prepares an RGB colour layer for mix: pure reds (red above equal green and
    // blue) get the hue 1.0 from RGB_to_HSL, which HSL_to_RGB does not map back,
    // so mix would keep them instead of giving them the lightness. Each such
    // pixel becomes the fully bright red of its saturation with one step more
    // green (a hue shift of 1/1530). Images of other channel counts are left alone.
    void avoidHueOne();
    // 0: sizes differ ("Images must have same size."), the mask has more than one
    // channel ("mask must only have one component."), or this image has other
    // than 1 or 3 channels (silently).
    int applyMask(const VelkImage& mask, VelkImage* dst);
    // 0: sizes differ ("Images must have same size.").
    int multiply(const VelkImage& other, VelkImage* dst);

    // Convolution and filters (grey: the first width bytes of each row).
    void convolve(int n, float* kernel, VelkImage* dst);
    void gaussBlur(int n, VelkImage* dst);
    void medianFilter(VelkImage* dst);

    // Histogram equalisation, each channel on its own: 1, or 0 with nothing
    // written for an empty image or one with other than 1 or 3 channels. An
    // image of one value stays as it is.
    int equalize(VelkImage* dst = nullptr);
    // Adaptive equalisation: each of tilesX x tilesY tiles gets its own mapping,
    // blended bilinearly between tile centres. A histogram bin is capped at
    // clipLimit times the mean bin count (tile pixels / 256), the excess spread
    // over all bins: 2 to 4 is usual; 256 or more clips nothing, and then one
    // tile gives equalize()'s result. Tiles beyond the pixels of an axis count
    // as one per pixel. 0 as for equalize(), and for fewer than one tile or a
    // clipLimit below 1 or NaN.
    int equalizeAdaptive(int tilesX, int tilesY, float clipLimit, VelkImage* dst = nullptr);

    // Tent-filtered resampling to a new size.
    void zoom(int newWidth, int newHeight, VelkImage* dst);

    // Relief shading lit from (azimuth, elevation), or along a vector field.
    // Images under 2 pixels, with other than 1 or 3 channels or without data,
    // and a relief width of 0, are left as they are.
    void emboss(float azimuth, float elevation, int width, VelkImage* dst);
    void emboss(VelkVectorField& field, VelkImage* dst);

    // Fills the 4-connected region around (x, y); returns the pixels written: 0
    // for a seed outside the image or a value whose low byte equals the seed's.
    int floodFill(int x, int y, int value, int* bbox, VelkImage* dst);
};

#endif
