#include <velk/VelkColormap.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <velk/colorspace.h>
#include "cfile.h"
#include "outputchannel.h"

namespace {

typedef float Table[256][3];

// (int)(255 * c) for the file; components far outside [0, 1] (after multiply
// or gamma) saturate instead of overflowing the conversion.
int componentToInt(float c) {
    float v = 255.0f * c;
    if (std::isnan(v)) return 0;
    if (v >= 2147483648.0f) return INT_MAX;
    if (v < -2147483648.0f) return INT_MIN;
    return static_cast<int>(v);
}

// Reads one line of at most `size` - 1 characters; the end of the input gives
// an empty line, never the previous one again.
void readLine(char* line, int size, std::FILE* file) {
    if (std::fgets(line, size, file) == nullptr) line[0] = '\0';
}

// The new table is complete before it is stored, so the target may be the
// source itself; the target takes the source's range.
void storeTable(const Table& table, const VelkColormap& source, VelkColormap& target) {
    std::memcpy(target.colors, table, sizeof(Table));
    target.min = source.min;
    target.max = source.max;
    target.scale = source.scale;
}

int illegalFormat(const char* path) {
    velk::writeStderr("Illegal format in %s.\n", path);
    return 0;
}

}  // namespace

VelkColormap::VelkColormap() {
    createGreyRamp();
    setMinMax(0.0f, 1.0f);
}

void VelkColormap::setMinMax(float min, float max) {
    this->min = min;
    this->max = max;
    scale = 1.0f / (max - min);
}

void VelkColormap::getMinMax(float& min, float& max) {
    min = this->min;
    max = this->max;
}

void VelkColormap::createGreyRamp() {
    for (int i = 0; i < 256; i++) {
        float g = static_cast<float>(i) / 255.0f;
        colors[i][0] = colors[i][1] = colors[i][2] = g;
    }
}

void VelkColormap::createHotIron() {
    for (int i = 0; i < 128; i++) {
        colors[i][0] = 1.0f;
        colors[i][1] = static_cast<float>(i) / 127.0f;
        colors[i][2] = 0.0f;
    }
    for (int i = 128; i < 256; i++) {
        colors[i][0] = 1.0f;
        colors[i][1] = 1.0f;
        colors[i][2] = static_cast<float>(i - 128) / 127.0f;
    }
}

void VelkColormap::createBlueWhiteRed() {
    for (int i = 0; i < 128; i++) {
        float f = static_cast<float>(i) / 127.0f;
        colors[i][0] = f;
        colors[i][1] = f;
        colors[i][2] = 1.0f;
    }
    for (int i = 128; i < 256; i++) {
        float f = static_cast<float>(255 - i) / 127.0f;
        colors[i][0] = 1.0f;
        colors[i][1] = f;
        colors[i][2] = f;
    }
}

void VelkColormap::createHueRamp() {
    for (int i = 0; i < 256; i++) {
        float hsl[3] = {static_cast<float>(static_cast<double>(i) / 255.0 * 5.0 / 6.0), 1.0f, 0.5f};
        HSL_to_RGB(hsl, colors[i]);
    }
}

void VelkColormap::flip(VelkColormap* dst) {
    Table table;
    for (int i = 0; i < 256; i++) {
        for (int c = 0; c < 3; c++) table[i][c] = colors[255 - i][c];
    }
    storeTable(table, *this, dst ? *dst : *this);
}

void VelkColormap::multiply(float factor, VelkColormap* dst) {
    Table table;
    for (int i = 0; i < 256; i++) {
        for (int c = 0; c < 3; c++) {
            float v = colors[i][c] * factor;
            table[i][c] = v > 1.0f ? 1.0f : v;
        }
    }
    storeTable(table, *this, dst ? *dst : *this);
}

void VelkColormap::gamma(float g, VelkColormap* dst) {
    Table table;
    for (int i = 0; i < 256; i++) {
        for (int c = 0; c < 3; c++) {
            table[i][c] = static_cast<float>(
                std::pow(static_cast<double>(colors[i][c]), static_cast<double>(g)));
        }
    }
    storeTable(table, *this, dst ? *dst : *this);
}

void VelkColormap::getColor1(float t, float* rgb) const {
    if (!(t > 0.0f)) {
        for (int c = 0; c < 3; c++) rgb[c] = colors[0][c];
        return;
    }
    if (t >= 1.0f) {
        for (int c = 0; c < 3; c++) rgb[c] = colors[255][c];
        return;
    }
    float f = t * 255.0f;
    int i = static_cast<int>(f);  // at most 254: t * 255 rounds below 255 for t < 1
    float w = f - static_cast<float>(i);
    for (int c = 0; c < 3; c++) rgb[c] = colors[i][c] + (colors[i + 1][c] - colors[i][c]) * w;
}

int VelkColormap::writeIcol(const char* path) {
    velk::FilePtr file = velk::openFile(path, "wb");
    if (!file) {
        velk::writeStderr("Can't open %s.\n", path);
        return 0;
    }
    for (int j = 0; j < 64; j++) {
        for (int k = 0; k < 4; k++) {
            int e = j + 64 * k;
            std::fprintf(file.get(), "%4d%4d%4d%4d", e, componentToInt(colors[e][0]),
                         componentToInt(colors[e][1]), componentToInt(colors[e][2]));
            std::fputs(k < 3 ? "   " : "\n", file.get());
        }
    }
    std::fprintf(file.get(), "%g %g\n", static_cast<double>(min), static_cast<double>(max));
    return 1;
}

int VelkColormap::readIcol(const char* path) {
    velk::FilePtr file = velk::openFile(path, "rb");
    if (!file) {
        velk::writeStderr("Can't open %s.\n", path);
        return 0;
    }
    const float k = 1.0f / 255.0f;
    char line[256];
    int v[16];
    readLine(line, sizeof line, file.get());
    int count = std::sscanf(line, "%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d", &v[0], &v[1], &v[2], &v[3],
                            &v[4], &v[5], &v[6], &v[7], &v[8], &v[9], &v[10], &v[11], &v[12],
                            &v[13], &v[14], &v[15]);
    if (count == 3) {
        for (int i = 0; i < 256; i++) {
            if (i > 0) {
                readLine(line, sizeof line, file.get());
                if (std::sscanf(line, "%d%d%d", &v[0], &v[1], &v[2]) < 3)
                    return illegalFormat(path);
            }
            for (int c = 0; c < 3; c++) colors[i][c] = static_cast<float>(v[c]) * k;
        }
    } else if (count == 16) {
        for (int j = 0; j < 64; j++) {
            if (j > 0) {
                readLine(line, sizeof line, file.get());
                count = std::sscanf(line, "%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d", &v[0], &v[1], &v[2],
                                    &v[3], &v[4], &v[5], &v[6], &v[7], &v[8], &v[9], &v[10], &v[11],
                                    &v[12], &v[13], &v[14], &v[15]);
                if (count != 16) return illegalFormat(path);
            }
            for (int g = 0; g < 4; g++) {
                int e = v[4 * g];
                // Indices come from the file unchecked; one outside the table is dropped.
                if (e < 0 || e > 255) continue;
                for (int c = 0; c < 3; c++) colors[e][c] = static_cast<float>(v[4 * g + 1 + c]) * k;
            }
        }
    } else {
        return illegalFormat(path);
    }

    float lo, hi;
    if (std::fscanf(file.get(), "%f%f", &lo, &hi) == 2) {
        setMinMax(lo, hi);
    } else {
        setMinMax(0.0f, 1.0f);
    }
    return 1;
}
