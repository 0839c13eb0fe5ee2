#include <cstdint>
#include <cstdio>

#include <velk/VelkVectorField.h>
#include <velk/byteorder.h>
#include <velk/report.h>
#include "cfile.h"
#include "fieldfile.h"
#include "ucdmesh.h"

namespace {

// Gives `field` a width x height grid; on allocation failure reports, leaves
// the field empty and returns 0.
int resize(VelkVectorField& field, int width, int height, const char* path) {
    field.setSize(width, height);
    if (field.data != nullptr) return 1;
    field.setSize(0, 0);
    return velk_error("not enough memory for a %d x %d vector field from %s", width, height, path);
}

std::int64_t nodeCount(const VelkVectorField& field) {
    if (field.data == nullptr || field.width <= 0 || field.height <= 0) return 0;
    return static_cast<std::int64_t>(field.width) * field.height;
}

}  // namespace

int VelkVectorField::write(const char* path, int ascii) {
    velk::FilePtr file = velk::openFile(path, "wb");
    if (!file) return velk_ioerror(path, nullptr);
    velk::writeFieldHeader(file.get(), "VELK VECTOR", ascii, width, height);
    std::int64_t n = nodeCount(*this);
    if (ascii) {
        const float* p = data;
        for (std::int64_t i = 0; i < n; i++, p += 2) {
            std::fprintf(file.get(), "%g %g\n", static_cast<double>(p[0]),
                         static_cast<double>(p[1]));
        }
    } else {
        // Host byte order; the reader takes big-endian (kept asymmetric on purpose).
        std::fwrite(data, 8, static_cast<std::size_t>(n), file.get());
    }
    return 1;
}

int VelkVectorField::read(const char* path) {
    velk::FilePtr file = velk::openFile(path, "rb");
    if (!file) return velk_ioerror(path, nullptr);
    int binary, w, h;
    if (!velk::readFieldHeader(file.get(), path, "VELK VECTOR", "illegal vector field dimensions",
                               binary, w, h)) {
        return 0;
    }
    if (!resize(*this, w, h, path)) return 0;
    std::int64_t n = static_cast<std::int64_t>(w) * h;
    if (binary) {
        // A short file leaves the remaining nodes as the storage held them.
        std::fread(data, 8, static_cast<std::size_t>(n), file.get());
        swapByteOrder(static_cast<int>(2 * n), data);
        return 1;
    }
    float* p = data;
    for (std::int64_t i = 0; i < n; i++, p += 2) {
        if (std::fscanf(file.get(), "%g%g", &p[0], &p[1]) != 2) {
            return velk_ioerror(path, "illegal or missing vector values");
        }
    }
    return 1;
}

int VelkVectorField::readUCD(const char* path, int nx, int ny, float* bbox) {
    if (!velk::ucdGridUsable(path, nx, ny)) return 0;
    velk::UcdMesh mesh;
    if (!velk::readUcdMesh(path, {4, "expected to read 4 floats, got %d"}, mesh)) return 0;

    velk::UcdBox box;
    if (bbox) {
        box = {bbox[0], bbox[1], bbox[2], bbox[3]};
    } else {
        box = velk::ucdNodeBox(mesh);
    }
    float w, h;
    if (!velk::ucdBoxSize(box, w, h)) return 0;
    float scale, x0, y0;
    velk::ucdFit(box, w, h, static_cast<float>(nx), static_cast<float>(ny), scale, x0, y0);

    if (!resize(*this, nx, ny, path)) return 0;
    float* p = data;
    for (std::int64_t i = 0, n = static_cast<std::int64_t>(nx) * ny; i < n; i++, p += 2) {
        p[0] = 0.0f;
        p[1] = 0.0f;
    }
    velk::rasterizeUcdMesh(mesh, scale, x0, y0, nx, ny, 3, pixelCallback, this);
    return 1;
}

int VelkVectorField::readUCD(const char* path, int nx, int ny) {
    return readUCD(path, nx, ny, nullptr);
}

void VelkVectorField::pixelCallback(int x, int y, float* values, void* userData) {
    VelkVectorField* field = static_cast<VelkVectorField*>(userData);
    if (field->data == nullptr || x < 0 || x >= field->width || y < 0 || y >= field->height) {
        return;
    }
    float* p = field->data + 2 * (static_cast<std::int64_t>(y) * field->width + x);
    p[0] = values[0];
    p[1] = values[1];
}
