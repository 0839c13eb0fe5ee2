#include <cmath>
#include <cstddef>
#include <vector>

#include <velk/VelkImage.h>
#include "destination.h"

namespace {

// Per channel: 256 output bytes indexed by the input byte.
typedef std::vector<unsigned char> Luts;

bool equalizable(const VelkImage& image) {
    return (image.nChannels == 1 || image.nChannels == 3) && image.width > 0 && image.height > 0 &&
           image.data != nullptr;
}

// One channel's mapping from its histogram: the cumulative share of each value
// spread evenly over 0..255, the lowest value present going to 0. Bins above
// `limit` give their excess to all bins alike, which bounds the slope of the
// mapping and so how much noise in a flat region is amplified.
void equalizing(const int* counts, double limit, unsigned char* lut) {
    double bins[256];
    double excess = 0.0;
    for (int v = 0; v < 256; v++) {
        bins[v] = counts[v] < limit ? counts[v] : limit;
        excess += counts[v] - bins[v];
    }
    double total = 0.0;
    double lowest = -1.0;
    for (int v = 0; v < 256; v++) {
        bins[v] += excess / 256.0;
        total += bins[v];
        if (lowest < 0.0 && bins[v] > 0.0) lowest = total;
    }
    // One value alone has nothing to spread: it stays as it is.
    if (!(total > lowest)) {
        for (int v = 0; v < 256; v++) lut[v] = static_cast<unsigned char>(v);
        return;
    }
    double below = 0.0;
    for (int v = 0; v < 256; v++) {
        below += bins[v];
        double mapped = (below - lowest) * 255.0 / (total - lowest);
        lut[v] = static_cast<unsigned char>(mapped > 0.0 ? std::floor(mapped + 0.5) : 0.0);
    }
}

// The mappings of all channels over the pixels [x0, x1) x [y0, y1); clipLimit
// is a multiple of the mean bin count.
void tileLuts(const VelkImage& image, int x0, int y0, int x1, int y1, double clipLimit,
              unsigned char* luts) {
    const int channels = image.nChannels;
    std::vector<int> counts(256 * channels, 0);
    for (int y = y0; y < y1; y++) {
        const unsigned char* row = image.data + static_cast<ptrdiff_t>(y) * image.bytesPerLine;
        for (int i = x0 * channels; i < x1 * channels; i += channels)
            for (int c = 0; c < channels; c++) counts[256 * c + row[i + c]]++;
    }
    const double limit = clipLimit * (static_cast<double>(x1 - x0) * (y1 - y0)) / 256.0;
    for (int c = 0; c < channels; c++) equalizing(&counts[256 * c], limit, &luts[256 * c]);
}

// How a pixel along one axis blends the mappings of the two tiles whose
// centres enclose it; beyond the outer centres it takes the outer tile alone.
struct Blend {
    int lo;
    int hi;
    float weight;  // of hi
};

// Tile i covers the pixels [tileStart(i), tileStart(i + 1)).
int tileStart(int i, int pixels, int tiles) {
    return static_cast<int>(static_cast<long long>(i) * pixels / tiles);
}

std::vector<Blend> blends(int pixels, int tiles) {
    std::vector<double> centres(tiles);
    for (int i = 0; i < tiles; i++)
        centres[i] = 0.5 * (tileStart(i, pixels, tiles) + tileStart(i + 1, pixels, tiles) - 1);
    std::vector<Blend> result(pixels);
    int i = 0;
    for (int p = 0; p < pixels; p++) {
        while (i + 1 < tiles && centres[i + 1] <= p) i++;
        if (i + 1 == tiles || p < centres[0]) {
            result[p] = {i, i, 0.0f};
        } else {
            float w = static_cast<float>((p - centres[i]) / (centres[i + 1] - centres[i]));
            result[p] = {i, i + 1, w};
        }
    }
    return result;
}

// The mappings of one row of tiles, computed when first needed. Two rows are
// kept: the rows a pixel row blends are neighbours and so use both slots.
class TileRows {
  public:
    TileRows(const VelkImage& image, int tilesX, int tilesY, double clipLimit)
        : image(image), tilesX(tilesX), tilesY(tilesY), clipLimit(clipLimit) {
        const size_t row = static_cast<size_t>(tilesX) * image.nChannels * 256;
        for (Slot& slot : slots) slot.luts.resize(row);
    }

