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

    // PNM files (P2, P3, P5, P6). 1 on success, 0 after an error report.
    int readPNM(const char* filename);
    int writePNM(const char* filename, int ascii);
    int writeHistogram(const char* filename);

    // Point and arithmetic operations.
    void getStatistics(float& mean, float& sigma);
    void autoAdjust(float mean, float sigma, VelkImage* dst);
    void brighten(int lo, int hi, VelkImage* dst);
    int glue(const VelkImage& r, const VelkImage& g, const VelkImage& b);
    void oneband(int channel, VelkImage* dst);
    void colorToGrey(VelkImage* dst);
    int crop(int x0, int y0, int x1, int y1, VelkImage* dst);
    int subtract(const VelkImage& other, VelkImage* dst);
    int mix(const VelkImage& other, VelkImage* dst);
    int applyMask(const VelkImage& mask, VelkImage* dst);
    int multiply(const VelkImage& other, VelkImage* dst);

    // Convolution and filters (grey: the first width bytes of each row).
    void convolve(int n, float* kernel, VelkImage* dst);
    void gaussBlur(int n, VelkImage* dst);
    void medianFilter(VelkImage* dst);

    // Tent-filtered resampling to a new size.
    void zoom(int newWidth, int newHeight, VelkImage* dst);

    // Relief shading lit from (azimuth, elevation), or along a vector field.
    void emboss(float azimuth, float elevation, int width, VelkImage* dst);
    void emboss(VelkVectorField& field, VelkImage* dst);

    // Fills the 4-connected region around (x, y); returns the pixels written.
    int floodFill(int x, int y, int value, int* bbox, VelkImage* dst);
};

#endif
