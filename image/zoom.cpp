#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <vector>

#include <velk/VelkImage.h>
#include "destination.h"

namespace {

struct Contributor {
    int pixel;
    float weight;
};

struct ContributorList {
    int n;
    const Contributor* p;
};

// The contributor lists of one pass: list i names the source positions that
// output position i mixes, with their weights, in ascending source order.
class Contributors {
  public:
    Contributors(int n, int m);
    const ContributorList& operator[](int i) const { return lists[i]; }

  private:
    void add(long long j, float weight);

    int n;
    std::vector<Contributor> entries;
    std::vector<ContributorList> lists;
};

static float triangle_filter_function(float t) {
    if (t < 0.0f) t = -t;
    return t < 1.0f ? 1.0f - t : 0.0f;
}

Contributors::Contributors(int n, int m) : n(n), lists(m) {
    std::vector<size_t> starts(m);
    float scale = static_cast<float>(m) / static_cast<float>(n);
    if (scale < 1.0f) {
        // Shrinking widens the filter to the source spacing.
        float w = 1.0f / scale;
        for (int i = 0; i < m; i++) {
            starts[i] = entries.size();
            float centre = static_cast<float>(i) / scale;
            long long left = static_cast<long long>(std::ceil(centre - w));
            long long right = static_cast<long long>(std::floor(centre + w));
            for (long long j = left; j <= right; j++) {
                add(j, triangle_filter_function((centre - static_cast<float>(j)) / w) / w);
            }
        }
    } else {
        for (int i = 0; i < m; i++) {
            starts[i] = entries.size();
            float centre = static_cast<float>(i) / scale;
            long long left = static_cast<long long>(std::ceil(centre - 1.0f));
            long long right = static_cast<long long>(std::floor(centre + 1.0f));
            for (long long j = left; j <= right; j++) {
                add(j, triangle_filter_function(centre - static_cast<float>(j)));
            }
        }
    }
    for (int i = 0; i < m; i++) {
        size_t end = i + 1 < m ? starts[i + 1] : entries.size();
        lists[i] = {static_cast<int>(end - starts[i]), entries.data() + starts[i]};
    }
}

void Contributors::add(long long j, float weight) {
    // Mirrored about pixel 0 on the left, repeating the last pixel on the right.
    if (j < 0) {
        j = -j;
    } else if (j >= n) {
        j = 2LL * n - 1 - j;
    }
    // Very short sources reach past the mirror; keep every index inside.
    if (j < 0) j = 0;
    if (j > n - 1) j = n - 1;
    entries.push_back({static_cast<int>(j), weight});
}

unsigned char storeSum(float sum) {
    return static_cast<unsigned char>(static_cast<int>(sum));
}

}  // namespace

void VelkImage::zoom(int newWidth, int newHeight, VelkImage* dst) {
    velk::Destination dest(*this, dst);
    VelkImage& out = dest.target();
    const int channels = nChannels;
    if (newWidth <= 0 || newHeight <= 0 || width <= 0 || height <= 0 || channels <= 0) {
        // Nothing to resample from, or nothing to resample to.
        if (velk::imageBytes(newWidth, newHeight, channels) < 0) return;
        out.setSize(newWidth, newHeight, channels);
        out.clear(0);
        return;
    }
    const int oldHeight = height;
    if (velk::imageBytes(newWidth, oldHeight, channels) < 0 ||
        velk::imageBytes(newWidth, newHeight, channels) < 0) {
        return;  // the result or the intermediate would not fit the container's int sizes
    }

    // Rows to the new width, into the intermediate image.
    const int interLine = newWidth * channels;
    std::vector<unsigned char> intermediate(static_cast<size_t>(interLine) * oldHeight);
    {
        Contributors contrib(width, newWidth);
        std::vector<float> line(width);
        for (int y = 0; y < oldHeight; y++) {
            const unsigned char* row = data + static_cast<ptrdiff_t>(y) * bytesPerLine;
            unsigned char* o = intermediate.data() + static_cast<size_t>(y) * interLine;
            for (int c = 0; c < channels; c++) {
                for (int x = 0; x < width; x++) line[x] = row[x * channels + c];
                for (int i = 0; i < newWidth; i++) {
                    const ContributorList& list = contrib[i];
                    float sum = 0.0f;
                    for (int k = 0; k < list.n; k++) {
                        sum += line[list.p[k].pixel] * list.p[k].weight;
                    }
                    o[i * channels + c] = storeSum(sum);
                }
            }
        }
    }

    // The source is no longer needed: the target may be this image.
    out.setSize(newWidth, newHeight, channels);

    // Columns to the new height. Whole rows are accumulated at once; every
    // sample still sums its contributors in list order, starting from 0.
    Contributors contrib(oldHeight, newHeight);
    std::vector<float> sums(interLine);
    for (int r = 0; r < newHeight; r++) {
        const ContributorList& list = contrib[r];
        std::fill(sums.begin(), sums.end(), 0.0f);
        for (int k = 0; k < list.n; k++) {
            const unsigned char* in =
                intermediate.data() + static_cast<size_t>(list.p[k].pixel) * interLine;
            float weight = list.p[k].weight;
            for (int i = 0; i < interLine; i++) sums[i] += static_cast<float>(in[i]) * weight;
        }
        unsigned char* o = out.data + static_cast<ptrdiff_t>(r) * out.bytesPerLine;
        for (int i = 0; i < interLine; i++) o[i] = storeSum(sums[i]);
    }
}
