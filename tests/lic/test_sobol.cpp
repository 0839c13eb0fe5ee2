#include <cstdlib>
#include <string>
#include <vector>

#include "TestSupport.h"

TEST(Sobol, KnownTables) {
    const std::vector<int> x[] = {{0}, {1, 0}, {4, 2, 6, 3, 7, 1, 5, 0}, {4, 2, 3, 1, 0}};
    const std::vector<int> y[] = {
        {0}, {2, 3, 1, 0}, {8, 12, 4, 10, 2, 6, 14, 5, 13, 9, 1, 15, 7, 3, 11, 0}};
    UxSobol sobol;
    for (const std::vector<int>& expected : x) {
        sobol.initX(static_cast<int>(expected.size()));
        EXPECT_EQ(std::vector<int>(sobol.xTable, sobol.xTable + expected.size()), expected);
    }
    for (const std::vector<int>& expected : y) {
        sobol.initY(static_cast<int>(expected.size()));
        EXPECT_EQ(std::vector<int>(sobol.yTable, sobol.yTable + expected.size()), expected);
    }
    std::free(sobol.xTable);
    std::free(sobol.yTable);
}

// Every table is a permutation, and the same as recorded in
// tests/data/recorded/sobol.txt; init() on the same object resizes both.
TEST(Sobol, TablesArePermutationsAsRecorded) {
    UxSobol sobol;
    velktest::Hashes hashes;
    for (int n : {2, 3, 7, 9, 31, 32, 33, 100, 1000, 3072, 4097, 5, 0}) {
        sobol.init(n, n + 5);
        velktest::Hash h;
        h.add(sobol.xIndex).add(sobol.yIndex).add(sobol.count).add(sobol.nx).add(sobol.ny);
        for (int axis = 0; axis < 2; axis++) {
            const int* table = axis ? sobol.yTable : sobol.xTable;
            const int size = axis ? n + 5 : n;
            std::vector<int> seen(size, 0);
            for (int i = 0; i < size; i++) {
                ASSERT_TRUE(table[i] >= 0 && table[i] < size && !seen[table[i]]++)
                    << "axis " << axis << " n " << size << " at " << i;
            }
            h.bytes(table, sizeof(int) * size);
        }
        hashes.push_back({std::to_string(n), h.hex()});
    }
    std::free(sobol.xTable);
    std::free(sobol.yTable);
    velktest::expectRecorded("recorded/sobol.txt", hashes);
}
