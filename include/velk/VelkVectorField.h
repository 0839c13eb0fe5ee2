#ifndef VELK_VELKVECTORFIELD_H
#define VELK_VELKVECTORFIELD_H

#include <velk/velk_export.h>

class VelkImage;
class VelkScalarField;

// A width x height grid of Vec2f nodes, row-major with x fastest; row 0 is the
// row of smallest y. The field owns its storage (malloc/free) or borrows a
// caller's buffer, which it never frees. Not copyable.
//
// Operations with a trailing `VelkVectorField* dst` write into `dst` when it is
// non-null and into this field when it is null.
class VELK_EXPORT VelkVectorField {
  public:
    float* ownedData;  // null when empty or borrowing
    float* data;       // 2 floats per node
    int width;
    int height;

    VelkVectorField();
    // Borrows `data` when non-null; otherwise owns fresh, uninitialised storage.
    VelkVectorField(int width, int height, float* data);
    ~VelkVectorField();
    VelkVectorField(const VelkVectorField&) = delete;
    VelkVectorField& operator=(const VelkVectorField&) = delete;

    // Owns storage of the new size from now on (leading nodes kept in memory order).
    void setSize(int width, int height);
    // Largest node length; the field must not be empty.
    float getMax();
    // Scales every non-zero node to unit length.
    void normalize();

    // Analytic fields. All but setSaddle fill the existing grid (at least 2 x 2).
    void setCircle(float angle);
    void setSaddle();
    void setLinear(const float m[2][2], const float b[2]);
    void setBrusselator(float xRange, float yRange, float a, float b);

    // "VELK VECTOR" files and UCD meshes. 1 on success, 0 after an error report.
    int write(const char* path, int ascii);
    int read(const char* path);
    // bbox: xmin, xmax, ymin, ymax in file coordinates, or null to fit the nodes.
    int readUCD(const char* path, int nx, int ny, float* bbox);
    int readUCD(const char* path, int nx, int ny);
    static void pixelCallback(int x, int y, float* values, void* userData);

    // Derived fields and display.
    void fromScalarField(const VelkScalarField& s, float angle);
    void fromImage(const VelkImage& image, float angle);
    void resample(int nx, int ny, VelkVectorField* dst);
    void magnitude(VelkScalarField& out, int sameSize);
    void vecToColor(VelkImage& image, int sameSize);
};

#endif
