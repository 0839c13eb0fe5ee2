#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "TestSupport.h"
#include "velk/velk.h"

using velktest::MessageCapture;

TEST(Report, InfoIsSilentUntilVerbosityIsRaised) {
    MessageCapture quiet(0);
    EXPECT_EQ(velk_info("total number of field lines = %d", 7), 0);
    EXPECT_TRUE(quiet.infos().empty());

    velk_verbosity = 1;
    EXPECT_EQ(velk_info("total number of field lines = %d", 7), 0);
    ASSERT_EQ(quiet.infos().size(), 1u);
    EXPECT_EQ(quiet.infos()[0], "VELK info: total number of field lines = 7");
}

TEST(Report, ErrorsReachTheirHandlerWhateverTheVerbosity) {
    MessageCapture capture(0);
    EXPECT_EQ(velk_error("bad %s", "thing"), 0);
    ASSERT_EQ(capture.errors().size(), 1u);
    EXPECT_EQ(capture.errors()[0], "VELK error: bad thing");
    EXPECT_TRUE(capture.infos().empty());
}

TEST(Report, IoErrorNamesTheFileAndTheReason) {
    MessageCapture capture;
    errno = ENOENT;
    EXPECT_EQ(velk_ioerror("missing.pgm", nullptr), 0);
    EXPECT_EQ(velk_ioerror("mesh.inp", "this is not an UCD file"), 0);
    ASSERT_EQ(capture.errors().size(), 2u);
    EXPECT_EQ(capture.errors()[0],
              std::string("VELK error: can't open missing.pgm (") + std::strerror(ENOENT) + ")");
    EXPECT_EQ(capture.errors()[1], "VELK error: can't open mesh.inp (this is not an UCD file)");
}

TEST(Report, NullHandlersDropMessages) {
    MessageCapture capture(1);
    velk_info_handler = nullptr;
    velk_error_handler = nullptr;
    EXPECT_EQ(velk_info("x"), 0);
    EXPECT_EQ(velk_error("y"), 0);
    EXPECT_EQ(velk_ioerror("f", "z"), 0);
    EXPECT_TRUE(capture.infos().empty());
    EXPECT_TRUE(capture.errors().empty());
}

TEST(Report, OverlongMessagesAreCutToTheBuffer) {
    MessageCapture capture;
    std::string huge(10000, 'a');
    velk_error("%s", huge.c_str());
    ASSERT_EQ(capture.errors().size(), 1u);
    EXPECT_EQ(capture.errors()[0].size(), 4095u);
    EXPECT_EQ(capture.errors()[0].compare(0, 12, "VELK error: "), 0);
}

TEST(Report, DefaultHandlerWritesOneLineToStandardError) {
    testing::internal::CaptureStderr();
    velk_error("hello %d", 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "VELK error: hello 3\n");
}
