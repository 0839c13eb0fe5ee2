#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include <velk/velk.h>
#include "TestSupport.h"

// Guards the engine's output byte for byte while its inner loops are tuned: a
// matrix of settings is recomputed and its hashes compared with the recorded
// ones in tests/data/lic/hashes.txt.

namespace {

enum FieldKind { kCircle, kSaddle, kLinear, kBrusselator, kFineCircle };
const char* const kFieldNames[] = {"circle", "saddle", "linear", "brusselator", "finecircle"};

struct HashCase {
    FieldKind field;
    int kernel, subPixels, seeding, interpolation, channels;
    bool euler;
    float normalization;
    float filterLength = 20.0f;
    float extensionLength = 80.0f;
    float stepSize = 1.0f;
    bool paddedRows = false;

    std::string name() const {
        std::ostringstream s;
        s << kFieldNames[field] << "-k" << kernel << "-sub" << subPixels << "-seed" << seeding
          << "-interp" << interpolation << "-ch" << channels << (euler ? "-euler" : "-rk43")
          << "-norm" << normalization << "-L" << filterLength << "-M" << extensionLength << "-h"
          << stepSize << (paddedRows ? "-padded" : "");
        return s.str();
    }
};

// Every field, kernel, sub-pixel count and integrator together; seeding,
// interpolation, channels and normalisation vary across them so that each of
// their values meets each value of the others. Then single cases for the
// remaining settings.
std::vector<HashCase> hashCases() {
    const float norms[] = {0.0f, 0.05f, 0.3f, 2.0f};
    std::vector<HashCase> cases;
    for (int f = kCircle; f <= kBrusselator; f++) {
        for (int k = 0; k < 3; k++) {
            for (int s = 1; s <= 3; s++) {
                for (int e = 0; e < 2; e++) {
                    const int channels = (k + s + e + f / 2) % 2 == 0 ? 1 : 3;
                    cases.push_back({static_cast<FieldKind>(f), k, s, (f + 2 * k + s + e) % 3,
                                     (f + k + e) % 2, channels, e == 1,
                                     norms[(f / 2 + 2 * f + k + s + 2 * e) % 4]});
                }
            }
        }
    }
    const HashCase singles[] = {{kCircle, 0, 1, 1, 1, 1, false, 0, 60},
                                {kLinear, 2, 2, 2, 1, 1, true, 0, 3},
                                {kBrusselator, 1, 2, 0, 1, 3, false, 0, 20, 0},
                                {kSaddle, 1, 1, 1, 0, 1, true, 0.3f, 20, 10},
                                {kCircle, 1, 1, 2, 1, 1, false, 0, 20, 80, 0.5f},
                                {kLinear, 2, 1, 1, 1, 1, true, 0, 20, 80, 2},
                                {kCircle, 1, 2, 1, 1, 3, false, 0, 20, 80, 1, true},
                                {kLinear, 0, 1, 0, 0, 1, true, 0, 20, 80, 1, true},
                                {kFineCircle, 1, 1, 1, 1, 1, false, 0},
                                {kFineCircle, 2, 3, 2, 0, 3, true, 0}};
    cases.insert(cases.end(), std::begin(singles), std::end(singles));
    return cases;
}

void makeField(FieldKind kind, VelkVectorField& field) {
    const float m[2][2] = {{0.2f, 1.0f}, {-1.0f, 0.1f}}, b[2] = {0.1f, 0.0f};
    if (kind == kCircle) field.setSize(17, 17), field.setCircle(0.0f);
    if (kind == kSaddle) field.setSaddle();
    if (kind == kLinear) field.setSize(21, 13), field.setLinear(m, b);
    if (kind == kBrusselator) field.setSize(25, 25), field.setBrusselator(4, 4, 1, 3);
    // More nodes than texture pixels.
    if (kind == kFineCircle) field.setSize(97, 71), field.setCircle(0.4f);
}

std::string hashOf(const HashCase& c, std::string& failure) {
    VelkVectorField field;
    makeField(c.field, field);
    const int width = 48, height = 40;
    const int stride = width * c.channels + (c.paddedRows ? 5 : 0);
    std::vector<unsigned char> buffer(static_cast<std::size_t>(stride) * height, 0xA5);
    VelkImage texture(width, height, c.channels, stride, c.paddedRows ? buffer.data() : nullptr);
    texture.createRandom(0, 17 + static_cast<int>(c.field));

    VelkCompute engine;
    engine.setNormalization(c.normalization);
    if (c.euler) engine.useEuler();
    engine.setFilterKernel(static_cast<VelkCompute::FilterKernel>(c.kernel));
    engine.setNumSubPixels(c.subPixels);
    engine.seedingMode = c.seeding;
    engine.setInterpolationMethod(static_cast<VelkCompute::InterpolationMethod>(c.interpolation));
    engine.setFilterLength(c.filterLength);
    engine.extensionLength = c.extensionLength;
    engine.stepSize = c.stepSize;

    VelkImage output;
    velktest::MessageCapture capture;
    if (engine.compute(&field, &texture, &output, nullptr, nullptr) != 1) {
        failure = capture.errorText();
        return "";
    }
    velktest::Hash hash;
    for (int y = 0; y < output.height; y++) {
        hash.bytes(output.data + static_cast<std::size_t>(y) * output.bytesPerLine,
                   static_cast<std::size_t>(output.width) * output.nChannels);
    }
    return hash.add(engine.numFieldLines).add(engine.totalHits).hex();
}

}  // namespace

TEST(LicHashes, OutputsMatchTheRecordedHashes) {
    velktest::Hashes hashes;
    for (const HashCase& c : hashCases()) {
        std::string failure;
        hashes.push_back({c.name(), hashOf(c, failure)});
        ASSERT_TRUE(failure.empty()) << c.name() << ": " << failure;
    }
    velktest::expectRecorded("lic/hashes.txt", hashes);
}

