#include "apps/common/text.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;

TEST(Text, ControlCharactersOfACameraDoNotReachTheTerminal) {
    EXPECT_EQ("a?[2Jb?", printable("a\x1b[2Jb\n"));
    EXPECT_EQ("K\xc3\xa4mera", printable("K\xc3\xa4mera"));
}

TEST(Text, WordsAreWrappedAndLongOnesStayWhole) {
    EXPECT_EQ((std::vector<std::string>{"one two", "three", "verylongword", "x"}),
              wrapped("one two three verylongword x", 7));
}

} // namespace ostrel::tests
