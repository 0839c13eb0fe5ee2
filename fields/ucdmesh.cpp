#include "ucdmesh.h"

#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <velk/report.h>
#include "cfile.h"
#include "uxmalloc.h"

namespace velk {

namespace {

// Line buffer of the UCD readers: 128 bytes, lines of at most 126 characters.
constexpr int kLineSize = 128;

// At the end of the input the buffer keeps the last line read.
bool readLine(char* line, std::FILE* file) {
    return std::fgets(line, kLineSize - 1, file) != nullptr;
}

// A uxmalloc array that grows as records are actually read, up to `limit`.
template <typename T>
class GrowingArray {
  public:
    GrowingArray(T*& storage, int recordSize) : storage(storage), recordSize(recordSize) {}

    // Makes room for record `index` (records arrive in order). False when
    // memory cannot be had.
    bool reserve(int index, int limit) {
        if (index < capacity) return true;
        std::size_t grown = capacity < 1024 ? 1024 : static_cast<std::size_t>(capacity) * 2;
        if (grown > static_cast<std::size_t>(limit)) grown = static_cast<std::size_t>(limit);
        // A count whose byte size does not fit size_t is refused, not wrapped.
        if (grown > SIZE_MAX / sizeof(T) / static_cast<std::size_t>(recordSize)) return false;
        T* larger = static_cast<T*>(uxmalloc(grown * recordSize * sizeof(T)));
        if (larger == nullptr) return false;
        if (storage) {
            std::memcpy(larger, storage,
                        static_cast<std::size_t>(capacity) * recordSize * sizeof(T));
            uxfree(storage);
        }
        storage = larger;
        capacity = static_cast<int>(grown);
        return true;
    }

  private:
    T*& storage;
    int recordSize;
    int capacity = 0;
};

int outOfMemory(const char* path) {
    return velk_error("not enough memory to read the mesh of %s", path);
}

// "%g" scans of exactly n numbers, n = 2, 3 or 4.
int scanNode(const char* line, int n, float* v) {
    static const char* const kFormats[] = {"%g%g", "%g%g%g", "%g%g%g%g"};
    return std::sscanf(line, kFormats[n - 2], &v[0], &v[1], &v[2], &v[3]);
}

}  // namespace

UcdMesh::~UcdMesh() {
    if (nodes) uxfree(nodes);
    if (triangles) uxfree(triangles);
}

int readUcdMesh(const char* path, const UcdFormat& format, UcdMesh& mesh) {
    FilePtr file = openFile(path, "r");
    if (!file) return velk_ioerror(path, nullptr);

    char line[kLineSize] = {};
    readLine(line, file.get());
    for (char* p = line; *p; p++) {
        if (!std::isdigit(static_cast<unsigned char>(*p))) *p = ' ';
    }
    int nV = 0;
    int nT = 0;
    if (std::sscanf(line, "%d%d", &nV, &nT) != 2) {
        return velk_ioerror(path, "this is not an UCD file");
    }
    if (nV < 3 || nT < 1) {
        return velk_error("file %s contains insufficient data (%d vertices, %d triangles", path, nV,
                          nT);
    }

    int n = format.numbersPerNode;
    mesh.stride = n;
    mesh.nV = 0;
    mesh.nT = 0;
    GrowingArray<float> nodes(mesh.nodes, n);
    GrowingArray<int> triangles(mesh.triangles, 3);

    readLine(line, file.get());
    for (int i = 0; i < nV; i++) {
        bool atEnd = !readLine(line, file.get());
        float v[4];
        int count = scanNode(line, n, v);
        if (count != n) return velk_error(format.shortNode, count);
        // Every further node would parse this same line again, and the
        // triangle scan below then meets the end of the input: none of them
        // can reach the result, so none is stored.
        if (atEnd) break;
        if (!nodes.reserve(i, nV)) return outOfMemory(path);
        std::memcpy(mesh.nodes + static_cast<std::ptrdiff_t>(i) * n, v, n * sizeof(float));
        mesh.nV = i + 1;
    }

    readLine(line, file.get());
    for (int t = 0; t < nT; t++) {
        int k[3];
        int count = std::fscanf(file.get(), "%d%d%d", &k[0], &k[1], &k[2]);
        if (count != 3) return velk_error("expected to read 3 ints, got %d", count);
        for (int c = 0; c < 3; c++) {
            // Checked against the nodes actually stored, which are all nV
            // whenever a triangle can be read at all.
            if (k[c] < 1 || k[c] > mesh.nV) {
                return velk_error("file %s: triangle %d uses node %d, but the nodes are 1 to %d",
                                  path, t + 1, k[c], nV);
            }
        }
        if (!triangles.reserve(t, nT)) return outOfMemory(path);
        int* dst = mesh.triangles + static_cast<std::ptrdiff_t>(t) * 3;
        for (int c = 0; c < 3; c++) dst[c] = k[c] - 1;
    }
    mesh.nT = nT;
    return 1;
}

UcdBox ucdNodeBox(const UcdMesh& mesh) {
    const float* first = mesh.node(0);
    UcdBox box = {first[0], first[1], first[0], first[1]};
    for (int i = 1; i < mesh.nV; i++) {
        const float* p = mesh.node(i);
        if (p[0] < box.xmin) box.xmin = p[0];
        if (p[0] > box.xmax) box.xmax = p[0];
        if (p[1] < box.ymin) box.ymin = p[1];
        if (p[1] > box.ymax) box.ymax = p[1];
    }
    return box;
}

int ucdBoxSize(const UcdBox& box, float& w, float& h) {
    w = box.xmax - box.xmin;
    h = box.ymax - box.ymin;
    if (w == 0.0f || h == 0.0f) {
        return velk_error("degenerate grid (width=%g, height=%g)", static_cast<double>(w),
                          static_cast<double>(h));
    }
    return 1;
}

void ucdFit(const UcdBox& box, float w, float h, float canvasWidth, float canvasHeight,
            float& scale, float& x0, float& y0) {
    if (canvasWidth / canvasHeight > w / h) {
        scale = canvasHeight / h;
        x0 = box.xmin - (canvasWidth / scale - w) * 0.5f;
        y0 = box.ymin;
    } else {
        scale = canvasWidth / w;
        x0 = box.xmin;
        y0 = box.ymin - (canvasHeight / scale - h) * 0.5f;
    }
}

void rasterizeUcdMesh(const UcdMesh& mesh, float scale, float x0, float y0, int nx, int ny,
                      int nValues, VelkScanConvert::PixelCallback callback, void* userData) {
    VelkScanConvert converter(6);
    converter.nValues = nValues;
    converter.setCanvas(nx, ny);
    converter.setPixelCallback(callback, userData);
    int carried = mesh.stride - 2;
    for (int t = 0; t < mesh.nT; t++) {
        VelkScanConvert::Vertex v[3] = {};
        for (int c = 0; c < 3; c++) {
            const float* p = mesh.node(mesh.triangle(t)[c]);
            v[c].x = (p[0] - x0) * scale;
            v[c].y = (p[1] - y0) * scale;
            for (int k = 0; k < carried; k++) v[c].values[k] = p[2 + k];
        }
        converter.scanConvert(3, v);
    }
}

int ucdGridUsable(const char* path, int nx, int ny) {
    if (nx < 1 || ny < 1 || static_cast<std::int64_t>(nx) * ny > INT_MAX) {
        return velk_error("can't resample %s onto a %d x %d grid", path, nx, ny);
    }
    return 1;
}

}  // namespace velk
