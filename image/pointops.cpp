#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <velk/VelkImage.h>
#include <velk/colorspace.h>
#include "destination.h"
#include "outputchannel.h"

namespace {

unsigned char clampToByte(long long v) {
    return static_cast<unsigned char>(v < 0 ? 0 : v > 255 ? 255 : v);
}

// Truncation toward zero, then clamping; NaN counts as below the range.
unsigned char truncateToByte(double v) {
    if (!(v > 0.0)) return 0;
    if (v >= 255.0) return 255;
    return static_cast<unsigned char>(static_cast<int>(v));
}

bool sameSize(const VelkImage& a, const VelkImage& b) {
    if (a.width == b.width && a.height == b.height) return true;
    velk::writeStderr("Images must have same size.\n");
    return false;
}

}  // namespace

void VelkImage::getStatistics(float& mean, float& sigma) {
    float sum = 0.0f;
    float squares = 0.0f;
    int rowBytes = width * nChannels;
    for (int y = 0; y < height; y++) {
        const unsigned char* row = data + y * bytesPerLine;
        for (int i = 0; i < rowBytes; i++) {
            float v = row[i];
            sum += v;
            squares += v * v;
        }
    }
    int n = height * width * nChannels;
    mean = sum / static_cast<float>(n);
    float variance = (squares - static_cast<float>(n) * mean * mean) / static_cast<float>(n - 1);
    sigma = std::sqrt(variance);
}

void VelkImage::autoAdjust(float mean, float sigma, VelkImage* dst) {
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.target();
    if (!dest.inPlace()) out.setSize(width, height, nChannels);

    // Zero is background: it takes no part in the statistics and stays zero.
    int n = 0;
    float sum = 0.0f;
    float squares = 0.0f;
    int rowBytes = width * nChannels;
    for (int y = 0; y < height; y++) {
        const unsigned char* row = data + y * bytesPerLine;
        for (int i = 0; i < rowBytes; i++) {
            if (row[i] == 0) continue;
            float v = row[i];
            n++;
            sum += v;
            squares += v * v;
        }
    }
    float centre = 128.0f;
    float scale = 1.0f;
    if (n > 0) {
        centre = sum / static_cast<float>(n);
        float variance =
            (squares - static_cast<float>(n) * centre * centre) / static_cast<float>(n - 1);
        float deviation = std::sqrt(variance);
        if (static_cast<double>(deviation) > 0.1) scale = sigma / deviation;
    }

    // Maps the bytes of the image written, which with a dst are dst's own.
    int outBytes = out.width * out.nChannels;
    for (int y = 0; y < out.height; y++) {
        unsigned char* row = out.data + y * out.bytesPerLine;
        for (int i = 0; i < outBytes; i++) {
            if (row[i] == 0) continue;
            float v = (static_cast<float>(row[i]) - centre) * scale + mean;
            row[i] = truncateToByte(static_cast<double>(v) + 0.5);
        }
    }
}

void VelkImage::brighten(int lo, int hi, VelkImage* dst) {
    if (hi == lo) return;  // an empty window maps nothing: everything stays as it is
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.target();
    if (!dest.inPlace()) out.setSize(width, height, nChannels);
    // Wide arithmetic: extreme windows would overflow int; results are unchanged.
    long long range = static_cast<long long>(hi) - lo;
    int rowBytes = width * nChannels;
    for (int y = 0; y < height; y++) {
        const unsigned char* in = data + y * bytesPerLine;
        unsigned char* o = out.data + y * out.bytesPerLine;
        for (int i = 0; i < rowBytes; i++) o[i] = clampToByte((in[i] - lo * 1LL) * 255 / range);
    }
}

int VelkImage::glue(const VelkImage& r, const VelkImage& g, const VelkImage& b) {
    if (g.width != r.width || g.height != r.height || g.width != b.width || g.height != b.height) {
        velk::writeStderr("Images must have equal size.\n");
        return 0;
    }
    // Resizing comes first, so an operand that is this image is read from a copy.
    const VelkImage* operands[3] = {&r, &g, &b};
    VelkImage copy;
    bool copied = false;
    for (const VelkImage*& operand : operands) {
        if (operand != this) continue;
        if (!copied) copy = *this;
        copied = true;
        operand = &copy;
    }
    // Memory that cannot be had is told like the other failures, leaving this
    // image as it was where the copy failed and empty where the new buffer did.
    const bool pixels = r.width > 0 && r.height > 0;
    if (copied && pixels && copy.data == nullptr) {
        velk::writeStderr("Not enough memory.\n");
        return 0;
    }
    setSize(r.width, r.height, 3);
    if (pixels && data == nullptr) {
        setSize(0, 0, 3);
        velk::writeStderr("Not enough memory.\n");
        return 0;
    }
    for (int y = 0; y < height; y++) {
        unsigned char* o = data + y * bytesPerLine;
        for (int c = 0; c < 3; c++) {
            const unsigned char* in = operands[c]->data + y * operands[c]->bytesPerLine;
            for (int x = 0; x < width; x++) o[3 * x + c] = in[x];
        }
    }
    return 1;
}

