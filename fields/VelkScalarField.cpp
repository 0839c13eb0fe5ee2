#include <velk/VelkScalarField.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <velk/VelkColormap.h>
#include <velk/VelkImage.h>
#include <velk/byteorder.h>
#include <velk/report.h>
#include "cfile.h"
#include "fieldfile.h"
#include "gridsample.h"
#include "resizeblock.h"
#include "ucdmesh.h"

namespace {

std::int64_t valueCount(const VelkScalarField& field) {
    if (field.data == nullptr || field.width <= 0 || field.height <= 0) return 0;
    return static_cast<std::int64_t>(field.width) * field.height;
}

// Gives `field` a width x height grid; on allocation failure reports, leaves
// the field empty and returns 0.
int resize(VelkScalarField& field, int width, int height, const char* path) {
    field.setSize(width, height);
    if (field.data != nullptr) return 1;
    field.setSize(0, 0);
    return velk_error("not enough memory for a %d x %d scalar field from %s", width, height, path);
}

// swapByteOrder counts words in an int; larger grids go in slices.
void swapWords(float* data, std::int64_t n) {
    const std::int64_t slice = 1 << 30;
    for (std::int64_t done = 0; done < n; done += slice) {
        std::int64_t count = n - done < slice ? n - done : slice;
        swapByteOrder(static_cast<int>(count), data + done);
    }
}

// (int)(255 * c) of a colour component; values the conversion cannot hold
// saturate instead of overflowing it.
int channelByte(float c) {
    float v = 255.0f * c;
    if (std::isnan(v)) return 0;
    if (v >= 2147483648.0f) return INT_MAX;
    if (v < -2147483648.0f) return INT_MIN;
    return static_cast<int>(v);
}

void colorPixel(const VelkColormap& colormap, float value, unsigned char* pixel) {
    float rgb[3];
    colormap.getColor1((value - colormap.min) * colormap.scale, rgb);
    for (int c = 0; c < 3; c++) pixel[c] = static_cast<unsigned char>(channelByte(rgb[c]));
}

}  // namespace

VelkScalarField::VelkScalarField() : ownedData(nullptr), data(nullptr), width(0), height(0) {}

VelkScalarField::VelkScalarField(int width, int height, float* values) : VelkScalarField() {
    if (values == nullptr) {
        setSize(width, height);
        return;
    }
    this->width = width;
    this->height = height;
}

VelkScalarField::~VelkScalarField() {
    if (ownedData) std::free(ownedData);
}

void VelkScalarField::setSize(int width, int height) {
    this->width = width;
    this->height = height;
    std::size_t bytes = 0;
    if (width > 0 && height > 0) bytes = static_cast<std::size_t>(width) * height * sizeof(float);
    if (bytes == 0) {
        std::free(ownedData);
        ownedData = nullptr;
    } else {
        ownedData = static_cast<float*>(velk::resizeBlock(ownedData, bytes));
    }
    data = ownedData;
}

void VelkScalarField::createCircle() {
    float* p = data;
    for (int j = 0; j < height; j++) {
        float y = static_cast<float>(j) / static_cast<float>(height - 1) - 0.5f;
        for (int i = 0; i < width; i++) {
            float x = static_cast<float>(i) / static_cast<float>(width - 1) - 0.5f;
            *p++ = x * x + y * y;
        }
    }
}

void VelkScalarField::createDipole(float scale, float phase) {
    float omega = phase * 6.2831855f;
    float* p = data;
    for (int j = 0; j < height; j++) {
        float Y = (static_cast<float>(2 * j) / static_cast<float>(height - 1) - 1.0f) * scale;
        for (int i = 0; i < width; i++) {
            float X = (static_cast<float>(2 * i) / static_cast<float>(width - 1) - 1.0f) * scale;
            float r =
                static_cast<float>(std::hypot(static_cast<double>(X), static_cast<double>(Y)));
            double theta = std::atan2(static_cast<double>(X), static_cast<double>(Y));
            if (std::fabs(static_cast<double>(r)) < 1e-10) r = 1.0f;
            float a = r - omega;
            double s = std::sin(static_cast<double>(static_cast<float>(theta)));
            double ad = static_cast<double>(a);
            *p++ = static_cast<float>(s *
                                      ((std::cos(ad) - std::sin(ad) / static_cast<double>(r)) * s));
        }
    }
}