// Masks and seed maps under every seeding mode, and the settings and inputs at
// the edges: against tests/data/recorded/lic-edges.txt. The output starts as
// 3 x 2 pixels of 77, which a refused mask leaves alone.
TEST(LicHashes, MasksSeedMapsAndEdgesMatchTheRecordedHashes) {
    VelkVectorField circle, zero(7, 7, nullptr), small(2, 2, nullptr);
    circle.setSize(12, 10);
    circle.setCircle(0.4f);
    small.setCircle(1.0f);
    for (int i = 0; i < 98; i++) zero.data[i] = 0.0f;
    VelkImage mask(12, 10), wrongMask(9, 8), texture(30, 22), pairs(17, 13, 2), dot(1, 1),
        line(7, 1);
    for (int i = 0; i < 120; i++)
        mask.data[i] = i % 7 == 0 ? 0 : static_cast<unsigned char>(2 + i * 37 % 250);
    texture.createRandom(0, 4);
    pairs.createRandom(0, 5);
    dot.clear(200);
    line.createRandom(0, 6);
    std::vector<unsigned char> padded(22 * 100);
    for (size_t i = 0; i < padded.size(); i++) padded[i] = static_cast<unsigned char>(i * 7);
    VelkImage borrowed(30, 22, 3, 100, padded.data());
    velktest::Hashes hashes;
    for (int k = 0; k < 36; k++) {
        VelkCompute e;
        VelkVectorField* field = &circle;
        VelkImage *input = &texture, *withMask = nullptr, seeds, output(3, 2);
        output.clear(77);
        bool seedMap = k < 18 && k % 3 != 2;
        if (k < 18) e.seedingMode = k / 6, e.setNumSubPixels(1 + k / 3 % 2);
        if (k < 18 && k % 3 != 1) withMask = &mask;
        if (k == 18) e.setFilterKernel(static_cast<VelkCompute::FilterKernel>(3));
        if (k == 19) field = &zero;
        if (k == 20) e.setFilterLength(0.49f), input = &borrowed, withMask = &mask, seedMap = true;
        if (k == 21) withMask = &wrongMask, seedMap = true;
        if (k == 22) e.setNormalization(0.25f), e.useRK43(2.0f, 0.25f, 9.0f, 0.01f);
        if (k == 23) e.useRK43(4.0f, 0.5f, 15.0f, 0.0f);
        if (k == 24) input = &dot;
        if (k == 25) input = &line, e.useEuler();
        if (k == 26) field = &small, e.setNumSubPixels(3);
        if (k == 27) input = &pairs, e.setFilterKernel(VelkCompute::CUBIC);
        if (k == 28) e.stepSize = 0.3f, e.extensionLength = 3.0f, e.setOffsetLength(5.0f);
        if (k == 29) e.setFilterLength(200.0f), e.seedingMode = 2;
        if (k == 30) e.setFilterLength(0.5f);  // exactly one step each
        if (k == 31) e.extensionLength = 0.5f;
        // Kernel divisors beyond 2^23 take the wide running sums.
        if (k == 32) e.setFilterKernel(VelkCompute::CUBIC), e.setFilterLength(310.0f);
        if (k == 33) e.setFilterLength(2900.0f);
        if (k == 34) input = &dot, e.seedingMode = 2;
        if (k == 35) input = &line, e.seedingMode = 2, e.setNumSubPixels(2);
        velktest::MessageCapture capture(1);
        velktest::Hash h;
        h.add(e.compute(field, input, &output, withMask, seedMap ? &seeds : nullptr));
        h.add(output).add(seeds).add(e.numFieldLines).add(e.totalHits);
        for (const std::string& info : capture.infos())
            if (info.find("time for") == std::string::npos) h.add(info);
        hashes.push_back({"case-" + std::to_string(k), h.add(capture.errorText()).hex()});
    }
    // The extension with the best ratio of line counts, from the host's histogram.
    for (int base = 0; base < 3; base++) {
        for (int extension : {0, 2, 3, 9}) {
            VelkCompute e;
            e.nExtension = extension;
            e.nFilter = 2 - base;
            e.zaehlrohrBase = base;
            for (int i = 0; i < 12; i++)
                e.zaehlrohr[i][0] = i * 7 % 5, e.zaehlrohr[i][1] = i * 3 % 4;
            e.evalZaehlrohr();
            velktest::Hash h;
            h.add(e.nExtension).bytes(e.zaehlrohr, 12 * sizeof e.zaehlrohr[0]);
            hashes.push_back(
                {"zaehlrohr-" + std::to_string(base) + "-" + std::to_string(extension), h.hex()});
        }
    }
    // The texture lookups a host may call, on a lattice beyond the texture.
    VelkCompute::PixelLookup lookups[] = {VelkCompute::getPixelConst1, VelkCompute::getPixelConstN,
                                          VelkCompute::getPixelBilinear1,
                                          VelkCompute::getPixelBilinearN};
    for (int l = 0; l < 4; l++) {
        velktest::Hash h;
        for (VelkImage* image : {&texture, &pairs, &borrowed, &dot}) {
            for (float y = -3.0f; y < 25.0f; y += 0.8125f) {
                for (float x = -3.0f; x < 33.0f; x += 0.6875f) {
                    int out[4] = {-1, -1, -1, -1};
                    lookups[l](image, x, y, out);
                    h.bytes(out, sizeof out);
                }
            }
        }
        hashes.push_back({"lookup-" + std::to_string(l), h.hex()});
    }
    velktest::expectRecorded("recorded/lic-edges.txt", hashes);
}
