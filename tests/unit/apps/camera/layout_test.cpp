#include "apps/camera/layout.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

TEST(Layout, FramesHaveTheLengthOfTheirPixels) {
    EXPECT_EQ(frameBytes(Layout::Argb, {34, 18}), 4U * 34 * 18);
    EXPECT_EQ(frameBytes(Layout::Rgb24, {34, 18}), 3U * 34 * 18);
    EXPECT_EQ(frameBytes(Layout::Yuy2, {34, 18}), 2U * 34 * 18);
    EXPECT_EQ(frameBytes(Layout::I420, {34, 18}), 34U * 18 + 2 * 17 * 9);
    EXPECT_EQ(frameBytes(Layout::I420, {33, 17}), 33U * 17 + 2 * 17 * 9);
}

TEST(Layout, FileNamesTellTheirKind) {
    EXPECT_EQ(fileKindOfPath("a/b.Y4M")->container, Container::Y4m);
    EXPECT_EQ(fileKindOfPath("b.c.png")->container, Container::Png);
    EXPECT_EQ(fileKindOfPath("x.yuv")->layout, Layout::I420);
    EXPECT_EQ(fileKindOfPath("x.bgra")->layout, Layout::Argb);
    for (const char* path : {"-", "y4m", "a.y4m/b", "a.", "a.mp4"})
        EXPECT_FALSE(fileKindOfPath(path)) << path;
}

} // namespace ostrel::tests
