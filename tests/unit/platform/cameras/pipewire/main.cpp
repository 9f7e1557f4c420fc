// Without the programs of a session there is nothing to test with, which is said.
#include "support/pipewire/session.h"

#include <cstdio>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const std::string missing = ostrel::support::PipeWireSession::missing();
    if (!missing.empty() && !::testing::GTEST_FLAG(list_tests)) {
        std::printf("nothing was tested: %s\n", missing.c_str());
        return 0;
    }
    return RUN_ALL_TESTS();
}
