#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "velk/velk.h"

namespace {

std::vector<int> tableOf(const int* table, int n) {
    return std::vector<int>(table, table + n);
}

bool isPermutation(const int* table, int n) {
    std::vector<int> seen(n, 0);
    for (int i = 0; i < n; i++) {
        if (table[i] < 0 || table[i] >= n || seen[table[i]]++) return false;
    }
    return true;
}

}  // namespace

TEST(Sobol, KnownTables) {
    struct Case {
        bool y;
        int n;
        std::vector<int> expected;
    };
    const Case cases[] = {
        {false, 1, {0}},
        {false, 2, {1, 0}},
        {false, 8, {4, 2, 6, 3, 7, 1, 5, 0}},
        // The walk for 8 with the values of 5 and above left out.
        {false, 5, {4, 2, 3, 1, 0}},
        {true, 1, {0}},
        {true, 4, {2, 3, 1, 0}},
        {true, 16, {8, 12, 4, 10, 2, 6, 14, 5, 13, 9, 1, 15, 7, 3, 11, 0}},
    };
    for (const Case& c : cases) {
        UxSobol sobol;
        if (c.y) {
            sobol.initY(c.n);
            EXPECT_EQ(tableOf(sobol.yTable, c.n), c.expected) << "initY(" << c.n << ")";
        } else {
            sobol.initX(c.n);
            EXPECT_EQ(tableOf(sobol.xTable, c.n), c.expected) << "initX(" << c.n << ")";
        }
        std::free(sobol.xTable);
        std::free(sobol.yTable);
    }
}

// init() may be called again on the same object: it resizes the tables and
// resets the counters.
TEST(Sobol, EveryTableIsAPermutationAndFirstValueIsTheHalfPower) {
    UxSobol sobol;
    for (int n : {1, 2, 3, 7, 9, 31, 32, 33, 96, 100, 288, 1000, 3072, 4097, 5}) {
        sobol.xIndex = sobol.yIndex = sobol.count = 9;
        sobol.init(n, n + 5);
        EXPECT_EQ(sobol.xIndex + sobol.yIndex + sobol.count, 0);
        ASSERT_TRUE(isPermutation(sobol.xTable, n)) << "x, n = " << n;
        ASSERT_TRUE(isPermutation(sobol.yTable, n + 5)) << "y, n = " << n + 5;
        int b = 0;
        while ((1 << b) < n) b++;
        if (b >= 1) {
            EXPECT_EQ(sobol.xTable[0], 1 << (b - 1)) << "n = " << n;
        }
        EXPECT_EQ(sobol.nx, n);
        EXPECT_EQ(sobol.ny, n + 5);
    }
    std::free(sobol.xTable);
    std::free(sobol.yTable);
}
