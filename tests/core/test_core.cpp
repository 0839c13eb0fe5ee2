// The image and vector-field containers over tables of inputs, against the
// hashes recorded in tests/data/recorded/core.txt.
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "periodic.h"

using namespace velktest;

namespace {

Hash& add(Hash& h, const VelkVectorField& f) {
    h.add(f.width).add(f.height).add(f.data == nullptr ? 0 : f.data == f.ownedData ? 1 : 2);
    return f.data ? h.bytes(f.data, 8 * static_cast<size_t>(f.width) * f.height) : h;
}

}  // namespace

TEST(Containers, OutputsMatchTheRecordedHashes) {
    Hashes hashes;
    // Periodic samples on a lattice reaching far beyond the image, and at
    // values that cannot be wrapped.
    const int sizes[][2] = {{4, 3}, {2, 2}, {5, 1}, {1, 4}, {13, 9}};
    for (const auto& s : sizes) {
        VelkImage image(s[0], s[1]);
        image.createRandom(0, s[0] + s[1]);
        Hash h;
        for (float y = -7.0f; y < 9.0f; y += 0.4375f)
            for (float x = -9.0f; x < 17.0f; x += 0.3125f)
                h.add(image.interp(x, y)).add(image.interpConst(x, y));
        for (float v : {NAN, INFINITY, -INFINITY, 1e30f, -3e7f, 16777215.0f})
            h.add(image.interp(v, 0.5f)).add(image.interp(0.5f, v)).add(image.interpConst(v, v));
        hashes.push_back({"interp/" + std::to_string(s[0]) + "x" + std::to_string(s[1]), h.hex()});
    }
    // Noise: reseeded, continued, binary; through a padded buffer that is
    // copied, assigned (also to itself), cleared and resized.
    Hash noise;
    std::vector<unsigned char> buffer(8 * 5, 0xA5);
    {
        VelkImage grey(7, 5, 3), binary(6, 4), empty, borrowed(5, 5, 1, 8, buffer.data());
        grey.createRandom(0, 42);
        empty.createRandom(0, 0);
        binary.createRandom(1, 0);
        borrowed.createRandom(0, 9);
        VelkImage copy(borrowed), assigned;
        assigned = borrowed;
        noise.add(grey).add(binary).add(copy).add(assigned);
        noise.bytes(buffer.data(), buffer.size());
        const VelkImage& self = borrowed;
        borrowed = self;
        noise.add(borrowed).add(borrowed.data == buffer.data() ? 1 : 0);
        VelkImage(5, 5, 1, 8, buffer.data()).clear(300);
        noise.bytes(buffer.data(), buffer.size());
        for (int w : {3, 0, -2}) {
            grey.setSize(w, 2, 3);
            grey.clear(1);
            noise.add(grey.width).add(grey.bytesPerLine).add(grey.data ? 1 : 0).add(grey);
        }
    }
    noise.bytes(buffer.data(), buffer.size());
    hashes.push_back({"noise", noise.hex()});
    // Analytic fields on grids of every shape, measured and normalised.
    const float m[2][2] = {{0.2f, 1}, {-1, 0.1f}}, b[2] = {0.1f, 0};
    const int grids[][2] = {{3, 3}, {7, 5}, {4, 1}, {1, 3}, {16, 9}};
    for (const auto& g : grids) {
        Hash h;
        for (int kind = 0; kind < 5; kind++) {
            VelkVectorField f(g[0], g[1], nullptr);
            if (kind == 0) f.setCircle(0.0f);
            if (kind == 1) f.setCircle(1.5707964f);
            if (kind == 2) f.setSaddle();
            if (kind == 3) f.setLinear(m, b);
            if (kind == 4) f.setBrusselator(4, 2, 1, 3);
            add(h, f);
            if (f.width > 0 && f.height > 0) h.add(f.getMax());
            f.normalize();
            const size_t nodes = static_cast<size_t>(f.width) * f.height;
            f.setSize(f.width + 1, f.height);  // the leading nodes stay
            h.bytes(f.data, 8 * nodes);
        }
        hashes.push_back({"fields/" + std::to_string(g[0]) + "x" + std::to_string(g[1]), h.hex()});
    }
    expectRecorded("recorded/core.txt", hashes);
}

// A borrowed buffer is the caller's: never resized or freed.
TEST(Containers, BorrowedBuffersStayTheCallers) {
    std::vector<float> nodes(8, 1.5f);
    {
        VelkVectorField field(2, 2, nodes.data());
        field.setSize(4, 3);
        EXPECT_EQ(field.data, field.ownedData);
        field.setSize(0, 5);
        EXPECT_EQ(field.data, nullptr);
    }
    EXPECT_EQ(nodes, std::vector<float>(8, 1.5f));
}

// Not a timing: a watch started and stopped at once has taken next to no time.
TEST(Containers, WatchMeasuresFromItsStart) {
    UxWatch watch;
    watch.start();
    watch.stop();
    EXPECT_TRUE(watch.elapsed() >= 0.0 && watch.elapsed() < 60.0) << watch.elapsed();
    EXPECT_TRUE(watch.cpu() >= 0.0 && watch.cpu() < 60.0) << watch.cpu();
}

// The wrap takes a shortcut for far-out values; it must round exactly as the
// plain loop does.
TEST(PeriodicWrap, MatchesRepeatedStepsForWholePeriods) {
    srand48(11);
    for (float period : {1.0f, 2.0f, 31.0f, 95.0f, 1023.0f}) {
        for (int k = 0; k < 2000; k++) {
            float v = static_cast<float>((drand48() - 0.5) * 200.0 * period);
            if (k % 3 == 0) v = std::nextafter(std::floor(v / period) * period, 0.0f);
            float loop = v, wrapped = v;
            while (loop < 0.0f) loop += period;
            while (loop >= period) loop -= period;
            ASSERT_TRUE(velk::wrapPeriodic(wrapped, period));
            ASSERT_EQ(wrapped, loop) << "v = " << v << ", period = " << period;
        }
    }
    float far = 1e30f;  // beyond 2^24 the loop would stall; the wrap still ends
    EXPECT_TRUE(velk::wrapPeriodic(far, 7.0f));
    EXPECT_TRUE(far >= 0.0f && far < 7.0f) << far;
}
