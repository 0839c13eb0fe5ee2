#include <velk/fastconv.h>

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "outputchannel.h"
#include "packedconv.h"

namespace {

// Three 256-entry tables of packed 10-bit tap products, the bias, the group count.
uint32_t globalLUT[770];
constexpr int kBias = 768;
constexpr int kGroups = 769;

// Lines up to this length (padding included) need no heap scratch.
constexpr int kStackScratch = 1032;

// Float to int toward zero; values int cannot hold give INT_MIN, as the
// processor's own conversion does, instead of undefined behaviour.
int truncate(float v) {
    if (!(v > -2147483648.0f && v < 2147483648.0f)) return INT_MIN;
    return static_cast<int>(v);
}

// w * v in quarter units, rounded.
int product(float w, int v) {
    return truncate(w * static_cast<float>(v) * 262144.0f + 32768.0f) >> 16;
}

// Keeps the field of a negative tap non-negative.
int offset(float w) {
    return w < 0.0f ? truncate(-w * 1024.0f) : 0;
}

template <int G>
void convolveLine(const unsigned char* src, int n, ptrdiff_t step, unsigned char* dst,
                  unsigned char* q) {
    constexpr int h = 3 * G - 1;
    std::memset(q, src[0], h);
    for (int j = 0; j < n; j++) q[h + j] = src[j * step];
    std::memset(q + h + n, src[(n - 1) * step], h);

    const uint32_t* table[G];
    int32_t forward[G];
    uint32_t backward[G];
    for (int t = 0; t < G; t++) {
        const uint32_t* T = globalLUT + 256 * t;
        table[t] = T;
        forward[t] = static_cast<int32_t>((T[q[h - 3 * t - 2]] >> 10) + T[q[h - 3 * t - 1]]);
        backward[t] = (T[q[h + 3 * t]] << 10) + T[q[h + 3 * t + 1]];
    }
    const int32_t bias = static_cast<int32_t>(globalLUT[kBias]);
    const unsigned char* centre = q + h;
    for (int j = 0; j < n; j++, centre++, dst += step) {
        int32_t sum = -bias;
        for (int t = 0; t < G; t++) {
            forward[t] = static_cast<int32_t>(static_cast<uint32_t>(forward[t] >> 10) +
                                              table[t][centre[-3 * t]]);
            backward[t] = (backward[t] << 10) + table[t][centre[3 * t + 2]];
            sum += (forward[t] & 1023) + ((backward[t] >> 20) & 1023);
        }
        int32_t out = sum >> 2;
        *dst = static_cast<unsigned char>(out <= 0 ? 0 : out > 255 ? 255 : out);
    }
}

}  // namespace

void velk_initPackedLuts(float* kernel, int n) {
    float sides = 0.0f;
    for (int i = 1; i < n; i++) sides += kernel[i];
    // An empty kernel sums to 0 (and has no centre tap to read).
    float sum = (n > 0 ? kernel[0] : 0.0f) + 2.0f * sides;
    if (static_cast<double>(std::fabs(sum - 1.0f)) > 0.001) {
        velk::writeStderr("Warning: filter sum != 1 (=%f)\n", static_cast<double>(sum));
    }

    uint32_t bias = 0;
    int groups = 0;
    for (int i = 0; i < n; i += 3, groups++) {
        float a = kernel[i];
        float b = i + 1 < n ? kernel[i + 1] : 0.0f;
        float c = i + 2 < n ? kernel[i + 2] : 0.0f;
        // The centre tap is gathered from both sides.
        if (groups == 0) a *= 0.5f;
        // The bound that keeps each packed field from overflowing into the next.
        if (std::fabs(a) + std::fabs(b) + std::fabs(c) > 1.0f) {
            velk::writeStderr("|%f|+|%f|+|%f| > 1\n", static_cast<double>(a),
                              static_cast<double>(b), static_cast<double>(c));
            velk::endProcess(1);
        }
        int oa = offset(a), ob = offset(b), oc = offset(c);
        bias += 2u * static_cast<uint32_t>(oa + ob + oc);
        uint32_t* T = globalLUT + 256 * (groups < 3 ? groups : 2);
        for (int v = 0; v < 256; v++) {
            T[v] = static_cast<uint32_t>(product(a, v) + oa) +
                   (static_cast<uint32_t>(product(b, v) + ob + 1) << 10) +
                   (static_cast<uint32_t>(product(c, v) + oc) << 20);
        }
    }
    globalLUT[kBias] = bias;
    globalLUT[kGroups] = static_cast<uint32_t>(groups);
}

bool velk::packedTablesUsable() {
    return globalLUT[kGroups] >= 1 && globalLUT[kGroups] <= 3;
}

void velk::packedConvolve(const unsigned char* src, int n, int step, unsigned char* dst,
                          unsigned char* scratch) {
    if (n <= 0) return;
    switch (globalLUT[kGroups]) {
        case 1:
            convolveLine<1>(src, n, step, dst, scratch);
            break;
        case 2:
            convolveLine<2>(src, n, step, dst, scratch);
            break;
        case 3:
            convolveLine<3>(src, n, step, dst, scratch);
            break;
        default:
            break;  // no usable kernel: nothing is written
    }
}

void velk_fastconv(unsigned char* src, int n, int step, unsigned char* dst) {
    if (n <= 0) return;
    size_t size = velk::packedScratchSize(n);
    if (size <= kStackScratch) {
        unsigned char scratch[kStackScratch];
        velk::packedConvolve(src, n, step, dst, scratch);
    } else {
        std::vector<unsigned char> scratch(size);
        velk::packedConvolve(src, n, step, dst, scratch.data());
    }
}
