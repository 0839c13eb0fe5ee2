#include "recordfill.h"

#include "fillfour.h"

namespace velk {
namespace {

template <LookupKind kLookup, bool kSubPixels>
void fillRecords(const RecordFill& f, const Vec2f* positions, VelkCompute::LinePoint* points,
                 int* samples, int lo, int first, int last, int hi) {
    constexpr bool kBilinear = kLookup == kLookupBilinear1;
    int i = lo;
    if ((kLookup == kLookupBilinear1 || kLookup == kLookupConst1) && f.channels == 1 &&
        f.texture.nChannels == 1 && smallImage(f)) {
        const Lanes lanes(f);
        for (; i + 3 <= hi; i += 4) {
            const bool pixels = i + 3 >= first && i <= last;
            if (pixels ? fillFour<kBilinear, kSubPixels, true>(f, lanes, positions + i, points + i,
                                                               samples + i)
                       : fillFour<kBilinear, kSubPixels, false>(f, lanes, positions + i, points + i,
                                                                samples + i)) {
                continue;
            }
            for (int k = i; k < i + 4; k++) {
                fillRecord<kLookup, kSubPixels, true>(f, positions[k], points[k], samples + k);
            }
        }
    }
    for (; i <= hi; i++) {
        int* out = samples + static_cast<std::ptrdiff_t>(i) * f.channels;
        if (i >= first && i <= last) {
            fillRecord<kLookup, kSubPixels, true>(f, positions[i], points[i], out);
        } else {
            fillRecord<kLookup, kSubPixels, false>(f, positions[i], points[i], out);
        }
    }
}

template <LookupKind kLookup>
void fillRecords(const RecordFill& f, const Vec2f* positions, VelkCompute::LinePoint* points,
                 int* samples, int lo, int first, int last, int hi) {
    if (f.subPixels == 1) {
        fillRecords<kLookup, false>(f, positions, points, samples, lo, first, last, hi);
    } else {
        fillRecords<kLookup, true>(f, positions, points, samples, lo, first, last, hi);
    }
}

}  // namespace

void fillLine(const RecordFill& f, LookupKind kind, const Vec2f* positions,
              VelkCompute::LinePoint* points, int* samples, int lo, int first, int last, int hi) {
    withLookup(kind, [&](auto lookup) {
        fillRecords<decltype(lookup)::value>(f, positions, points, samples, lo, first, last, hi);
    });
}

}  // namespace velk
