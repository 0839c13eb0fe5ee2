#include "arrays.h"

#include <cstdlib>
#include <cstring>

#include <velk/VelkImage.h>
#include <velk/VelkScalarField.h>
#include <velk/VelkVectorField.h>

namespace velkpy {

namespace {

// Element (row, column) of a 2-D float32 or float64 array of any strides.
float element(const FloatIn& a, std::size_t row, std::size_t column) {
    const std::int64_t at = static_cast<std::int64_t>(row) * a.stride(0) +
                            static_cast<std::int64_t>(column) * a.stride(1);
    if (a.dtype() == nb::dtype<double>())
        return static_cast<float>(static_cast<const double*>(a.data())[at]);
    return static_cast<const float*>(a.data())[at];
}

void checkFloat(const FloatIn& a, const char* name) {
    if (a.dtype() != nb::dtype<float>() && a.dtype() != nb::dtype<double>())
        throw nb::type_error((std::string(name) + " must be float32 or float64").c_str());
}

// Hands a malloc'd buffer to NumPy, which frees it with the array.
nb::capsule freeing(void* buffer) {
    return nb::capsule(buffer, [](void* p) noexcept { std::free(p); });
}

float* allocateFloats(std::size_t n) {
    float* p = static_cast<float*>(std::malloc((n ? n : 1) * sizeof(float)));
    if (!p) throw std::bad_alloc();
    return p;
}

}  // namespace

void readImage(const BytesIn& array, VelkImage& image) {
    if (array.ndim() != 2 && !(array.ndim() == 3 && array.shape(2) == 3))
        throw nb::value_error("images have shape (H, W) or (H, W, 3)");
    const int height = static_cast<int>(array.shape(0));
    const int width = static_cast<int>(array.shape(1));
    const int channels = array.ndim() == 3 ? 3 : 1;
    image.setSize(width, height, channels);
    if (!image.data && width * height > 0) throw std::bad_alloc();
    const std::uint8_t* src = array.data();
    const std::int64_t channelStride = channels == 3 ? array.stride(2) : 0;
    for (int y = 0; y < height; y++) {
        unsigned char* row = image.data + static_cast<std::size_t>(y) * image.bytesPerLine;
        for (int x = 0; x < width; x++) {
            const std::uint8_t* p = src + y * array.stride(0) + x * array.stride(1);
            for (int c = 0; c < channels; c++) *row++ = p[c * channelStride];
        }
    }
}

void readField(const FloatIn& u, const FloatIn& v, VelkVectorField& field) {
    checkFloat(u, "u");
    checkFloat(v, "v");
    if (u.shape(0) != v.shape(0) || u.shape(1) != v.shape(1))
        throw nb::value_error("u and v must have the same shape");
    const std::size_t ny = u.shape(0), nx = u.shape(1);
    field.setSize(static_cast<int>(nx), static_cast<int>(ny));
    if (!field.data && nx * ny > 0) throw std::bad_alloc();
    float* node = field.data;
    for (std::size_t j = 0; j < ny; j++) {
        for (std::size_t i = 0; i < nx; i++) {
            *node++ = element(u, j, i);
            *node++ = element(v, j, i);
        }
    }
}

void readScalars(const FloatIn& values, VelkScalarField& scalars) {
    checkFloat(values, "values");
    const std::size_t ny = values.shape(0), nx = values.shape(1);
    scalars.setSize(static_cast<int>(nx), static_cast<int>(ny));
    if (!scalars.data && nx * ny > 0) throw std::bad_alloc();
    float* out = scalars.data;
    for (std::size_t j = 0; j < ny; j++)
        for (std::size_t i = 0; i < nx; i++) *out++ = element(values, j, i);
}

BytesOut toArray(VelkImage& image) {
    const std::size_t h = image.height > 0 ? image.height : 0;
    const std::size_t w = image.width > 0 ? image.width : 0;
    const std::size_t shape[3] = {h, w, 3};
    const std::size_t ndim = image.nChannels == 3 ? 3 : 2;
    void* buffer = image.ownedData ? image.ownedData : std::malloc(1);
    if (!buffer) throw std::bad_alloc();
    image.ownedData = nullptr;
    image.data = nullptr;
    image.setSize(0, 0, 1);
    return BytesOut(buffer, ndim, shape, freeing(buffer));
}

FieldOut toArrays(const VelkVectorField& field) {
    const std::size_t n = static_cast<std::size_t>(field.width) * field.height;
    float* u = allocateFloats(n);
    float* v = allocateFloats(n);
    for (std::size_t k = 0; k < n; k++) {
        u[k] = field.data[2 * k];
        v[k] = field.data[2 * k + 1];
    }
    const std::size_t shape[2] = {static_cast<std::size_t>(field.height),
                                  static_cast<std::size_t>(field.width)};
    return {FloatsOut(u, 2, shape, freeing(u)), FloatsOut(v, 2, shape, freeing(v))};
}

FloatsOut toArray(const VelkScalarField& scalars) {
    const std::size_t n = static_cast<std::size_t>(scalars.width) * scalars.height;
    float* out = allocateFloats(n);
    if (n) std::memcpy(out, scalars.data, n * sizeof(float));
    const std::size_t shape[2] = {static_cast<std::size_t>(scalars.height),
                                  static_cast<std::size_t>(scalars.width)};
    return FloatsOut(out, 2, shape, freeing(out));
}

}  // namespace velkpy
