#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>

#include "IntegrateSupport.h"
#include "TestSupport.h"

namespace {

// Each file holds 60 calls of next(magnitude, status) on a 33 x 33 setCircle(0.3)
// field with stepSize 0.7 after init((20, 12), (0, 1), 0.25); x, y and the
// magnitude are hex floats, so the comparison is bit for bit. The magnitude
// argument is preset to -1 before every call, which shows where it is left
// unwritten.
struct TraceCase {
    const char* file;
    const char* scheme;
    int direction;
};

std::string hex(float v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%a", static_cast<double>(v));
    return buf;
}

}  // namespace

TEST(TraceReplay, PointStreamsMatchRecordedTracesBitForBit) {
    const TraceCase cases[] = {{"trace-euler-backward.txt", "euler", -1},
                               {"trace-midpoint-forward.txt", "midpoint", 1},
                               {"trace-rk43-forward.txt", "rk43", 1},
                               {"trace-rkck-forward.txt", "rkck", 1},
                               {"trace-rkdp-backward.txt", "rkdp", -1}};
    VelkVectorField field(33, 33, nullptr);
    field.setCircle(0.3f);
    for (const TraceCase& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string text =
            velktest::readFile(velktest::dataPath(std::string("integrate/") + c.file));
        ASSERT_FALSE(text.empty());
        std::istringstream lines(text);
        std::string line;
        std::getline(lines, line);  // column header
        auto it = velktest::makeScheme(c.scheme, c.direction);
        it->setField(33, 33, reinterpret_cast<Vec2f*>(field.data));
        it->stepSize = 0.7f;
        it->init({20.0f, 12.0f}, {0.0f, 1.0f}, 0.25f);
        int calls = 0;
        while (std::getline(lines, line)) {
            if (line.empty()) continue;
            std::istringstream words(line);
            int call, status;
            std::string x, y, mag;
            ASSERT_TRUE(words >> call >> x >> y >> status >> mag) << line;
            ASSERT_EQ(call, ++calls);
            float magnitude = -1.0f;
            int gotStatus = -1;
            const Vec2f& p = it->next(magnitude, gotStatus);
            const std::string got =
                hex(p.x) + " " + hex(p.y) + " " + std::to_string(gotStatus) + " " + hex(magnitude);
            const std::string want =
                hex(std::strtof(x.c_str(), nullptr)) + " " + hex(std::strtof(y.c_str(), nullptr)) +
                " " + std::to_string(status) + " " + hex(std::strtof(mag.c_str(), nullptr));
            ASSERT_EQ(got, want) << "call " << call;
        }
        EXPECT_EQ(calls, 60);
    }
}
