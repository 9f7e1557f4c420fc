// How often the operations allocate, counted in a replaced operator new, that nothing is written beyond what
// they allocate, and that a failed allocation leaves nothing behind.
#include <ostrel/processing.h>

#include <gtest/gtest.h>

#include <new>
#include <stdlib.h>
#include <string.h>
#include <vector>

namespace {

bool g_counting = false;
int g_allocations = 0;
size_t g_bytes = 0;
int g_live = 0;
int g_failAt = 0; // the allocation of this number fails; 0 for none
bool g_overrun = false;

// In memory: the size, the block that operator new returns, the tail.
const size_t HEAD = 16;
const size_t TAIL = 1024;
const int TAIL_BYTE = 0xA5;

void* allocate(size_t size) {
    if (g_counting) {
        ++g_allocations;
        g_bytes += size;
        if (g_allocations == g_failAt)
            throw std::bad_alloc();
        ++g_live;
    }
    char* const memory = static_cast<char*>(malloc(HEAD + size + TAIL));
    if (!memory)
        throw std::bad_alloc();
    memcpy(memory, &size, sizeof size);
    memset(memory + HEAD + size, TAIL_BYTE, TAIL);
    return memory + HEAD;
}

void release(void* block) {
    if (!block)
        return;
    if (g_counting)
        --g_live;
    char* const memory = static_cast<char*>(block) - HEAD;
    size_t size = 0;
    memcpy(&size, memory, sizeof size);
    const unsigned char* const tail = reinterpret_cast<unsigned char*>(memory) + HEAD + size;
    for (size_t index = 0; index < TAIL; ++index)
        g_overrun = g_overrun || tail[index] != TAIL_BYTE;
    free(memory);
}

} // namespace

void* operator new(size_t size) {
    return allocate(size);
}

void* operator new[](size_t size) {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete[](void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, size_t) noexcept {
    release(memory);
}

void operator delete[](void* memory, size_t) noexcept {
    release(memory);
}

using namespace ostrel;

namespace {

typedef std::vector<uint8_t> Bytes;

const size_t LD_I420 = 320 * 240 * 3 / 2;
const size_t LD_YUY2 = 320 * 240 * 2;
const size_t LD_RGB24 = 320 * 240 * 3;
const size_t LD_ARGB = 320 * 240 * 4;
const size_t HD_I420 = 1280 * 720 * 3 / 2;
const size_t HD_YUY2 = 1280 * 720 * 2;

// Counts while it lives.
class Count {
public:
    explicit Count(int failAt = 0) {
        g_allocations = 0;
        g_bytes = 0;
        g_live = 0;
        g_failAt = failAt;
        g_counting = true;
    }
    ~Count() { g_counting = false; }
};

} // namespace

TEST(Allocations, OfOperatorNewAreCounted) {
    Count count;
    const Bytes bytes(100);
    EXPECT_EQ(g_allocations, 1);
    EXPECT_EQ(g_bytes, 100u);
}

TEST(Allocations, OfTheConversionsBetweenRawPointersAreNone) {
    const Bytes src(LD_ARGB, 7);
    Bytes dst(LD_ARGB);
    Count count;
    OVideoConverter::RGB24ToI420(src.data(), dst.data(), 320, 240);
    OVideoConverter::ARGBToI420(src.data(), dst.data(), 320, 240);
    OVideoConverter::I420ToARGB32(src.data(), dst.data(), 320, 240);
    OVideoConverter::YUY2ToARGB(src.data(), dst.data(), 320, 240);
    OVideoConverter::I420ToYUY2(src.data(), dst.data(), 320, 240, 0);
    OVideoConverter::YUY2ToI420(320, 240, src.data(), dst.data());
    EXPECT_EQ(g_allocations, 0);
}

TEST(Allocations, OfRGB24ToARGB32AreNone) {
    const Bytes src(LD_RGB24);
    Bytes dst(LD_ARGB);
    Count count;
    OVideoConverter::RGB24ToARGB32(src, dst, 320, 240);
    EXPECT_EQ(g_allocations, 0);
}

TEST(Allocations, OfConvertToYUY2FromI420AreNone) {
    const Bytes src(LD_I420);
    Bytes dst(LD_YUY2);
    Count count;
    EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, 320, 240), 0);
    EXPECT_EQ(g_allocations, 0);
}