void VelkScalarField::getRange(float& min, float& max) {
    std::int64_t n = valueCount(*this);
    // An empty field has no first value to start from.
    if (n == 0) {
        min = max = 0.0f;
        return;
    }
    min = max = data[0];
    for (std::int64_t i = 0; i < n; i++) {
        float v = data[i];
        if (v > max) {
            max = v;
        } else if (v < min) {
            min = v;
        }
    }
}

void VelkScalarField::pseudoColor(const VelkColormap& colormap, VelkImage& image, int sameSize) {
    if (sameSize) {
        image.setSize(width, height, 3);
        std::int64_t n = valueCount(*this);
        if (image.data == nullptr) return;
        unsigned char* pixel = image.data;
        for (std::int64_t i = 0; i < n; i++, pixel += 3) colorPixel(colormap, data[i], pixel);
        return;
    }

    int W = image.width;
    int H = image.height;
    if (image.nChannels != 3) image.setSize(W, H, 3);
    if (image.data == nullptr || valueCount(*this) == 0) return;
    float dx = (static_cast<float>(width) - 1.001f) / static_cast<float>(W - 1);
    float dy = (static_cast<float>(height) - 1.001f) / static_cast<float>(H - 1);
    float sy = 0.0f;
    for (int j = 0; j < H; j++, sy += dy) {
        unsigned char* pixel = image.data + static_cast<std::int64_t>(j) * 3 * W;
        float sx = 0.0f;
        for (int i = 0; i < W; i++, sx += dx, pixel += 3) {
            float v;
            velk::sampleBilinear<1>(data, width, height, sx, sy, &v);
            colorPixel(colormap, v, pixel);
        }
    }
}

int VelkScalarField::write(const char* path, int ascii) {
    velk::FilePtr file = velk::openFile(path, "wb");
    if (!file) return velk_ioerror(path, nullptr);
    velk::writeFieldHeader(file.get(), "VELK SCALAR", ascii, width, height);
    std::int64_t n = valueCount(*this);
    if (ascii) {
        for (std::int64_t i = 0; i < n; i++) {
            std::fprintf(file.get(), "%g\n", static_cast<double>(data[i]));
        }
    } else {
        // Big-endian in the file; the field is swapped back afterwards.
        swapWords(data, n);
        std::fwrite(data, 4, static_cast<std::size_t>(n), file.get());
        swapWords(data, n);
    }
    return 1;
}

int VelkScalarField::read(const char* path) {
    velk::FilePtr file = velk::openFile(path, "rb");
    if (!file) return velk_ioerror(path, nullptr);
    int binary, w, h;
    if (!velk::readFieldHeader(file.get(), path, "VELK SCALAR", "illegal scalar field dimensions",
                               binary, w, h)) {
        return 0;
    }
    if (!resize(*this, w, h, path)) return 0;
    std::int64_t n = static_cast<std::int64_t>(w) * h;
    if (binary) {
        // A short file leaves the remaining values as the storage held them.
        std::fread(data, 4, static_cast<std::size_t>(n), file.get());
        swapByteOrder(static_cast<int>(n), data);
        return 1;
    }
    for (std::int64_t i = 0; i < n; i++) {
        if (std::fscanf(file.get(), "%g", &data[i]) != 1) {
            return velk_ioerror(path, "illegal or missing scalar values");
        }
    }
    return 1;
}

int VelkScalarField::readUCD(const char* path, int nx, int ny) {
    if (!velk::ucdGridUsable(path, nx, ny)) return 0;
    velk::UcdMesh mesh;
    if (!velk::readUcdMesh(path, {3, "expected to read 3 floats, got %d"}, mesh)) return 0;
    velk::UcdBox box = velk::ucdNodeBox(mesh);
    float w, h;
    if (!velk::ucdBoxSize(box, w, h)) return 0;
    float scale, x0, y0;
    velk::ucdFit(box, w, h, static_cast<float>(nx), static_cast<float>(ny), scale, x0, y0);

    if (!resize(*this, nx, ny, path)) return 0;
    for (std::int64_t i = 0, n = static_cast<std::int64_t>(nx) * ny; i < n; i++) data[i] = 0.0f;
    velk::rasterizeUcdMesh(mesh, scale, x0, y0, nx, ny, 1, pixelCallback, this);
    return 1;
}

void VelkScalarField::pixelCallback(int x, int y, float* values, void* userData) {
    VelkScalarField* field = static_cast<VelkScalarField*>(userData);
    // The scan converter can report column `width`; that store is dropped.
    if (field->data == nullptr || x < 0 || x >= field->width || y < 0 || y >= field->height) {
        return;
    }
    field->data[static_cast<std::int64_t>(y) * field->width + x] = values[0];
}
