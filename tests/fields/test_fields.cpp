// Derived fields, scalar fields, colour maps and colour spaces over tables of
// inputs, against the hashes recorded in tests/data/recorded/fields-*.txt.
#include <cmath>
#include <memory>
#include <sstream>
#include <string>

#include "TestSupport.h"

using namespace velktest;

namespace {

Hash& add(Hash& h, const VelkVectorField& f) {
    h.add(f.width).add(f.height).add(f.data == f.ownedData ? 1 : 0);
    return f.data ? h.bytes(f.data, 8 * static_cast<size_t>(f.width) * f.height) : h;
}

Hash& add(Hash& h, const VelkScalarField& f) {
    h.add(f.width).add(f.height);
    return f.data ? h.bytes(f.data, 4 * static_cast<size_t>(f.width) * f.height) : h;
}

Hash& add(Hash& h, const VelkColormap& m) {
    return h.bytes(m.colors, sizeof m.colors).add(m.min).add(m.max).add(m.scale);
}

// Vector fields with turns, zero and negative-zero nodes, a borrowed buffer,
// a single column and a single row.
float gBorrowed[12];
std::unique_ptr<VelkVectorField> makeVector(int kind) {
    for (int k = 0; k < 12; k++) gBorrowed[k] = static_cast<float>(k * k % 7) - 3.0f;
    if (kind == 2) return std::make_unique<VelkVectorField>(3, 2, gBorrowed);
    auto f = std::make_unique<VelkVectorField>(kind ? 6 : 9, kind ? 5 : 7, nullptr);
    if (kind == 0) f->setCircle(0.4f);
    if (kind == 3) f->setSize(1, 4);
    if (kind == 4) f->setSize(5, 1);
    for (int n = 0; kind != 0 && n < f->width * f->height; n++) {
        f->data[2 * n] = n == 7 ? 0.0f : std::sin(0.7f * n) * static_cast<float>(n % 4);
        f->data[2 * n + 1] = n == 7 ? -0.0f : std::cos(0.3f * n) - 0.5f;
    }
    return f;
}

void makeScalar(int kind, VelkScalarField& s) {
    const int sizes[][2] = {{9, 7}, {5, 4}, {2, 2}, {4, 6}, {3, 1}};
    s.setSize(sizes[kind][0], sizes[kind][1]);
    if (kind == 0) s.createDipole(2.0f, 0.25f);
    if (kind == 1) s.createCircle();
    if (kind >= 2)
        for (int n = 0; n < s.width * s.height; n++)
            s.data[n] = static_cast<float>(n * n % 5) - 1.5f;
}

}  // namespace