TEST(Allocations, OfRGB24ToYUY2AreOneI420FrameWhenTheDestinationIsKept) {
    const Bytes src(LD_RGB24);
    Bytes dst(LD_YUY2);
    Count count;
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, 320, 240), 0);
    EXPECT_EQ(g_allocations, 1);
    EXPECT_EQ(g_bytes, LD_I420);
    EXPECT_EQ(g_live, 0);
}

TEST(Allocations, OfRGB24ToYUY2AreOneMoreForAFreshDestination) {
    const Bytes src(LD_RGB24);
    Bytes dst;
    Count count;
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, 320, 240), 0);
    EXPECT_EQ(g_allocations, 2);
    EXPECT_EQ(g_bytes, LD_I420 + LD_YUY2);
    EXPECT_EQ(g_live, 1);
}

TEST(Allocations, OfRefusedLengthsAreNone) {
    Bytes src(100);
    Bytes dst;
    Count count;
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, 320, 240), -1);
    EXPECT_EQ(OVideoConverter::convertToYUY2(src, dst, 320, 240), -1);
    EXPECT_EQ(OVideoScaler::scaleI420Frame(VIDEO_QUALITY_LD, src, VIDEO_QUALITY_SD, dst, SCALE_METHOD_BOX),
              -1);
    EXPECT_EQ(OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_LD, src, VIDEO_QUALITY_SD, dst, SCALE_METHOD_BOX),
              -1);
    EXPECT_EQ(g_allocations, 0);
}

TEST(Allocations, OfScaleLDToSDAreNone) {
    const Bytes src(LD_I420);
    Count count;
    OVideoConverter::ScaleLDToSD(src);
    EXPECT_EQ(g_allocations, 0);
}

TEST(Allocations, OfScaleI420FrameAreNoneWhenTheDestinationIsKept) {
    Bytes src(LD_I420);
    Bytes dst(HD_I420);
    Count count;
    for (int method = 0; method < 3; ++method)
        OVideoScaler::scaleI420Frame(VIDEO_QUALITY_LD, src, VIDEO_QUALITY_HD, dst,
                                     static_cast<ScaleMethod>(method));
    EXPECT_EQ(g_allocations, 0);
}

TEST(Allocations, OfScaleYUY2FrameAreOneBlockForTwoI420FramesWhenTheDestinationIsKept) {
    Bytes src(LD_YUY2);
    Bytes dst(HD_YUY2);
    Count count;
    OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_LD, src, VIDEO_QUALITY_HD, dst, SCALE_METHOD_BILINEAR);
    EXPECT_EQ(g_allocations, 1);
    EXPECT_EQ(g_bytes, LD_I420 + HD_I420);
    EXPECT_EQ(g_live, 0);
}

TEST(Allocations, OfTheClockAndTheSizesAreNone) {
    int width = 0;
    int height = 0;
    Count count;
    OVideoCommon::get_time();
    OVideoCommon::qualityToResolution(1, width, height);
    OVideoCommon::resolutionToQuality(width, height);
    EXPECT_EQ(g_allocations, 0);
}

TEST(Overruns, OfABlockAreNoticed) {
    g_overrun = false;
    void* const block = allocate(10);
    memset(block, 0, 11);
    release(block);
    EXPECT_TRUE(g_overrun);
}

TEST(Overruns, DoNotHappenInRGB24ToYUY2AtAnySize) {
    g_overrun = false;
    for (int width = 1; width <= 40; ++width)
        for (int height = 1; height <= 20; ++height) {
            const Bytes src(static_cast<size_t>(width * 3 * height), 7);
            Bytes dst;
            ASSERT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, width, height), 0);
            dst = Bytes();
            ASSERT_FALSE(g_overrun) << width << "x" << height;
        }
}

