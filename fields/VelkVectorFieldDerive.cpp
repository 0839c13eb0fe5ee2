#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <velk/VelkImage.h>
#include <velk/VelkScalarField.h>
#include <velk/VelkVectorField.h>
#include <velk/colorspace.h>
#include "gridsample.h"

namespace {

bool hasGrid(const float* data, int width, int height) {
    return data != nullptr && width > 0 && height > 0;
}

// Rotated gradient by node differences. Central differences are not halved;
// the one-sided ones at the borders are doubled to match. A single column or
// row has no neighbour to differ from and gives 0 along that axis.
// T is float (scalar values) or unsigned char (grey bytes, differenced as int).
template <typename T>
void rotatedGradient(const T* p, int width, int height, float angle, float* out) {
    float s = std::sin(angle);
    float c = std::cos(angle);
    const std::ptrdiff_t row = width;
    for (int j = 0; j < height; j++) {
        const T* line = p + j * row;
        for (int i = 0; i < width; i++, out += 2) {
            const T* v = line + i;
            float gx = 0.0f;
            float gy = 0.0f;
            if (width > 1) {
                if (i == 0) {
                    gx = static_cast<float>(2 * (v[1] - v[0]));
                } else if (i == width - 1) {
                    gx = static_cast<float>(2 * (v[0] - v[-1]));
                } else {
                    gx = static_cast<float>(v[1] - v[-1]);
                }
            }
            if (height > 1) {
                if (j == 0) {
                    gy = static_cast<float>(2 * (v[row] - v[0]));
                } else if (j == height - 1) {
                    gy = static_cast<float>(2 * (v[0] - v[-row]));
                } else {
                    gy = static_cast<float>(v[row] - v[-row]);
                }
            }
            out[0] = s * gx - c * gy;
            out[1] = c * gx + s * gy;
        }
    }
}

void zeroNodes(VelkVectorField& field) {
    if (!hasGrid(field.data, field.width, field.height)) return;
    std::memset(field.data, 0,
                static_cast<std::size_t>(field.width) * static_cast<std::size_t>(field.height) * 8);
}

// Steps of the display forms: the source extent less a little, over the
// target's node spacing.
float displayStep(int sourceSize, int targetSize) {
    return (static_cast<float>(sourceSize) - 1.001f) / static_cast<float>(targetSize - 1);
}

// Pixel byte of a colour component: (int)(255 * c), truncated.
unsigned char channelByte(float c) {
    float v = 255.0f * c;
    if (!(v > -2147483648.0f && v < 2147483648.0f)) return 0;
    return static_cast<unsigned char>(static_cast<int>(v));
}

// Direction of (x, y) as a hue through the colour wheel into `rgb`, which
// HSL_to_RGB leaves as it was for the hue 1.0 of the direction (-1, +0).
void directionColor(float x, float y, float* rgb) {
    const double pi = 3.14159265358979323846;
    float hsl[3] = {
        static_cast<float>((std::atan2(static_cast<double>(y), static_cast<double>(x)) + pi) /
                           (2.0 * pi)),
        1.0f, 0.5f};
    HSL_to_RGB(hsl, rgb);
}

}  // namespace

void VelkVectorField::fromScalarField(const VelkScalarField& s, float angle) {
    setSize(s.width, s.height);
    if (!hasGrid(data, width, height)) return;
    if (!hasGrid(s.data, s.width, s.height)) {
        zeroNodes(*this);
        return;
    }
    rotatedGradient(s.data, width, height, angle, data);
}

void VelkVectorField::fromImage(const VelkImage& image, float angle) {
    setSize(image.width, image.height);
    if (!hasGrid(data, width, height)) return;
    if (image.data == nullptr) {
        zeroNodes(*this);
        return;
    }
    VelkImage grey;
    const VelkImage* source = &image;
    if (image.nChannels == 3) {
        // With a destination, colorToGrey only reads the image.
        const_cast<VelkImage&>(image).colorToGrey(&grey);
        source = &grey;
    }
    // The grey bytes are one contiguous block of width x height; an image
    // whose buffer cannot hold that many bytes has no gradient to give.
    if (source->data == nullptr || source->nChannels < 1 || source->bytesPerLine < source->width) {
        zeroNodes(*this);
        return;
    }
    rotatedGradient(source->data, width, height, angle, data);
}