TEST(DerivedFields, OutputsMatchTheRecordedHashes) {
    Hashes hashes;
    const auto record = [&](const std::string& name, const Hash& h) {
        hashes.push_back({name, h.hex()});
    };
    const int grids[][2] = {{4, 3}, {13, 11}, {1, 1}, {2, 5}};
    for (int kind = 0; kind < 5; kind++) {
        const std::string k = std::to_string(kind);
        for (const auto& g : grids) {
            const std::string size = std::to_string(g[0]) + "x" + std::to_string(g[1]);
            VelkVectorField dst;
            VelkScalarField magnitude(g[0], g[1], nullptr);
            VelkImage rgb(g[0], g[1], 3), grey(g[0] + 1, g[1], 1);
            rgb.clear(7);
            grey.clear(7);
            auto f = makeVector(kind), self = makeVector(kind);
            f->resample(g[0], g[1], &dst);
            self->resample(g[0], g[1], self.get());
            Hash h;
            add(add(add(h, *f), dst), *self);
            f->resample(g[0], g[1], nullptr);
            record("resample/" + k + "/" + size, add(h, *f));
            f = makeVector(kind);
            f->magnitude(magnitude, 0);
            f->vecToColor(rgb, 0);
            f->vecToColor(grey, 0);
            Hash sampled;
            record("display/" + k + "/" + size, add(sampled, magnitude).add(rgb).add(grey));
        }
        auto f = makeVector(kind);
        VelkScalarField magnitude;
        VelkImage image;
        f->magnitude(magnitude, 1);
        f->vecToColor(image, 1);
        Hash h;
        add(h, magnitude).add(image).add(f->getMax());
        f->normalize();
        record("display/" + k + "/same", add(h, *f));
    }
    for (int kind = 0; kind < 5; kind++) {
        VelkScalarField s;
        VelkVectorField f;
        makeScalar(kind, s);
        Hash h;
        float lo, hi;
        s.getRange(lo, hi);
        add(h, s).add(lo).add(hi);
        for (float angle : {0.0f, 1.5707964f, 0.7f}) f.fromScalarField(s, angle), add(h, f);
        VelkColormap map;
        map.createHotIron();
        map.setMinMax(-1.0f, 1.0f);
        VelkImage same, rgb(7, 6, 3), grey(4, 4, 1);
        s.pseudoColor(map, same, 1);
        s.pseudoColor(map, rgb, 0);
        s.pseudoColor(map, grey, 0);
        record("scalar/" + std::to_string(kind), h.add(same).add(rgb).add(grey));
    }
    // Images: grey, colour, and a borrowed grey one with padded rows.
    unsigned char padded[24];
    for (int i = 0; i < 24; i++) padded[i] = static_cast<unsigned char>(i * 41 % 256);
    VelkImage images[] = {VelkImage(7, 5, 1), VelkImage(5, 4, 3), VelkImage(4, 3, 6, padded)};
    images[0].createRandom(0, 3);
    images[1].createRandom(0, 4);
    for (int i = 0; i < 3; i++) {
        Hash h;
        for (float angle : {0.0f, 1.5707964f, -0.3f}) {
            VelkVectorField f;
            f.fromImage(images[i], angle);
            add(h, f);
        }
        record("fromImage/" + std::to_string(i), h.add(images[i]));
    }
    expectRecorded("recorded/fields-derived.txt", hashes);
}

// Presets and transformations into a destination, onto the map itself and in
// place; lookups across and beyond [0, 1]; both colour-space conversions on a
// lattice of colours, hues out of range among them.
TEST(Colour, OutputsMatchTheRecordedHashes) {
    Hashes hashes;
    void (VelkColormap::*presets[])() = {
        &VelkColormap::createGreyRamp, &VelkColormap::createHotIron,
        &VelkColormap::createBlueWhiteRed, &VelkColormap::createHueRamp};
    for (int p = 0; p < 4; p++) {
        VelkColormap map, dst, self;
        map.setMinMax(3.0f, 5.0f);
        (map.*presets[p])();
        Hash h;
        add(h, map);
        float rgb[3];
        for (float t = -0.1f; t < 1.1f; t += 1.0f / 512) map.getColor1(t, rgb), h.bytes(rgb, 12);
        for (float t : {NAN, INFINITY, -INFINITY, 0.99999994f})
            map.getColor1(t, rgb), h.bytes(rgb, 12);
        map.flip(&dst);
        add(h, dst);
        for (float factor : {0.9f, 2.0f, -1.0f}) {
            self = map;
            map.multiply(factor, &dst);
            self.multiply(factor, nullptr);
            add(add(h, dst), self);
        }
        for (float g : {2.0f, 0.5f}) {
            self = map;
            map.gamma(g, &dst);
            self.gamma(g, &self);
            add(add(h, dst), self);
        }
        map.flip(nullptr);
        hashes.push_back({"colormap/" + std::to_string(p), add(h, map).hex()});
    }
    Hash toHsl, toRgb;
    for (int i = 0; i < 7 * 7 * 7; i++) {
        const float c[3] = {(i % 7) / 6.0f, (i / 7 % 7) / 6.0f, (i / 49) / 6.0f};
        float hsl[3] = {0.3f, 0.4f, 0.6f}, rgb[3] = {-9, -9, -9};
        RGB_to_HSL(c, hsl);
        toHsl.bytes(hsl, 12);
        const float h[3] = {(i % 7) / 4.0f - 0.25f, (i / 7 % 7) / 6.0f, (i / 49) / 6.0f};
        HSL_to_RGB(h, rgb);
        toRgb.bytes(rgb, 12);
    }
    hashes.push_back({"RGB_to_HSL", toHsl.hex()});
    hashes.push_back({"HSL_to_RGB", toRgb.hex()});
    expectRecorded("recorded/fields-colour.txt", hashes);
}
