#include "apps/common/library_log.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace ostrel::tests {

using namespace apps;

TEST(HiddenLibraryLog, TakesStandardErrorAwayAndGivesItBack) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    const int before = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    {
        const HiddenLibraryLog hidden(ends[1]);
        dprintf(STDERR_FILENO, "the library's\n");
    }
    dprintf(STDERR_FILENO, "mine\n");
    dup2(before, STDERR_FILENO);
    close(before);
    close(ends[1]);
    char text[100] = {};
    EXPECT_LT(0, read(ends[0], text, sizeof text - 1));
    EXPECT_STREQ("mine\n", text);
    close(ends[0]);
}

} // namespace ostrel::tests