void VelkImage::oneband(int channel, VelkImage* dst) {
    if (channel > nChannels - 1) channel = nChannels - 1;
    // A negative channel would read in front of the first row.
    if (channel < 0) channel = 0;
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.separate();
    out.setSize(width, height, 1);
    if (nChannels > 0) {
        for (int y = 0; y < height; y++) {
            const unsigned char* in = data + y * bytesPerLine + channel;
            unsigned char* o = out.data + y * out.bytesPerLine;
            for (int x = 0; x < width; x++) o[x] = in[x * nChannels];
        }
    }
    dest.commit();
}

void VelkImage::colorToGrey(VelkImage* dst) {
    velk::Destination dest(*this, dst);
    if (nChannels < 3) {
        if (!dest.inPlace()) dest.assign(*this);
        return;
    }
    VelkImage& out = dest.target();
    if (!dest.inPlace()) out.setSize(width, height, 1);
    // Packed triples from the start of the buffer, whatever the channel count
    // and stride; in place the grey byte i never passes the triple it comes from.
    int pixels = width * height;
    const unsigned char* rgb = data;
    unsigned char* grey = out.data;
    for (int i = 0; i < pixels; i++, rgb += 3) {
        grey[i] = static_cast<unsigned char>(
            static_cast<int>((0.59 * rgb[1] + 0.3 * rgb[0]) + 0.11 * rgb[2]));
    }
    if (dest.inPlace()) {
        unsigned char* converted = data;
        bool borrowed = ownedData == nullptr;
        setSize(width, height, 1);
        // A borrowed buffer is left behind by setSize; bring the result along.
        if (borrowed && data != nullptr) std::memcpy(data, converted, pixels);
    }
}

int VelkImage::crop(int x0, int y0, int x1, int y1, VelkImage* dst) {
    long long w = static_cast<long long>(x1) - x0 + 1;
    long long h = static_cast<long long>(y1) - y0 + 1;
    // A rectangle whose byte count int cannot hold cannot be built.
    if (w > INT_MAX || h > INT_MAX || w < INT_MIN || h < INT_MIN ||
        (w > 0 && h > 0 && velk::imageBytes(w, h, nChannels) < 0)) {
        return 0;
    }
    VelkImage result(static_cast<int>(w), static_cast<int>(h), nChannels);
    unsigned char* o = result.data;
    for (long long y = y0; y <= y1; y++) {
        bool rowInside = y >= 0 && y < height;
        const unsigned char* row = rowInside ? data + y * bytesPerLine : nullptr;
        for (long long x = x0; x <= x1; x++) {
            // Every channel repeats byte x of the row; exact for grey images.
            unsigned char v = rowInside && x >= 0 && x < width ? row[x] : 0;
            for (int c = 0; c < nChannels; c++) *o++ = v;
        }
    }
    velk::Destination(*this, dst).assign(result);
    return 1;
}

int VelkImage::subtract(const VelkImage& other, VelkImage* dst) {
    if (!sameSize(*this, other)) return 0;
    if (nChannels != other.nChannels) {
        velk::writeStderr("Images must have same number of channels.\n");
        return 0;
    }
    VelkImage result(width, height, nChannels);
    int rowBytes = width * nChannels;
    for (int y = 0; y < height; y++) {
        const unsigned char* a = data + y * bytesPerLine;
        const unsigned char* b = other.data + y * other.bytesPerLine;
        unsigned char* o = result.data + y * result.bytesPerLine;
        for (int i = 0; i < rowBytes; i++) o[i] = clampToByte(a[i] + 128 - b[i]);
    }
    velk::Destination(*this, dst).assign(result);
    return 1;
}

