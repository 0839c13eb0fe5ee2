#include <velk/VelkVectorField.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "resizeblock.h"

VelkVectorField::VelkVectorField() : ownedData(nullptr), data(nullptr), width(0), height(0) {}

VelkVectorField::VelkVectorField(int width, int height, float* data) : VelkVectorField() {
    if (data == nullptr) {
        setSize(width, height);
        return;
    }
    this->data = data;
    this->width = width;
    this->height = height;
}

VelkVectorField::~VelkVectorField() {
    if (ownedData) std::free(ownedData);
}

void VelkVectorField::setSize(int width, int height) {
    this->width = width;
    this->height = height;
    if (width * height != 0) {
        std::size_t bytes = static_cast<std::size_t>(static_cast<std::int64_t>(width) * 8 * height);
        ownedData = static_cast<float*>(velk::resizeBlock(ownedData, bytes));
    } else if (ownedData) {
        std::free(ownedData);
        ownedData = nullptr;
    }
    data = ownedData;
}

float VelkVectorField::getMax() {
    // An empty field has no node 0 to start from.
    if (data == nullptr || width <= 0 || height <= 0) return 0.0f;
    int n = width * height;
    const float* p = data;
    float max = p[0] * p[0] + p[1] * p[1];
    for (int i = 1; i < n; i++) {
        p += 2;
        float m = p[0] * p[0] + p[1] * p[1];
        if (m > max) max = m;
    }
    return std::sqrt(max);
}

void VelkVectorField::normalize() {
    float* p = data;
    for (int j = 0; j < height; j++) {
        for (int i = 0; i < width; i++, p += 2) {
            float length = std::sqrt(p[0] * p[0] + p[1] * p[1]);
            if (length > 0.0f) {
                p[0] /= length;
                p[1] /= length;
            }
        }
    }
}

void VelkVectorField::setCircle(float angle) {
    float s = std::sin(angle);
    float c = std::cos(angle);
    float* p = data;
    for (int j = 0; j < height; j++) {
        float y = static_cast<float>(j) / static_cast<float>(height - 1) - 0.5f;
        for (int i = 0; i < width; i++, p += 2) {
            float x = static_cast<float>(i) / static_cast<float>(width - 1) - 0.5f;
            p[0] = s * x - c * y;
            p[1] = c * x + s * y;
        }
    }
}

void VelkVectorField::setSaddle() {
    static const float kSaddle[8] = {-1, 1, 1, 1, -1, -1, 1, -1};
    setSize(2, 2);
    for (int k = 0; k < 8; k++) data[k] = kSaddle[k];
}

void VelkVectorField::setLinear(const float m[2][2], const float b[2]) {
    float* p = data;
    for (int j = 0; j < height; j++) {
        float y = static_cast<float>(j * 4) / static_cast<float>(height - 1) - 2.0f;
        for (int i = 0; i < width; i++, p += 2) {
            float x = static_cast<float>(i * 4) / static_cast<float>(width - 1) - 2.0f;
            p[0] = m[0][0] * x + m[0][1] * y + b[0];
            p[1] = m[1][0] * x + m[1][1] * y + b[1];
        }
    }
}

void VelkVectorField::setBrusselator(float xRange, float yRange, float a, float b) {
    float* p = data;
    for (int j = 0; j < height; j++) {
        float y = static_cast<float>(j) * yRange / static_cast<float>(height - 1);
        for (int i = 0; i < width; i++, p += 2) {
            float x = static_cast<float>(i) * xRange / static_cast<float>(width - 1);
            p[0] = (x * x * y + a - (b + 1.0f) * x) / xRange;
            p[1] = (b * x - x * x * y) / yRange;
        }
    }
}
