#include "apps/common/size.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;

TEST(Size, IsReadFromNumbersAndFromNamesOfLevels) {
    EXPECT_EQ(toString(parseSize("640x480").value()), "640x480");
    EXPECT_EQ(toString(parseSize("16384X1").value()), "16384x1");
    EXPECT_EQ(toString(parseSize("ld").value()), "320x240");
    EXPECT_EQ(toString(parseSize("Hd").value()), "1280x720");
    EXPECT_EQ(toString(parseSize("1080p").value()), "1920x1080");
    for (const char* text : {"", "x", "640", "640x", "x480", "0x480", "640x-2", "640x480x2", "16385x2",
                             " 640x480", "640 x 480", "99999999999x2", "uhd", "72p"})
        EXPECT_FALSE(parseSize(text)) << text;
}

} // namespace ostrel::tests
