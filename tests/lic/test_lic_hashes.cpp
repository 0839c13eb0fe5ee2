#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <velk/velk.h>
#include "TestSupport.h"

// Guards the engine's output byte for byte while its inner loops are tuned: a
// matrix of settings is recomputed and its hashes compared with the recorded
// ones in tests/data/lic/hashes.txt. Setting VELK_RECORD_LIC_HASHES to a file
// name writes the current hashes there instead of comparing.

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
                    HashCase c{static_cast<FieldKind>(f),
                               k,
                               s,
                               (f + 2 * k + s + e) % 3,
                               (f + k + e) % 2,
                               (k + s + e + f / 2) % 2 == 0 ? 1 : 3,
                               e == 1,
                               norms[(f / 2 + 2 * f + k + s + 2 * e) % 4]};
                    cases.push_back(c);
                }
            }
        }
    }
    HashCase longBox{kCircle, 0, 1, 1, 1, 1, false, 0.0f};
    longBox.filterLength = 60.0f;
    HashCase shortCubic{kLinear, 2, 2, 2, 1, 1, true, 0.0f};
    shortCubic.filterLength = 3.0f;
    HashCase noExtension{kBrusselator, 1, 2, 0, 1, 3, false, 0.0f};
    noExtension.extensionLength = 0.0f;
    HashCase shortExtension{kSaddle, 1, 1, 1, 0, 1, true, 0.3f};
    shortExtension.extensionLength = 10.0f;
    HashCase halfStep{kCircle, 1, 1, 2, 1, 1, false, 0.0f};
    halfStep.stepSize = 0.5f;
    HashCase doubleStep{kLinear, 2, 1, 1, 1, 1, true, 0.0f};
    doubleStep.stepSize = 2.0f;
    HashCase padded{kCircle, 1, 2, 1, 1, 3, false, 0.0f};
    padded.paddedRows = true;
    HashCase paddedGrey{kLinear, 0, 1, 0, 0, 1, true, 0.0f};
    paddedGrey.paddedRows = true;
    for (const HashCase& c :
         {longBox, shortCubic, noExtension, shortExtension, halfStep, doubleStep, padded,
          paddedGrey, HashCase{kFineCircle, 1, 1, 1, 1, 1, false, 0.0f},
          HashCase{kFineCircle, 2, 3, 2, 0, 3, true, 0.0f}}) {
        cases.push_back(c);
    }
    return cases;
}

void makeField(FieldKind kind, VelkVectorField& field) {
    switch (kind) {
        case kCircle:
            field.setSize(17, 17);
            field.setCircle(0.0f);
            break;
        case kSaddle:
            field.setSaddle();
            break;
        case kLinear: {
            const float m[2][2] = {{0.2f, 1.0f}, {-1.0f, 0.1f}};
            const float b[2] = {0.1f, 0.0f};
            field.setSize(21, 13);
            field.setLinear(m, b);
            break;
        }
        case kBrusselator:
            field.setSize(25, 25);
            field.setBrusselator(4, 4, 1, 3);
            break;
        case kFineCircle:
            // More nodes than texture pixels.
            field.setSize(97, 71);
            field.setCircle(0.4f);
            break;
    }
}

struct Fnv1a {
    std::uint64_t h = 14695981039346656037ull;
    void add(const unsigned char* p, std::size_t n) {
        for (std::size_t i = 0; i < n; i++) {
            h ^= p[i];
            h *= 1099511628211ull;
        }
    }
    void add(int v) {
        const std::uint32_t u = static_cast<std::uint32_t>(v);
        const unsigned char bytes[4] = {
            static_cast<unsigned char>(u), static_cast<unsigned char>(u >> 8),
            static_cast<unsigned char>(u >> 16), static_cast<unsigned char>(u >> 24)};
        add(bytes, 4);
    }
};

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
    Fnv1a hash;
    for (int y = 0; y < output.height; y++) {
        hash.add(output.data + static_cast<std::size_t>(y) * output.bytesPerLine,
                 static_cast<std::size_t>(output.width) * output.nChannels);
    }
    hash.add(engine.numFieldLines);
    hash.add(engine.totalHits);
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash.h));
    return text;
}

}  // namespace

TEST(LicHashes, OutputsMatchTheRecordedHashes) {
    const std::vector<HashCase> cases = hashCases();
    const char* record = std::getenv("VELK_RECORD_LIC_HASHES");
    if (record) {
        std::ofstream out(record);
        for (const HashCase& c : cases) {
            std::string failure;
            out << c.name() << ' ' << hashOf(c, failure) << '\n';
        }
        GTEST_SKIP() << "hashes written to " << record;
    }

    std::map<std::string, std::string> recorded;
    std::istringstream in(velktest::readFile(velktest::dataPath("lic/hashes.txt")));
    std::string name, hash;
    while (in >> name >> hash) recorded[name] = hash;
    ASSERT_EQ(recorded.size(), cases.size()) << "the recorded set and the matrix differ";

    int differing = 0;
    for (const HashCase& c : cases) {
        std::string failure;
        const std::string actual = hashOf(c, failure);
        ASSERT_TRUE(failure.empty()) << c.name() << ": " << failure;
        const auto it = recorded.find(c.name());
        ASSERT_NE(it, recorded.end()) << c.name() << " has no recorded hash";
        if (actual != it->second) {
            ADD_FAILURE() << c.name() << ": " << actual << ", recorded " << it->second;
            differing++;
        }
    }
    EXPECT_EQ(differing, 0);
}
