#include "apps/common/size.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;

TEST(Size, IsReadFromNumbersAndFromNamesOfLevels) {
    EXPECT_EQ("640x480", toString(parseSize("640x480").value()));
    EXPECT_EQ("16384x1", toString(parseSize("16384X1").value()));
    EXPECT_EQ("320x240", toString(parseSize("ld").value()));
    EXPECT_EQ("1280x720", toString(parseSize("Hd").value()));
    EXPECT_EQ("1920x1080", toString(parseSize("1080p").value()));
    for (const char* text : {"", "x", "640", "640x", "x480", "0x480", "640x-2", "640x480x2", "16385x2",
                             " 640x480", "640 x 480", "99999999999x2", "uhd", "72p"})
        EXPECT_FALSE(parseSize(text)) << text;
}

} // namespace ostrel::tests
