#ifndef VELK_VELKSCALARFIELD_H
#define VELK_VELKSCALARFIELD_H

#include <velk/velk_export.h>

class VelkColormap;
class VelkImage;

// A width x height grid of floats, row-major with x fastest (value (x, y) is
// element y * width + x). The field owns its storage (malloc/free). Not
// copyable.
class VELK_EXPORT VelkScalarField {
  public:
    float* ownedData;  // null when empty
    float* data;
    int width;
    int height;

    VelkScalarField();
    // With null `values`: owns fresh, uninitialised storage of the size. With
    // an array: stores the size only; the array is neither adopted nor copied
    // and `data` stays null.
    VelkScalarField(int width, int height, float* values);
    ~VelkScalarField();
    VelkScalarField(const VelkScalarField&) = delete;
    VelkScalarField& operator=(const VelkScalarField&) = delete;

    // Owns storage of the new size from now on (leading values kept in memory
    // order, contents otherwise undefined); no storage for an empty size.
    void setSize(int width, int height);

    // Test patterns on the existing grid (at least 2 x 2).
    void createCircle();
    void createDipole(float scale, float phase);

    // Smallest and largest value; 0 and 0 for an empty field.
    void getRange(float& min, float& max);

    // Colours the field through the colour map's range and table into a
    // 3-channel image: one pixel per value (sameSize non-zero, the image is
    // resized) or bilinearly sampled onto the image's own size (sameSize 0).
    void pseudoColor(const VelkColormap& colormap, VelkImage& image, int sameSize);

    // "VELK SCALAR" files (binary: big-endian) and UCD meshes with one value
    // per node. 1 on success, 0 after an error report.
    int write(const char* path, int ascii);
    int read(const char* path);
    int readUCD(const char* path, int nx, int ny);

    // Scan-converter pixel function; userData is the field. Positions outside
    // the grid are ignored.
    static void pixelCallback(int x, int y, float* values, void* userData);
};

#endif
