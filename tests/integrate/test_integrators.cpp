#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>

#include "TestSupport.h"

using namespace velktest;

namespace {

const float kNaN = NAN;

// Fields for every way a line can go on or end: smooth turns, speed ramps,
// critical points, bad nodes, borders, grids too thin to have a domain.
Vec2f node(int field, int i, int j) {
    switch (field) {
        case 0:
            return {0.3f * (16 - j), 0.3f * (i - 16)};
        case 1:
            return {1, 0};
        case 2:
            return {1 + 0.05f * i, 0};
        case 3:
            return {i < 10 ? 1.0f : 0.0f, 0};
        case 4:
            return {i == 8 && j == 2 ? kNaN : 1.0f, 0};
        case 5:
            return {1, 0.004f * (i - 120)};
        case 6:
            return {std::sin(0.4f * j) + 0.2f, std::cos(0.3f * i)};
        case 7:
            return {1e-3f * (j - 5.5f), 1e-11f * i};
        default:
            return {1, 1};
    }
}
const struct {
    const char* name;
    int width, height;
    Vec2f start;
} kFields[] = {
    {"rotation", 33, 33, {20, 12}}, {"uniform", 20, 16, {1, 8}}, {"ramp", 64, 16, {30, 8}},
    {"stop", 30, 16, {3, 8}},       {"badnode", 16, 16, {2, 2}}, {"parabola", 241, 41, {5, 30}},
    {"swirl", 25, 19, {12, 9}},     {"slow", 12, 12, {6, 8}},    {"thin", 1, 5, {0, 2}}};

Grid grid(int field) {
    return Grid(kFields[field].width, kFields[field].height,
                [=](int i, int j) { return node(field, i, j); });
}

std::string hex(float v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%a", static_cast<double>(v));
    return buf;
}

}  // namespace

// Each file holds 60 calls of next(magnitude, status) on a 33 x 33 setCircle(0.3)
// field with stepSize 0.7 after init((20, 12), (0, 1), 0.25), computed by an
// independent implementation; x, y and the magnitude are hex floats, compared
// bit for bit. The magnitude argument is preset to -1 before every call, which
// shows where it is left unwritten.
TEST(TraceReplay, PointStreamsMatchRecordedTracesBitForBit) {
    const struct {
        const char* scheme;
        int direction;
    } cases[] = {{"euler", -1}, {"midpoint", 1}, {"rk43", 1}, {"rkck", 1}, {"rkdp", -1}};
    VelkVectorField field(33, 33, nullptr);
    field.setCircle(0.3f);
    for (const auto& c : cases) {
        const std::string file =
            std::string("trace-") + c.scheme + (c.direction > 0 ? "-forward.txt" : "-backward.txt");
        SCOPED_TRACE(file);
        std::istringstream lines(readFile(dataPath("integrate/" + file)));
        auto it = makeScheme(c.scheme, c.direction);
        it->setField(33, 33, reinterpret_cast<Vec2f*>(field.data));
        it->stepSize = 0.7f;
        it->init({20.0f, 12.0f}, {0.0f, 1.0f}, 0.25f);
        int calls = 0;
        for (std::string line; std::getline(lines, line);) {
            if (line.empty() || line[0] == '#') continue;
            std::istringstream words(line);
            int call, status;
            std::string x, y, mag;
            ASSERT_TRUE(words >> call >> x >> y >> status >> mag) << line;
            ASSERT_EQ(call, ++calls);
            float magnitude = -1.0f;
            int gotStatus = -1;
            const Vec2f& p = it->next(magnitude, gotStatus);
            const auto exact = [](const std::string& v) {
                return hex(std::strtof(v.c_str(), nullptr));
            };
            ASSERT_EQ(
                hex(p.x) + " " + hex(p.y) + " " + std::to_string(gotStatus) + " " + hex(magnitude),
                exact(x) + " " + exact(y) + " " + std::to_string(status) + " " + exact(mag))
                << "call " << call;
        }
        EXPECT_EQ(calls, 60);
    }
}

// Every scheme both ways through every field at several spacings,
// normalisation thresholds and tolerances (0 rejects every step, 1e9 accepts
// every one): 80 calls, alternating the two next() overloads, with the
// magnitude preset to -1; against tests/data/recorded/integrate-lines.txt.
TEST(Lines, PointsStatusAndMagnitudesMatchTheRecordedHashes) {
    const struct {
        float stepSize, normalization, tolerance;
    } settings[] = {{0.7f, 0, 0.001f}, {2.5f, 4, 0.001f}, {1, 0, 0}, {1, 0.5f, 1e9f}};
    Hashes hashes;
    for (int field = 0; field < 9; field++) {
        const auto& f = kFields[field];
        Grid g = grid(field);
        for (const char* scheme : kSchemes) {
            for (int direction : {1, -1}) {
                for (const auto& s : settings) {
                    auto it = makeScheme(scheme, direction, s.tolerance);
                    it->normalization = s.normalization;
                    g.attach(*it);
                    it->stepSize = s.stepSize;
                    it->init(f.start, {0.0f, 1.0f}, 0.25f);
                    Hash h;
                    for (int call = 0; call < 80; call++) {
                        float magnitude = -1.0f;
                        int status = -1;
                        const Vec2f& p = call % 2 ? it->next(status) : it->next(magnitude, status);
                        h.add(p.x).add(p.y).add(status).add(magnitude);
                    }
                    std::ostringstream name;
                    name << f.name << "/" << scheme << "/dir" << direction << "/h" << s.stepSize
                         << "/norm" << s.normalization << "/tol" << s.tolerance;
                    hashes.push_back({name.str(), h.add(it->status).hex()});
                }
            }
        }
    }
    expectRecorded("recorded/integrate-lines.txt", hashes);
}

