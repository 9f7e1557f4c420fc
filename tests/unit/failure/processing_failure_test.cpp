#include "unit/failure/failing_allocations.h"

#include <ostrel/processing.h>

using namespace ostrel;
using namespace ostrel::tests;

TEST(ProcessingWithoutMemory, ConversionPassesTheExceptionOnAndCanBeRepeated) {
    const std::vector<uint8_t> source(4 * 2 * 3, 100);
    const int failures = failEachInTurn([&](int n) {
        std::vector<uint8_t> target;
        const Outcome outcome = runFailingAt(n, [&] { OVideoConverter::RGB24ToYUY2(source, target, 4, 2); });
        EXPECT_EQ(OVideoConverter::RGB24ToYUY2(source, target, 4, 2), 0);
        EXPECT_EQ(target.size(), 4u * 2 * 2);
        return outcome;
    });
    EXPECT_GE(failures, 1);
}

TEST(ProcessingWithoutMemory, ConversionByLengthPassesTheExceptionOn) {
    const std::vector<uint8_t> source(4 * 2 * 3, 100);
    EXPECT_GE(failEachInTurn([&](int n) {
                  std::vector<uint8_t> target;
                  return runFailingAt(n, [&] { OVideoConverter::convertToYUY2(source, target, 4, 2); });
              }),
              1);
}

TEST(ProcessingWithoutMemory, I420ScalingPassesTheExceptionOnAndCanBeRepeated) {
    std::vector<uint8_t> source(320 * 240 * 3 / 2, 100);
    const int failures = failEachInTurn([&](int n) {
        std::vector<uint8_t> target;
        const auto scale = [&] {
            return OVideoScaler::scaleI420Frame(VIDEO_QUALITY_LD, source, VIDEO_QUALITY_SD, target,
                                                SCALE_METHOD_NONE);
        };
        const Outcome outcome = runFailingAt(n, scale);
        EXPECT_EQ(scale(), 0);
        EXPECT_EQ(target.size(), 640u * 480 * 3 / 2);
        return outcome;
    });
    EXPECT_GE(failures, 1);
}

TEST(ProcessingWithoutMemory, Yuy2ScalingLeavesTheTargetAloneUntilAllMemoryIsThere) {
    std::vector<uint8_t> source(320 * 240 * 2, 100);
    const int failures = failEachInTurn([&](int n) {
        std::vector<uint8_t> target(3, 7);
        const Outcome outcome = runFailingAt(n, [&] {
            OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_LD, source, VIDEO_QUALITY_SD, target,
                                         SCALE_METHOD_NONE);
        });
        if (outcome.thrown) {
            EXPECT_EQ(target, std::vector<uint8_t>(3, 7));
        } else {
            EXPECT_EQ(target.size(), 640u * 480 * 2);
        }
        return outcome;
    });
    EXPECT_GE(failures, 2);
}

TEST(ProcessingWithoutMemory, NamesOfLevelsNeedNoneOfOurs) {
    EXPECT_EQ(failEachInTurn([](int n) {
                  return runFailingAt(n, [] { OVideoCommon::qualityToString(VIDEO_QUALITY_HD); });
              }),
              0);
}
