#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <velk/velk.h>
#include "TestSupport.h"

using velktest::MessageCapture;
using Lines = std::vector<std::string>;

TEST(Report, InfoNeedsVerbosityErrorsDoNot) {
    MessageCapture capture(0);
    EXPECT_EQ(velk_info("total number of field lines = %d", 7), 0);
    EXPECT_EQ(velk_error("bad %s", "thing"), 0);
    velk_verbosity = 1;
    EXPECT_EQ(velk_info("total number of field lines = %d", 7), 0);
    EXPECT_EQ(capture.infos(), Lines{"VELK info: total number of field lines = 7"});
    EXPECT_EQ(capture.errors(), Lines{"VELK error: bad thing"});
}

TEST(Report, IoErrorNamesTheFileAndTheReason) {
    MessageCapture capture;
    errno = ENOENT;
    EXPECT_EQ(velk_ioerror("missing.pgm", nullptr), 0);
    EXPECT_EQ(velk_ioerror("mesh.inp", "this is not an UCD file"), 0);
    EXPECT_EQ(
        capture.errors(),
        (Lines{std::string("VELK error: can't open missing.pgm (") + std::strerror(ENOENT) + ")",
               "VELK error: can't open mesh.inp (this is not an UCD file)"}));
}

TEST(Report, NullHandlersDropMessages) {
    MessageCapture capture(1);
    velk_info_handler = nullptr;
    velk_error_handler = nullptr;
    EXPECT_EQ(velk_info("x"), 0);
    EXPECT_EQ(velk_ioerror("f", "z"), 0);
    EXPECT_TRUE(capture.infos().empty());
    EXPECT_TRUE(capture.errors().empty());
}

TEST(Report, OverlongMessagesAreCutToTheBuffer) {
    MessageCapture capture;
    velk_error("%s", std::string(10000, 'a').c_str());
    EXPECT_EQ(capture.errors(), Lines{"VELK error: " + std::string(4095 - 12, 'a')});
}

TEST(Report, DefaultHandlerWritesOneLineToStandardError) {
    testing::internal::CaptureStderr();
    velk_error("hello %d", 3);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "VELK error: hello 3\n");
}
