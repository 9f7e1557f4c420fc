#include "apps/camera/layout.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

TEST(Layout, FramesHaveTheLengthOfTheirPixels) {
    EXPECT_EQ(4U * 34 * 18, frameBytes(Layout::Argb, {34, 18}));
    EXPECT_EQ(3U * 34 * 18, frameBytes(Layout::Rgb24, {34, 18}));
    EXPECT_EQ(2U * 34 * 18, frameBytes(Layout::Yuy2, {34, 18}));
    EXPECT_EQ(34U * 18 + 2 * 17 * 9, frameBytes(Layout::I420, {34, 18}));
    EXPECT_EQ(33U * 17 + 2 * 17 * 9, frameBytes(Layout::I420, {33, 17}));
}

TEST(Layout, FileNamesTellTheirKind) {
    EXPECT_EQ(Container::Y4m, fileKindOfPath("a/b.Y4M")->container);
    EXPECT_EQ(Container::Png, fileKindOfPath("b.c.png")->container);
    EXPECT_EQ(Layout::I420, fileKindOfPath("x.yuv")->layout);
    EXPECT_EQ(Layout::Argb, fileKindOfPath("x.bgra")->layout);
    for (const char* path : {"-", "y4m", "a.y4m/b", "a.", "a.mp4"})
        EXPECT_FALSE(fileKindOfPath(path)) << path;
}

} // namespace ostrel::tests
