#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "velk/velk.h"

namespace {

Vec2f node(const VelkVectorField& f, int i, int j) {
    const float* p = f.data + 2 * (j * f.width + i);
    return {p[0], p[1]};
}

}  // namespace

TEST(VectorFieldOwnership, BorrowedBufferSurvivesResizeAndDestruction) {
    std::vector<float> buffer(8, 1.5f);
    {
        VelkVectorField field(2, 2, buffer.data());
        EXPECT_EQ(field.ownedData, nullptr);
        EXPECT_EQ(field.data, buffer.data());
        field.setSize(3, 3);
        EXPECT_NE(field.data, buffer.data());
        EXPECT_EQ(field.data, field.ownedData);
    }
    EXPECT_EQ(buffer, std::vector<float>(8, 1.5f));
}

TEST(VectorFieldOwnership, SetSizeKeepsLeadingNodesAndFreesOnZero) {
    VelkVectorField field(2, 2, nullptr);
    for (int k = 0; k < 8; k++) field.data[k] = static_cast<float>(k);
    field.setSize(4, 2);  // realloc keeps memory order, no re-layout
    for (int k = 0; k < 8; k++) EXPECT_EQ(field.data[k], k);
    field.setSize(0, 5);
    EXPECT_EQ(field.data, nullptr);
    EXPECT_EQ(field.ownedData, nullptr);
    EXPECT_EQ(field.width, 0);
    EXPECT_EQ(field.height, 5);
    EXPECT_EQ(field.getMax(), 0.0f);  // empty: nothing to read
}

TEST(VectorFieldMeasure, NormalizeAndGetMax) {
    float nodes[8] = {3, 4, 0, 0, -6, 8, NAN, 1};
    VelkVectorField field(2, 2, nodes);
    EXPECT_FLOAT_EQ(field.getMax(), 10.0f);  // the NaN node never replaces the maximum
    field.normalize();
    EXPECT_FLOAT_EQ(nodes[0], 0.6f);
    EXPECT_FLOAT_EQ(nodes[1], 0.8f);
    EXPECT_EQ(nodes[2], 0.0f);
    EXPECT_EQ(nodes[3], 0.0f);
    EXPECT_FLOAT_EQ(nodes[4], -0.6f);
    EXPECT_TRUE(std::isnan(nodes[6]));
    EXPECT_EQ(nodes[7], 1.0f);
}

TEST(AnalyticFields, CircleRotatesThePositionVector) {
    VelkVectorField field(3, 3, nullptr);
    field.setCircle(0);
    EXPECT_FLOAT_EQ(node(field, 0, 0).x, 0.5f);
    EXPECT_FLOAT_EQ(node(field, 0, 0).y, -0.5f);
    EXPECT_EQ(node(field, 1, 1).x, 0.0f);
    EXPECT_EQ(node(field, 1, 1).y, 0.0f);
    EXPECT_FLOAT_EQ(node(field, 2, 2).x, -0.5f);
    EXPECT_FLOAT_EQ(node(field, 2, 2).y, 0.5f);

    // pi/2 is the radial source (x, y), up to the rounding of cos(pi/2).
    field.setCircle(static_cast<float>(M_PI / 2));
    EXPECT_NEAR(node(field, 2, 0).x, 0.5f, 1e-6);
    EXPECT_NEAR(node(field, 2, 0).y, -0.5f, 1e-6);
}

TEST(AnalyticFields, SaddleReplacesSizeAndContents) {
    VelkVectorField field(7, 5, nullptr);
    field.setSaddle();
    EXPECT_EQ(field.width, 2);
    EXPECT_EQ(field.height, 2);
    const float expected[8] = {-1, 1, 1, 1, -1, -1, 1, -1};
    for (int k = 0; k < 8; k++) EXPECT_EQ(field.data[k], expected[k]) << k;
    EXPECT_FLOAT_EQ(field.getMax(), std::sqrt(2.0f));
}

TEST(AnalyticFields, LinearMapsTheGridOntoMinusTwoToTwo) {
    VelkVectorField field(5, 5, nullptr);
    const float identity[2][2] = {{1, 0}, {0, 1}};
    const float zero[2] = {0, 0};
    field.setLinear(identity, zero);
    EXPECT_EQ(node(field, 0, 0).x, -2.0f);
    EXPECT_EQ(node(field, 0, 0).y, -2.0f);
    EXPECT_EQ(node(field, 4, 4).x, 2.0f);
    EXPECT_EQ(node(field, 3, 1).x, 1.0f);
    EXPECT_EQ(node(field, 3, 1).y, -1.0f);

    const float m[2][2] = {{0.2f, 1}, {-1, 0.1f}};
    const float b[2] = {0.1f, 0};
    field.setLinear(m, b);
    EXPECT_FLOAT_EQ(node(field, 4, 0).x, 0.2f * 2 + 1 * -2 + 0.1f);
    EXPECT_FLOAT_EQ(node(field, 4, 0).y, -1 * 2 + 0.1f * -2);
}

TEST(AnalyticFields, BrusselatorIsScaledByTheDomain) {
    VelkVectorField field(5, 3, nullptr);
    field.setBrusselator(4, 2, 1, 3);
    // Node (2, 1): x = 2, y = 1: dx = a + x^2 y - (b + 1) x = 1 + 4 - 8, dy = 3 x - x^2 y = 2.
    EXPECT_FLOAT_EQ(node(field, 2, 1).x, -3.0f / 4);
    EXPECT_FLOAT_EQ(node(field, 2, 1).y, 2.0f / 2);
    EXPECT_FLOAT_EQ(node(field, 0, 0).x, 1.0f / 4);
    EXPECT_EQ(node(field, 0, 0).y, 0.0f);
}

TEST(AnalyticFields, SingleRowGridsGetNaN) {
    VelkVectorField field(4, 1, nullptr);
    field.setCircle(0);
    EXPECT_TRUE(std::isnan(node(field, 1, 0).x));
}