void VelkVectorField::resample(int nx, int ny, VelkVectorField* dst) {
    if (nx < 0 || ny < 0 || static_cast<std::int64_t>(nx) * ny > INT_MAX) return;
    // A destination that is this field works like none: the source must
    // survive until the last sample.
    if (dst == this) dst = nullptr;
    VelkVectorField scratch;
    VelkVectorField& target = dst ? *dst : scratch;
    target.setSize(nx, ny);
    if (hasGrid(target.data, nx, ny)) {
        if (!hasGrid(data, width, height)) {
            zeroNodes(target);
        } else {
            float dx = static_cast<float>(width - 1) / static_cast<float>(nx);
            float dy = static_cast<float>(height - 1) / static_cast<float>(ny);
            float* out = target.data;
            float sy = dy * 0.5f;
            for (int j = 0; j < ny; j++, sy += dy) {
                float sx = dx * 0.5f;
                for (int i = 0; i < nx; i++, sx += dx, out += 2) {
                    velk::sampleBilinear<2>(data, width, height, sx, sy, out);
                }
            }
        }
    }
    if (dst) return;

    // This field takes over the new grid; its old storage goes, a borrowed
    // buffer is left to its owner.
    if (ownedData) std::free(ownedData);
    ownedData = scratch.ownedData;
    data = scratch.data;
    width = scratch.width;
    height = scratch.height;
    scratch.ownedData = nullptr;
    scratch.data = nullptr;
}

void VelkVectorField::magnitude(VelkScalarField& out, int sameSize) {
    if (sameSize) {
        out.setSize(width, height);
        if (!hasGrid(out.data, width, height) || !hasGrid(data, width, height)) return;
        std::int64_t n = static_cast<std::int64_t>(width) * height;
        const float* v = data;
        for (std::int64_t i = 0; i < n; i++, v += 2) {
            out.data[i] = std::sqrt(v[0] * v[0] + v[1] * v[1]);
        }
        return;
    }

    int W = out.width;
    int H = out.height;
    if (!hasGrid(out.data, W, H) || !hasGrid(data, width, height)) return;
    float dx = displayStep(width, W);
    float dy = displayStep(height, H);
    float sy = 0.0f;
    for (int j = 0; j < H; j++, sy += dy) {
        float* o = out.data + static_cast<std::ptrdiff_t>(j) * W;
        float sx = 0.0f;
        for (int i = 0; i < W; i++, sx += dx) {
            float v[2];
            velk::sampleBilinear<2>(data, width, height, sx, sy, v);
            o[i] = std::sqrt(v[0] * v[0] + v[1] * v[1]);
        }
    }
}

void VelkVectorField::vecToColor(VelkImage& image, int sameSize) {
    // Carried from pixel to pixel: a hue of 1.0 repeats the previous colour
    // (black before the first one).
    float rgb[3] = {0.0f, 0.0f, 0.0f};

    if (sameSize) {
        image.setSize(width, height, 3);
        if (image.data == nullptr || !hasGrid(data, width, height)) return;
        std::int64_t n = static_cast<std::int64_t>(width) * height;
        const float* v = data;
        unsigned char* pixel = image.data;
        for (std::int64_t i = 0; i < n; i++, v += 2, pixel += 3) {
            directionColor(v[0], v[1], rgb);
            for (int c = 0; c < 3; c++) pixel[c] = channelByte(rgb[c]);
        }
        return;
    }

    int W = image.width;
    int H = image.height;
    if (image.data == nullptr || W <= 0 || H <= 0 || !hasGrid(data, width, height)) return;
    // Three bytes per pixel whatever the channel count; on an image with
    // fewer channels the rows run into each other, and bytes beyond the
    // image's last one are not written.
    const std::int64_t end = static_cast<std::int64_t>(H - 1) * image.bytesPerLine +
                             static_cast<std::int64_t>(W) * image.nChannels;
    float dx = displayStep(width, W);
    float dy = displayStep(height, H);
    float sy = 0.0f;
    for (int j = 0; j < H; j++, sy += dy) {
        std::int64_t offset = static_cast<std::int64_t>(j) * image.bytesPerLine;
        float sx = 0.0f;
        for (int i = 0; i < W; i++, sx += dx, offset += 3) {
            float v[2];
            velk::sampleBilinear<2>(data, width, height, sx, sy, v);
            directionColor(v[0], v[1], rgb);
            for (int c = 0; c < 3; c++) {
                if (offset + c >= 0 && offset + c < end)
                    image.data[offset + c] = channelByte(rgb[c]);
            }
        }
    }
}
