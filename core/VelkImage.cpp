#include <velk/VelkImage.h>

#include <cstdlib>
#include <cstring>

#include "periodic.h"
#include "resizeblock.h"

VelkImage::VelkImage()
    : ownedData(nullptr), data(nullptr), width(0), height(0), nChannels(0), bytesPerLine(0) {}

VelkImage::VelkImage(int width, int height) : VelkImage() {
    setSize(width, height, 1);
}

VelkImage::VelkImage(int width, int height, int nChannels) : VelkImage() {
    setSize(width, height, nChannels);
}

VelkImage::VelkImage(int width, int height, int bytesPerLine, unsigned char* data)
    : VelkImage(width, height, 1, bytesPerLine, data) {}

VelkImage::VelkImage(int width, int height, int nChannels, int bytesPerLine, unsigned char* data)
    : VelkImage() {
    if (data == nullptr) {
        setSize(width, height, nChannels);
        return;
    }
    this->data = data;
    this->width = width;
    this->height = height;
    this->nChannels = nChannels;
    this->bytesPerLine = bytesPerLine;
}

VelkImage::VelkImage(const VelkImage& other) : VelkImage() {
    *this = other;
}

VelkImage::~VelkImage() {
    if (ownedData) std::free(ownedData);
}

void VelkImage::setSize(int width, int height, int nChannels) {
    this->width = width;
    this->height = height;
    this->nChannels = nChannels;
    bytesPerLine = nChannels * width;
    int bytes = nChannels * (width * height);
    if (bytes >= 1) {
        ownedData = static_cast<unsigned char*>(velk::resizeBlock(ownedData, bytes));
    } else if (ownedData) {
        std::free(ownedData);
        ownedData = nullptr;
    }
    data = ownedData;
}

void VelkImage::operator=(const VelkImage& other) {
    if (&other == this) {
        // Resizing first would lose a borrowed source; go through a copy.
        VelkImage copy(other);
        *this = copy;
        return;
    }
    setSize(other.width, other.height, other.nChannels);
    int rowBytes = nChannels * width;
    if (rowBytes <= 0) return;
    for (int y = 0; y < height; y++) {
        std::memcpy(data + y * rowBytes, other.data + y * other.bytesPerLine, rowBytes);
    }
}

void VelkImage::clear(int value) {
    int rowBytes = nChannels * width;
    if (rowBytes <= 0) return;
    for (int y = 0; y < height; y++) {
        std::memset(data + y * bytesPerLine, static_cast<unsigned char>(value), rowBytes);
    }
}

void VelkImage::createRandom(int binary, int seed) {
    if (seed > 0) srand48(seed);
    int rowBytes = nChannels * width;
    for (int y = 0; y < height; y++) {
        unsigned char* p = data + y * bytesPerLine;
        for (int i = 0; i < rowBytes; i++) {
            double r = drand48();
            if (binary) {
                p[i] = r >= 0.5 ? 255 : 0;
            } else {
                p[i] = static_cast<unsigned char>(static_cast<int>(r * 255.9999));
            }
        }
    }
}

int VelkImage::interp(float x, float y) {
    // Images narrower or lower than 2 have no period; coordinates that cannot be
    // wrapped would index outside the buffer.
    if (!velk::wrapPeriodic(x, static_cast<float>(width - 1)) ||
        !velk::wrapPeriodic(y, static_cast<float>(height - 1))) {
        return 0;
    }
    int ix = static_cast<int>(x);
    int iy = static_cast<int>(y);
    float fx = x - ix;
    float fy = y - iy;
    const unsigned char* p00 = data + iy * width + ix;
    float P00 = p00[0];
    float P10 = p00[1];
    float P01 = p00[width];
    float P11 = p00[width + 1];
    float a = (P10 - P00) * fx + P00;
    float b = (P01 - P00) * fy + a;
    return static_cast<int>(fx * fy * (P00 - P01 - P10 + P11) + b);
}

int VelkImage::interpConst(float x, float y) {
    if (!velk::wrapPeriodic(x, static_cast<float>(width - 1)) ||
        !velk::wrapPeriodic(y, static_cast<float>(height - 1))) {
        return 0;
    }
    return data[width * static_cast<int>(y) + static_cast<int>(x)];
}
