#include "apps/common/library_log.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace ostrel::tests {

using namespace apps;

TEST(HiddenLibraryLog, TakesStandardErrorAwayAndGivesItBack) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
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
    EXPECT_GT(read(ends[0], text, sizeof text - 1), 0);
    EXPECT_STREQ(text, "mine\n");
    close(ends[0]);
}

} // namespace ostrel::tests