int VelkImage::mix(const VelkImage& other, VelkImage* dst) {
    if (!sameSize(*this, other)) return 0;
    const VelkImage* colour = this;
    const VelkImage* grey = &other;
    if (nChannels == 1 && other.nChannels == 3) {
        colour = &other;
        grey = this;
    } else if (nChannels != 3 || other.nChannels != 1) {
        velk::writeStderr("Illegal number of channels (1 and 3 required).\n");
        return 0;
    }
    VelkImage result(width, height, 3);
    for (int y = 0; y < height; y++) {
        const unsigned char* c = colour->data + y * colour->bytesPerLine;
        const unsigned char* g = grey->data + y * grey->bytesPerLine;
        unsigned char* o = result.data + y * result.bytesPerLine;
        for (int x = 0; x < width; x++, c += 3, o += 3) {
            // Black keeps hue and saturation 0 (a plain grey); a hue outside the
            // sextants (pure reds come out as 1.0) leaves the colour as it was.
            float rgb[3] = {c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f};
            float hsl[3] = {0.0f, 0.0f, 0.0f};
            RGB_to_HSL(rgb, hsl);
            hsl[2] = g[x] / 255.0f;
            HSL_to_RGB(hsl, rgb);
            for (int i = 0; i < 3; i++) {
                o[i] = static_cast<unsigned char>(
                    static_cast<int>(static_cast<double>(rgb[i]) * 255.0 + 0.5));
            }
        }
    }
    velk::Destination(*this, dst).assign(result);
    return 1;
}

void VelkImage::avoidHueOne() {
    if (nChannels != 3 || data == nullptr) return;
    for (int y = 0; y < height; y++) {
        unsigned char* p = data + static_cast<long>(y) * bytesPerLine;
        for (int x = 0; x < width; x++, p += 3) {
            if (!(p[0] > p[1] && p[1] == p[2])) continue;
            float rgb[3] = {p[0] / 255.0f, p[1] / 255.0f, p[2] / 255.0f};
            float hsl[3] = {0.0f, 0.0f, 0.0f};
            RGB_to_HSL(rgb, hsl);
            int hi = static_cast<int>(127.5f * (1.0f + hsl[1]) + 0.5f);
            if (hi > 255) hi = 255;
            const int lo = 255 - hi;
            if (hi - lo >= 2) {
                p[0] = static_cast<unsigned char>(hi);
                p[1] = static_cast<unsigned char>(lo + 1);
                p[2] = static_cast<unsigned char>(lo);
            } else {
                p[1] = static_cast<unsigned char>(p[1] + 1);  // hardly saturated: no hue shows
            }
        }
    }
}

int VelkImage::applyMask(const VelkImage& mask, VelkImage* dst) {
    if (!sameSize(*this, mask)) return 0;
    if (mask.nChannels != 1) {
        velk::writeStderr("mask must only have one component.\n");
        return 0;
    }
    // Only grey and RGB gain an alpha channel; anything else stays as it is.
    if (nChannels != 1 && nChannels != 3) return 0;
    int channels = nChannels;
    // Raised on this image even when the result goes to dst; buffer unchanged.
    nChannels = channels + 1;
    VelkImage result(width, height, nChannels);
    for (int y = 0; y < height; y++) {
        const unsigned char* in = data + y * bytesPerLine;
        const unsigned char* m = mask.data + y * mask.bytesPerLine;
        unsigned char* o = result.data + y * result.bytesPerLine;
        for (int x = 0; x < width; x++) {
            for (int c = 0; c < channels; c++) *o++ = *in++;
            *o++ = m[x] != 0 ? 255 : 0;
        }
    }
    velk::Destination(*this, dst).assign(result);
    return 1;
}

int VelkImage::multiply(const VelkImage& other, VelkImage* dst) {
    if (!sameSize(*this, other)) return 0;
    int channels = nChannels > other.nChannels ? nChannels : other.nChannels;
    VelkImage result(width, height, channels);
    for (int y = 0; y < height; y++) {
        const unsigned char* a = data + y * bytesPerLine;
        const unsigned char* b = other.data + y * other.bytesPerLine;
        unsigned char* o = result.data + y * result.bytesPerLine;
        for (int x = 0; x < width; x++) {
            for (int c = 0; c < channels; c++) {
                // A channel an operand lacks is its channel 0 (grey scales colour).
                int va = a[x * nChannels + (c < nChannels ? c : 0)];
                int vb = b[x * other.nChannels + (c < other.nChannels ? c : 0)];
                *o++ = static_cast<unsigned char>(va * vb / 255);
            }
        }
    }
    velk::Destination(*this, dst).assign(result);
    return 1;
}
