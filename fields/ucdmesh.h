#ifndef VELK_FIELDS_UCDMESH_H
#define VELK_FIELDS_UCDMESH_H

#include <cstddef>

#include <velk/VelkScanConvert.h>

// The one reader of the UCD triangle-mesh layout, shared by every reader of
// it (vector field, scalar field, overlay drawing). They differ only in how
// many numbers a node line holds and in the message for a short node line.
//
// Layout: line 1 holds the node count nV and the triangle count nT among any
// other characters (every non-digit is blanked, then the first two integers
// are taken, so a minus sign is ignored and 3.7 reads as 3 and 7); line 2 is
// skipped; nV node lines of x, y and the node's values ("%g" numbers, lines
// of at most 126 characters, text after the needed numbers ignored); one
// skipped line; then nT triangles of three 1-based node numbers as a free
// stream of integers.
//
// Typical use:
//   velk::UcdMesh mesh;
//   if (!velk::readUcdMesh(path, {2, "expected to read 2 floats, got %d"}, mesh)) return 0;
//   velk::UcdBox box = velk::ucdNodeBox(mesh);
//   float w, h;
//   if (!velk::ucdBoxSize(box, w, h)) return 0;
//   ... mesh.node(i)[0], mesh.node(i)[1], mesh.triangle(t)[0..2] ...

namespace velk {

struct UcdFormat {
    int numbersPerNode;     // x, y and the values: 2, 3 or 4
    const char* shortNode;  // velk_error format with one %d, the scan's count
};

// A mesh read from a UCD file. Its arrays come from uxmalloc and are released
// with uxfree by the destructor, whatever way the owner leaves its scope.
class UcdMesh {
  public:
    int nV = 0;
    int nT = 0;
    int stride = 0;            // floats per node: x, y, values
    float* nodes = nullptr;    // nV records of `stride` floats
    int* triangles = nullptr;  // nT records of 3 node indices, 0-based, each in 0 .. nV-1

    UcdMesh() = default;
    ~UcdMesh();
    UcdMesh(const UcdMesh&) = delete;
    UcdMesh& operator=(const UcdMesh&) = delete;

    const float* node(int i) const { return nodes + static_cast<std::ptrdiff_t>(i) * stride; }
    const int* triangle(int t) const { return triangles + static_cast<std::ptrdiff_t>(t) * 3; }
};

// Opens `path` ("r"), reads header, nodes and triangles, and closes it. 1 on
// success. Otherwise reports and returns 0, with the messages:
//   velk_ioerror(path, null)                          the file does not open
//   velk_ioerror(path, "this is not an UCD file")     no two integers in line 1
//   "file %s contains insufficient data (%d vertices, %d triangles"   nV < 3 or nT < 1
//   format.shortNode                                  a node line without enough numbers
//   "expected to read 3 ints, got %d"                 a short triangle
//   a message naming the file                         a node number outside 1 .. nV,
//                                                     or memory that cannot be had
// A node line missing at the end of the input re-reads the last line read;
// the triangle scan then meets the end of the input. Arrays grow with what is
// actually read, so a header announcing more than the file holds costs no
// more memory than the file itself.
int readUcdMesh(const char* path, const UcdFormat& format, UcdMesh& mesh);

struct UcdBox {
    float xmin;
    float xmax;
    float ymin;
    float ymax;
};

// Bounding box of the nodes with its deliberate starting values: xmin = x0,
// xmax = y0, ymin = x0, ymax = y0 of node 0, then nodes 1 .. nV-1 widen it.
UcdBox ucdNodeBox(const UcdMesh& mesh);

// w = xmax - xmin, h = ymax - ymin. Reports "degenerate grid (width=%g,
// height=%g)" and returns 0 when either is exactly 0; 1 otherwise.
int ucdBoxSize(const UcdBox& box, float& w, float& h);

// Fits the box (of size w x h) into a canvas of the given size keeping its
// aspect ratio, centred along the axis with room to spare: a file position p
// maps to ((p.x - x0) * scale, (p.y - y0) * scale).
void ucdFit(const UcdBox& box, float w, float h, float canvasWidth, float canvasHeight,
            float& scale, float& x0, float& y0);

// Scan-converts every triangle in file order onto an nx x ny canvas through
// the fit above; each vertex carries the node's values (stride - 2 of them)
// and nValues of them are interpolated.
void rasterizeUcdMesh(const UcdMesh& mesh, float scale, float x0, float y0, int nx, int ny,
                      int nValues, VelkScanConvert::PixelCallback callback, void* userData);

// Rejects (with a message naming the file) grids the field readers cannot
// hold: sides below 1 or more nodes than an int counts. 1 when usable.
int ucdGridUsable(const char* path, int nx, int ny);

}  // namespace velk

#endif