// The derivative, status and magnitude on a lattice reaching past every
// border, both directions, with and without normalisation threshold; and on a
// grid so wide that width - 1.001 rounds to width - 1 (the last column must
// not read the node to its right). Against tests/data/recorded/integrate-derivs.txt.
TEST(FieldEvaluation, DerivativesMatchTheRecordedHashes) {
    Hashes hashes;
    for (int field = 0; field < 9; field++) {
        const auto& f = kFields[field];
        Grid g = grid(field);
        Hash h;
        for (float normalization : {0.0f, 1.0f, 8.0f}) {
            Euler e(normalization > 1 ? -1 : 1);
            e.normalization = normalization;
            g.attach(e);
            for (float y = -0.25f; y < f.height + 0.5f; y += 0.375f) {
                for (float x = -0.25f; x < f.width + 0.5f; x += 0.625f) {
                    Vec2f d = {7.0f, 7.0f};
                    e.status = 0;
                    e.magnitude = -1.0f;
                    e.derivs({x, y}, d);
                    h.add(d.x).add(d.y).add(e.status).add(e.magnitude);
                }
            }
            h.add(e.xMax).add(e.yMax);
        }
        hashes.push_back({f.name, h.hex()});
    }
    Grid wide(40000, 2, [](int i, int) { return Vec2f{1.0f + i % 3, 0.5f}; });
    Euler e, unset;
    wide.attach(e);
    Vec2f d = {7.0f, 7.0f};
    e.derivs({39999.0f, 0.5f}, d);
    EXPECT_EQ(e.status, 1);
    e.status = 0;
    e.derivs({e.xMax, 0.5f}, d);
    EXPECT_EQ(e.status, 0);
    unset.derivs({0.0f, 0.0f}, d);
    EXPECT_EQ(unset.status, 1);
    expectRecorded("recorded/integrate-derivs.txt", hashes);
}

// A periodic axis of W nodes repeats every W units, node W being node 0:
// derivatives there are those of the closed grid with node 0 repeated behind
// the last node, at the point and at whole periods away. An orientation field
// agrees with the heading before it is blended: negating any nodes changes
// nothing, and nodes that already agree give the plain derivative.
TEST(FieldEvaluation, PeriodicAxesRepeatAndOrientationAgreesWithTheHeading) {
    const int W = 5, H = 4;
    const auto f = [](int i, int j) { return Vec2f{-1.0f + 0.5f * i, 2.0f + 0.1f * j - 0.2f * i}; };
    Grid g(W, H, f);
    Grid repeated(W + 1, H + 1, [&](int i, int j) { return f(i % W, j % H); });
    Grid negated(W, H, [&](int i, int j) {
        const Vec2f v = f(i, j);
        return (i * 7 + j * 3) % 4 < 2 ? Vec2f{-v.x, -v.y} : v;
    });
    Euler periodic, closed, plain, orientation, flipped;
    g.attach(periodic);
    repeated.attach(closed);
    g.attach(plain);
    g.attach(orientation);
    negated.attach(flipped);
    periodic.domain = VelkIntegrator::PERIODIC_X | VelkIntegrator::PERIODIC_Y;
    orientation.domain = flipped.domain = VelkIntegrator::ORIENTATION;
    // Multiples of 1/8: shifted by whole periods, the fractions stay exact.
    for (float y = 0.0f; y < H - 1.001f; y += 0.375f) {
        for (float x = 0.0f; x < W; x += 0.625f) {
            SCOPED_TRACE(testing::Message() << x << "," << y);
            Vec2f want = {0, 0}, got = {0, 0};
            closed.status = 0;
            closed.derivs({x, y}, want);
            for (int k : {-2, 0, 1}) {
                periodic.status = 0;
                periodic.derivs({x + static_cast<float>(k * W), y + static_cast<float>(k * H)},
                                got);
                EXPECT_EQ(periodic.status, 0);
                EXPECT_EQ(got.x, want.x);
                EXPECT_EQ(got.y, want.y);
            }
            if (x > W - 1.001f) continue;
            plain.derivs({x, y}, want);
            for (Euler* it : {&orientation, &flipped}) {
                it->heading = {0.6f, 0.8f};
                it->derivs({x, y}, got);
                EXPECT_EQ(got.x, want.x);
                EXPECT_EQ(got.y, want.y);
            }
        }
    }
}
