#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include <velk/velk.h>

TEST(Package, BuildRecordFollowsTheMarkerWithAllSixteenKeys) {
    const char* record = kovrapackage_velk();
    ASSERT_NE(record, nullptr);
    std::map<std::string, std::string> keys;
    std::stringstream in(record);
    for (std::string key, value; std::getline(in, key, '|') && std::getline(in, value, '|');) {
        keys[key] = value;
    }
    for (const char* key :
         {"version_tag", "comment", "compiler", "target_os", "build_cfg", "build_user", "build_ip",
          "build_time", "filename", "path", "size", "vendor", "product", "version_major",
          "version_minor", "version_patch"}) {
        EXPECT_EQ(keys.count(key), 1u) << key;
    }
    EXPECT_EQ(keys.size(), 16u);
    EXPECT_EQ(keys["product"], "velk");
    EXPECT_EQ(keys["version_tag"],
              keys["version_major"] + "." + keys["version_minor"] + "." + keys["version_patch"]);
    EXPECT_FALSE(keys["compiler"].empty());
    // The marker string ends with its NUL directly in front of the record.
    EXPECT_EQ(record[-1], '\0');
    const char* marker = record - 2;
    while (marker[-1] != '\0' && marker[-1] != '@') marker--;
    EXPECT_NE(std::string(marker).find("velk build information"), std::string::npos);
}