    // The mappings of tile (i, j): nChannels blocks of 256.
    const unsigned char* luts(int i, int j) {
        Slot& slot = slots[j % 2];
        if (slot.row != j) fill(slot, j);
        return &slot.luts[static_cast<size_t>(i) * image.nChannels * 256];
    }

  private:
    struct Slot {
        int row = -1;
        Luts luts;
    };

    void fill(Slot& slot, int j) {
        const int y0 = tileStart(j, image.height, tilesY),
                  y1 = tileStart(j + 1, image.height, tilesY);
        for (int i = 0; i < tilesX; i++) {
            tileLuts(image, tileStart(i, image.width, tilesX), y0,
                     tileStart(i + 1, image.width, tilesX), y1, clipLimit,
                     &slot.luts[static_cast<size_t>(i) * image.nChannels * 256]);
        }
        slot.row = j;
    }

    const VelkImage& image;
    int tilesX;
    int tilesY;
    double clipLimit;
    Slot slots[2];
};

}  // namespace

int VelkImage::equalize(VelkImage* dst) {
    if (!equalizable(*this)) return 0;
    Luts luts(256 * nChannels);
    tileLuts(*this, 0, 0, width, height, HUGE_VAL, luts.data());
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.target();
    if (!dest.inPlace()) out.setSize(width, height, nChannels);
    if (out.data == nullptr) return 0;
    for (int y = 0; y < height; y++) {
        const unsigned char* in = data + static_cast<ptrdiff_t>(y) * bytesPerLine;
        unsigned char* o = out.data + static_cast<ptrdiff_t>(y) * out.bytesPerLine;
        for (int i = 0; i < width * nChannels; i += nChannels)
            for (int c = 0; c < nChannels; c++) o[i + c] = luts[256 * c + in[i + c]];
    }
    return 1;
}

int VelkImage::equalizeAdaptive(int tilesX, int tilesY, float clipLimit, VelkImage* dst) {
    if (!equalizable(*this) || tilesX < 1 || tilesY < 1 || !(clipLimit >= 1.0f)) return 0;
    // A tile is at least one pixel wide and high.
    if (tilesX > width) tilesX = width;
    if (tilesY > height) tilesY = height;
    const std::vector<Blend> columns = blends(width, tilesX), rows = blends(height, tilesY);
    TileRows tiles(*this, tilesX, tilesY, clipLimit);

    velk::Destination dest(*this, dst);
    VelkImage& out = dest.separate();
    out.setSize(width, height, nChannels);
    if (out.data == nullptr) return 0;
    for (int y = 0; y < height; y++) {
        const Blend& r = rows[y];
        const unsigned char* in = data + static_cast<ptrdiff_t>(y) * bytesPerLine;
        unsigned char* o = out.data + static_cast<ptrdiff_t>(y) * out.bytesPerLine;
        for (int x = 0; x < width; x++) {
            const Blend& b = columns[x];
            const unsigned char* lowLo = tiles.luts(b.lo, r.lo);
            const unsigned char* lowHi = tiles.luts(b.hi, r.lo);
            const unsigned char* highLo = tiles.luts(b.lo, r.hi);
            const unsigned char* highHi = tiles.luts(b.hi, r.hi);
            for (int c = 0; c < nChannels; c++) {
                const int v = in[x * nChannels + c] + 256 * c;
                float low = (1.0f - b.weight) * lowLo[v] + b.weight * lowHi[v];
                float high = (1.0f - b.weight) * highLo[v] + b.weight * highHi[v];
                float value = (1.0f - r.weight) * low + r.weight * high;
                o[x * nChannels + c] = static_cast<unsigned char>(value + 0.5f);
            }
        }
    }
    dest.commit();
    return 1;
}
