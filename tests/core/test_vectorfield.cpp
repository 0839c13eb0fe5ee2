#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <velk/velk.h>

TEST(VectorFieldOwnership, BorrowedBufferSurvivesAndSetSizeKeepsLeadingNodes) {
    std::vector<float> buffer(8, 1.5f);
    {
        VelkVectorField field(2, 2, buffer.data());
        EXPECT_EQ(field.ownedData, nullptr);
        EXPECT_EQ(field.data, buffer.data());
        field.setSize(2, 2);
        EXPECT_NE(field.data, buffer.data());
        EXPECT_EQ(field.data, field.ownedData);
        for (int k = 0; k < 8; k++) field.data[k] = static_cast<float>(k);
        field.setSize(4, 3);  // realloc keeps memory order, no re-layout
        for (int k = 0; k < 8; k++) EXPECT_EQ(field.data[k], k);
        field.setSize(0, 5);
        EXPECT_EQ(field.data, nullptr);
        EXPECT_EQ(field.ownedData, nullptr);
        EXPECT_EQ(field.height, 5);
        EXPECT_EQ(field.getMax(), 0.0f);  // empty: nothing to read
    }
    EXPECT_EQ(buffer, std::vector<float>(8, 1.5f));
}

TEST(VectorFieldMeasure, NormalizeAndGetMax) {
    float nodes[8] = {3, 4, 0, 0, -6, 8, NAN, 1};
    VelkVectorField field(2, 2, nodes);
    EXPECT_FLOAT_EQ(field.getMax(), 10.0f);  // the NaN node never replaces the maximum
    field.normalize();
    const float expected[8] = {0.6f, 0.8f, 0, 0, -0.6f, 0.8f, NAN, 1};
    for (int k = 0; k < 8; k++) {
        EXPECT_TRUE(std::isnan(expected[k]) ? std::isnan(nodes[k])
                                            : std::fabs(nodes[k] - expected[k]) < 1e-7f)
            << k << ": " << nodes[k];
    }
}

TEST(AnalyticFields, ValuesAtKnownNodes) {
    const float identity[2][2] = {{1, 0}, {0, 1}}, zero[2] = {0, 0};
    const float m[2][2] = {{0.2f, 1}, {-1, 0.1f}}, b[2] = {0.1f, 0};
    VelkVectorField circle(3, 3, nullptr), source(3, 3, nullptr), saddle(7, 5, nullptr),
        ident(5, 5, nullptr), linear(5, 5, nullptr), brusselator(5, 3, nullptr), row(4, 1, nullptr);
    circle.setCircle(0);
    source.setCircle(static_cast<float>(M_PI / 2));  // up to the rounding of cos(pi/2)
    saddle.setSaddle();
    ident.setLinear(identity, zero);
    linear.setLinear(m, b);  // node (4, 0) is (2, -2): (0.4 - 2 + 0.1, -2 - 0.2)
    // Node (2, 1) is (x, y) = (2, 1): a + x^2 y - (b + 1) x = -3, b x - x^2 y = 2,
    // divided by the extents 4 and 2.
    brusselator.setBrusselator(4, 2, 1, 3);
    row.setCircle(0);  // a single row divides 0 by 0
    const VelkVectorField* fields[] = {&circle, &source,      &saddle, &ident,
                                       &linear, &brusselator, &row};
    const struct {
        int field, i, j;
        float vx, vy;
    } cases[] = {{0, 0, 0, 0.5f, -0.5f}, {0, 1, 1, 0, 0},     {0, 2, 2, -0.5f, 0.5f},
                 {1, 2, 0, 0.5f, -0.5f}, {2, 0, 0, -1, 1},    {2, 1, 0, 1, 1},
                 {2, 0, 1, -1, -1},      {2, 1, 1, 1, -1},    {3, 0, 0, -2, -2},
                 {3, 4, 4, 2, 2},        {3, 3, 1, 1, -1},    {4, 4, 0, -1.5f, -2.2f},
                 {5, 2, 1, -0.75f, 1},   {5, 0, 0, 0.25f, 0}, {6, 1, 0, NAN, NAN}};
    for (const auto& c : cases) {
        const float* p = fields[c.field]->data + 2 * (c.j * fields[c.field]->width + c.i);
        SCOPED_TRACE(testing::Message() << "field " << c.field << " node " << c.i << ", " << c.j);
        for (int k : {0, 1}) {
            const float want = k == 0 ? c.vx : c.vy;
            EXPECT_TRUE(std::isnan(want) ? std::isnan(p[k]) : std::fabs(p[k] - want) < 1e-6f)
                << p[k] << " for " << want;
        }
    }
    EXPECT_EQ(saddle.width, 2);
    EXPECT_EQ(saddle.height, 2);
    EXPECT_FLOAT_EQ(saddle.getMax(), std::sqrt(2.0f));
}