TEST(Overruns, DoNotHappenInConvertToYUY2FromI420AtAnySize) {
    g_overrun = false;
    for (int width = 1; width <= 40; ++width)
        for (int height = 1; height <= 20; ++height) {
            const Bytes src(static_cast<size_t>(width * 3 * height / 2), 7);
            {
                Bytes dst(static_cast<size_t>(width * 2 * height));
                ASSERT_EQ(OVideoConverter::convertToYUY2(src, dst, width, height), 0);
                // What lies behind the source is not read either: its bytes would show.
                for (uint8_t byte : dst)
                    ASSERT_TRUE(byte == 7 || byte == 128) << width << "x" << height;
            }
            ASSERT_FALSE(g_overrun) << width << "x" << height;
        }
}

TEST(Overruns, DoNotHappenInScaling) {
    g_overrun = false;
    const int pixels[] = {320 * 240, 640 * 480, 1280 * 720};
    for (int from = 0; from < 3; ++from)
        for (int to = 0; to < 3; ++to)
            for (int method = 0; method < 3; ++method) {
                Bytes i420(static_cast<size_t>(pixels[from] * 3 / 2), 7);
                Bytes yuy2(static_cast<size_t>(pixels[from] * 2), 7);
                Bytes dst;
                OVideoScaler::scaleI420Frame(static_cast<VIDEO_QUALITY>(from), i420,
                                             static_cast<VIDEO_QUALITY>(to), dst,
                                             static_cast<ScaleMethod>(method));
                dst = Bytes();
                OVideoScaler::scaleYUY2Frame(static_cast<VIDEO_QUALITY>(from), yuy2,
                                             static_cast<VIDEO_QUALITY>(to), dst,
                                             static_cast<ScaleMethod>(method));
                dst = Bytes();
                ASSERT_FALSE(g_overrun) << from << " to " << to << ", method " << method;
            }
}

TEST(Allocations, OfRGB24ToYUY2AtAnOddWidthAreOneToo) {
    const Bytes src(321 * 241 * 3);
    Bytes dst(321 * 241 * 2);
    const uint8_t* const storage = dst.data();
    Count count;
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, 321, 241), 0);
    EXPECT_EQ(g_allocations, 1);
    EXPECT_EQ(dst.data(), storage);
}

TEST(FailedAllocations, OfRGB24ToYUY2sTemporaryFindTheDestinationResized) {
    const Bytes src(LD_RGB24);
    Bytes dst;
    Count count(2);
    EXPECT_THROW(OVideoConverter::RGB24ToYUY2(src, dst, 320, 240), std::bad_alloc);
    EXPECT_EQ(dst.size(), LD_YUY2);
}

TEST(FailedAllocations, OfRGB24ToYUY2ReachTheCallerAndLeaveNothingBehind) {
    const Bytes src(LD_RGB24);
    for (int failing = 1; failing <= 2; ++failing) {
        bool thrown = false;
        Count count(failing);
        {
            Bytes dst;
            try {
                OVideoConverter::RGB24ToYUY2(src, dst, 320, 240);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
        }
        g_counting = false;
        EXPECT_TRUE(thrown) << failing;
        EXPECT_EQ(g_live, 0) << failing;
    }
}

TEST(FailedAllocations, OfScaleYUY2FrameReachTheCallerAndLeaveNothingBehind) {
    Bytes src(LD_YUY2);
    for (int failing = 1; failing <= 2; ++failing) {
        bool thrown = false;
        Count count(failing);
        {
            Bytes dst;
            try {
                OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_LD, src, VIDEO_QUALITY_HD, dst, SCALE_METHOD_BOX);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
        }
        g_counting = false;
        EXPECT_TRUE(thrown) << failing;
        EXPECT_EQ(g_live, 0) << failing;
    }
}
