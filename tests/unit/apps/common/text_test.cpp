#include "apps/common/text.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;

TEST(Text, ControlCharactersOfACameraDoNotReachTheTerminal) {
    EXPECT_EQ(printable("a\x1b[2Jb\n"), "a?[2Jb?");
    EXPECT_EQ(printable("K\xc3\xa4mera"), "K\xc3\xa4mera");
}

TEST(Text, WordsAreWrappedAndLongOnesStayWhole) {
    EXPECT_EQ(wrapped("one two three verylongword x", 7),
              (std::vector<std::string>{"one two", "three", "verylongword", "x"}));
}

} // namespace ostrel::tests
