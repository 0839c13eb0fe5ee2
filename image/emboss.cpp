#include <cmath>
#include <cstddef>
#include <cstring>

#include <velk/VelkImage.h>
#include <velk/VelkVectorField.h>
#include "destination.h"

namespace {

constexpr unsigned char kBorder = 128;

// Truncation toward zero of a light component; a component that is not a
// number (from an angle or a vector that is not one) gives no light.
int truncLight(double v) {
    if (!(v > -2147483648.0 && v < 2147483648.0)) return 0;
    return static_cast<int>(v);
}

// Light of one pixel: fixed, or turned along the flow vector there.
struct FixedLight {
    int Lx;
    int Ly;
    void at(std::ptrdiff_t, int& lx, int& ly) const {
        lx = Lx;
        ly = Ly;
    }
};

struct SteeredLight {
    float h;  // horizontal light strength
    const float (*vectors)[2];
    // The vector's x component steers the light's y component and vice versa.
    void at(std::ptrdiff_t index, int& lx, int& ly) const {
        float vx = vectors[index][0];
        float vy = vectors[index][1];
        float len = std::sqrt(vx * vx + vy * vy);
        if (len == 0.0f) {
            lx = 0;
            ly = 0;
            return;
        }
        lx = truncLight(h * vy / len);
        ly = truncLight(h * vx / len);
    }
};

// The relief of a W x H height map (W, H >= 2) into `out`: 1 byte per pixel,
// or 3 bytes darkening the 3-channel `texture` when one is given. Border
// pixels are 128; flat ground gets the light's height Lz.
template <typename Light>
void relief(const Light& light, int Lz, int Nz, const unsigned char* bump,
            const unsigned char* texture, unsigned char* out, int W, int H) {
    const int bpp = texture ? 3 : 1;
    const std::ptrdiff_t outRow = static_cast<std::ptrdiff_t>(W) * bpp;
    const int Nz2 = Nz * Nz;
    const int NzLz = Nz * Lz;

    std::memset(out, kBorder, outRow);
    if (H - 1 < 2) {
        std::memset(out + outRow, kBorder, outRow);
        return;
    }
    for (int y = 1; y <= H - 2; y++) {
        const std::ptrdiff_t rowStart = static_cast<std::ptrdiff_t>(y) * W;
        const unsigned char* m = bump + rowStart;
        const unsigned char* t = m - W;
        const unsigned char* b = m + W;
        unsigned char* o = out + y * outRow;
        std::memset(o, kBorder, bpp);
        for (int x = 1; x <= W - 2; x++) {
            int Nx = (t[x - 1] + m[x - 1] + b[x - 1]) - (t[x + 1] + m[x + 1] + b[x + 1]);
            int Ny = (b[x - 1] + b[x] + b[x + 1]) - (t[x - 1] + t[x] + t[x + 1]);
            int shade;
            if (Nx == 0 && Ny == 0) {
                shade = Lz;
            } else {
                int Lx, Ly;
                light.at(rowStart + x, Lx, Ly);
                int d = Lx * Nx + Ly * Ny + NzLz;
                if (d < 0) {
                    shade = 0;
                } else {
                    float n = std::sqrt(static_cast<float>(Nx * Nx + Nz2 + Ny * Ny));
                    shade = static_cast<int>(static_cast<float>(d) / n) & 0xff;
                }
            }
            if (texture) {
                const unsigned char* tex = texture + (rowStart + x) * 3;
                unsigned char* px = o + x * 3;
                for (int c = 0; c < 3; c++)
                    px[c] = static_cast<unsigned char>((tex[c] * shade) >> 8);
            } else {
                o[x] = static_cast<unsigned char>(shade);
            }
        }
        std::memset(o + static_cast<std::ptrdiff_t>(W - 1) * bpp, kBorder, bpp);
    }
    std::memset(out + static_cast<std::ptrdiff_t>(H - 1) * outRow, kBorder, outRow);
}

// What the kernels work on: a grey image is its own height map; a colour
// image is lit through its grey version and darkens its own colours.
class ReliefInput {
  public:
    explicit ReliefInput(VelkImage& image) {
        if (image.nChannels < 3) {
            bump = image.data;
            return;
        }
        image.colorToGrey(&grey);
        bump = grey.data;
        texture = image.data;
    }

    unsigned char* bump = nullptr;
    unsigned char* texture = nullptr;

  private:
    VelkImage grey;
};

// The kernels need two rows and two columns; pixels are grey or RGB.
bool embossable(const VelkImage& image) {
    return image.data != nullptr && image.width >= 2 && image.height >= 2 &&
           (image.nChannels == 1 || image.nChannels == 3);
}

}  // namespace

static void emboss(float azimuth, float elevation, int width, unsigned char* bump,
                   unsigned char* texture, unsigned char* out, int W, int H) {
    double az = azimuth;
    double el = elevation;
    FixedLight light = {truncLight(std::cos(az) * std::cos(el) * 255.9),
                        truncLight(std::cos(el) * std::sin(az) * 255.9)};
    int Lz = truncLight(255.9 * std::sin(el));
    relief(light, Lz, 1530 / width, bump, texture, out, W, H);
}

static void emboss2(float elevation, int width, unsigned char* bump, unsigned char* texture,
                    unsigned char* out, int W, int H, float (*vectors)[2]) {
    float h = std::cos(elevation) * 255.9f;
    int Lz = truncLight(std::sin(static_cast<double>(elevation)) * 255.9);
    int Nz = 1530 / width;
    if (vectors) {
        relief(SteeredLight{h, vectors}, Lz, Nz, bump, texture, out, W, H);
        return;
    }
    // Without a field the light comes from azimuth pi/2.
    const float halfPi = 1.57079632679489661923f;
    FixedLight light = {truncLight(std::cos(halfPi) * h), truncLight(h * std::sin(halfPi))};
    relief(light, Lz, Nz, bump, texture, out, W, H);
}

void VelkImage::emboss(float azimuth, float elevation, int width, VelkImage* dst) {
    // The relief width divides; 0 has no relief.
    if (!embossable(*this) || width == 0) return;
    ReliefInput input(*this);
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.separate();
    out.setSize(this->width, height, nChannels);
    if (out.data) {
        ::emboss(azimuth, elevation, width, input.bump, input.texture, out.data, this->width,
                 height);
    }
    dest.commit();
}

void VelkImage::emboss(VelkVectorField& field, VelkImage* dst) {
    if (!embossable(*this)) return;
    VelkVectorField resampled;
    float* vectors = field.data;
    if (field.width != width || field.height != height || field.data == nullptr) {
        field.resample(width, height, &resampled);
        vectors = resampled.data;
    }

    ReliefInput input(*this);
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.separate();
    out.setSize(width, height, nChannels);
    if (out.data) {
        const float elevation = static_cast<float>(0.2 * 3.14159265358979323846);
        ::emboss2(elevation, 3, input.bump, input.texture, out.data, width, height,
                  reinterpret_cast<float(*)[2]>(vectors));
        // Grey pixels without flow are outside the flow region.
        if (nChannels == 1 && vectors) {
            const std::ptrdiff_t n = static_cast<std::ptrdiff_t>(width) * height;
            for (std::ptrdiff_t i = 0; i < n; i++) {
                if (vectors[2 * i] == 0.0f && vectors[2 * i + 1] == 0.0f) out.data[i] = 0;
            }
        }
    }
    dest.commit();
}
