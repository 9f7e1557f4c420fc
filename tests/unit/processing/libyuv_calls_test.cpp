// Which calls of libyuv the operations make, with which arguments, and what they make of the answers. This
// program has functions of its own in libyuv's place: they write their arguments down and touch no pixel.
#include <ostrel/processing.h>

#include <gtest/gtest.h>
#include <libyuv.h>

#include <map>
#include <sstream>
#include <sys/time.h>

using namespace ostrel;

namespace {

typedef std::vector<std::string> Calls;
typedef std::vector<uint8_t> Bytes;

// Addresses are written as the name of a buffer and an offset into it. The first one outside of all named
// buffers is the start of the temporary memory.
struct Buffer {
    std::string name;
    uintptr_t begin;
    uint64_t bytes;
};

std::vector<Buffer> g_buffers;
Calls g_calls;
std::map<std::string, int> g_answers; // 0 where there is none
int g_clockReadings = 0;

void name(const char* buffer, const void* begin, uint64_t bytes) {
    g_buffers.push_back({buffer, reinterpret_cast<uintptr_t>(begin), bytes});
}

std::string written(int number) {
    return std::to_string(number);
}

std::string written(const uint8_t* pointer) {
    const uintptr_t address = reinterpret_cast<uintptr_t>(pointer);
    for (const Buffer& buffer : g_buffers)
        if (address >= buffer.begin && address - buffer.begin <= buffer.bytes)
            return buffer.name + "+" + std::to_string(address - buffer.begin);
    name("temporary", pointer, 4000000);
    return "temporary+0";
}

template <typename... Arguments>
int call(const char* function, Arguments... arguments) {
    std::string line = function;
    for (const std::string& each : {written(arguments)...})
        line += " " + each;
    g_calls.push_back(line);
    return g_answers[function];
}

} // namespace

namespace libyuv {
extern "C" {

int RGB24ToI420(const uint8_t* src, int stride, uint8_t* y, int yStride, uint8_t* u, int uStride, uint8_t* v,
                int vStride, int width, int height) {
    return call("RGB24ToI420", src, stride, y, yStride, u, uStride, v, vStride, width, height);
}

int ARGBToI420(const uint8_t* src, int stride, uint8_t* y, int yStride, uint8_t* u, int uStride, uint8_t* v,
               int vStride, int width, int height) {
    return call("ARGBToI420", src, stride, y, yStride, u, uStride, v, vStride, width, height);
}

int I420ToARGB(const uint8_t* y, int yStride, const uint8_t* u, int uStride, const uint8_t* v, int vStride,
               uint8_t* dst, int stride, int width, int height) {
    return call("I420ToARGB", y, yStride, u, uStride, v, vStride, dst, stride, width, height);
}

int YUY2ToARGB(const uint8_t* src, int srcStride, uint8_t* dst, int stride, int width, int height) {
    return call("YUY2ToARGB", src, srcStride, dst, stride, width, height);
}

int I420ToYUY2(const uint8_t* y, int yStride, const uint8_t* u, int uStride, const uint8_t* v, int vStride,
               uint8_t* dst, int stride, int width, int height) {
    return call("I420ToYUY2", y, yStride, u, uStride, v, vStride, dst, stride, width, height);
}

int YUY2ToI420(const uint8_t* src, int stride, uint8_t* y, int yStride, uint8_t* u, int uStride, uint8_t* v,
               int vStride, int width, int height) {
    return call("YUY2ToI420", src, stride, y, yStride, u, uStride, v, vStride, width, height);
}

int RGB24ToARGB(const uint8_t* src, int srcStride, uint8_t* dst, int stride, int width, int height) {
    return call("RGB24ToARGB", src, srcStride, dst, stride, width, height);
}

int I420Scale(const uint8_t* y, int yStride, const uint8_t* u, int uStride, const uint8_t* v, int vStride,
              int width, int height, uint8_t* dstY, int dstYStride, uint8_t* dstU, int dstUStride,
              uint8_t* dstV, int dstVStride, int dstWidth, int dstHeight, enum FilterMode filter) {
    return call("I420Scale", y, yStride, u, uStride, v, vStride, width, height, dstY, dstYStride, dstU,
                dstUStride, dstV, dstVStride, dstWidth, dstHeight, static_cast<int>(filter));
}

} // extern "C"
} // namespace libyuv

// 1700000000.123456 s
extern "C" int gettimeofday(timeval* time, void*) noexcept {
    ++g_clockReadings;
    time->tv_sec = 1700000000;
    time->tv_usec = 123456;
    return 0;
}

namespace {

class LibyuvCalls : public testing::Test {
protected:
    ~LibyuvCalls() override {
        g_buffers.clear();
        g_calls.clear();
        g_answers.clear();
    }

    // Addresses of frames that need not be there.
    static uint8_t* at(const char* buffer, uintptr_t address) {
        uint8_t* const begin = reinterpret_cast<uint8_t*>(address);
        name(buffer, begin, uint64_t(1) << 33);
        return begin;
    }
    uint8_t* const src = at("src", uintptr_t(1) << 40);
    uint8_t* const dst = at("dst", uintptr_t(1) << 41);
};

} // namespace

TEST_F(LibyuvCalls, OfEachConversionAreOneWithThePlanesOfAFrameWithoutPadding) {
    OVideoConverter::RGB24ToI420(src, dst, 8, 6);
    OVideoConverter::ARGBToI420(src, dst, 8, 6);
    OVideoConverter::I420ToARGB32(src, dst, 8, 6);
    OVideoConverter::YUY2ToARGB(src, dst, 8, 6);
    OVideoConverter::I420ToYUY2(src, dst, 8, 6, 0);
    OVideoConverter::I420ToYUY2(src, dst, 8, 6, 8);
    OVideoConverter::I420ToYUY2(src, dst, 8, 6, 20);
    OVideoConverter::YUY2ToI420(8, 6, src, dst);
    EXPECT_EQ(g_calls,
              (Calls{"RGB24ToI420 src+0 24 dst+0 8 dst+48 4 dst+60 4 8 -6",
                     "ARGBToI420 src+0 32 dst+0 8 dst+48 4 dst+60 4 8 6",
                     "I420ToARGB src+0 8 src+48 4 src+60 4 dst+0 32 8 6", "YUY2ToARGB src+0 16 dst+0 32 8 6",
                     "I420ToYUY2 src+0 8 src+48 4 src+60 4 dst+0 16 8 6",
                     "I420ToYUY2 src+0 8 src+48 4 src+60 4 dst+0 16 8 6",
                     "I420ToYUY2 src+0 8 src+48 4 src+60 4 dst+0 20 8 6",
                     "YUY2ToI420 src+0 16 dst+0 8 dst+48 4 dst+60 4 8 6"}));
}

TEST_F(LibyuvCalls, WithANegativeHeightAreMadeAsTheyAre) {
    OVideoConverter::RGB24ToI420(src, dst, 8, -6);
    OVideoConverter::ARGBToI420(src, dst, 8, -6);
    OVideoConverter::I420ToARGB32(src, dst, 8, -6);
    OVideoConverter::YUY2ToARGB(src, dst, 8, -6);
    OVideoConverter::YUY2ToI420(8, -6, src + 100, dst + 100);
    ASSERT_EQ(g_calls.size(), 5u);
    EXPECT_EQ(g_calls[0].substr(g_calls[0].size() - 4), " 8 6");
    for (size_t i = 1; i < 5; ++i)
        EXPECT_EQ(g_calls[i].substr(g_calls[i].size() - 5), " 8 -6") << g_calls[i];
    EXPECT_EQ(g_calls[4], "YUY2ToI420 src+100 16 dst+100 8 dst+52 4 dst+40 4 8 -6"); // 100 - 48 - 12
}

TEST_F(LibyuvCalls, FormEachPlaneFromTheOneBeforeSoThatNoSumWraps) {
    // 46341 * 40000 pixels and a quarter of them each fit 31 bits; together they do not.
    OVideoConverter::YUY2ToI420(46341, 40000, src, dst);
    OVideoConverter::I420ToYUY2(src, dst, 46341, 40000, 0);
    EXPECT_EQ(g_calls, (Calls{"YUY2ToI420 src+0 92682 dst+0 46341 dst+1853640000 23170 dst+2317050000 23170 "
                              "46341 40000",
                              "I420ToYUY2 src+0 46341 src+1853640000 23170 src+2317050000 23170 dst+0 92682 "
                              "46341 40000"}));
}

TEST_F(LibyuvCalls, AnswersArePassedOn) {
    for (int answer : {-1, 0, 5}) {
        for (const char* function :
             {"RGB24ToI420", "ARGBToI420", "I420ToARGB", "YUY2ToARGB", "I420ToYUY2", "YUY2ToI420"})
            g_answers[function] = answer;
        EXPECT_EQ(OVideoConverter::RGB24ToI420(src, dst, 8, 6), answer);
        EXPECT_EQ(OVideoConverter::ARGBToI420(src, dst, 8, 6), answer);
        EXPECT_EQ(OVideoConverter::I420ToARGB32(src, dst, 8, 6), answer);
        EXPECT_EQ(OVideoConverter::YUY2ToARGB(src, dst, 8, 6), answer);
        EXPECT_EQ(OVideoConverter::I420ToYUY2(src, dst, 8, 6, 0), answer);
        EXPECT_EQ(OVideoConverter::YUY2ToI420(8, 6, src, dst), answer);
        Bytes packed(8 * 6 * 2);
        EXPECT_EQ(OVideoConverter::convertToYUY2(Bytes(8 * 6 * 3 / 2), packed, 8, 6), answer);
        EXPECT_EQ(OVideoConverter::convertToYUY2(Bytes(8 * 6 * 3), packed, 8, 6), answer);
        EXPECT_EQ(OVideoConverter::convertToYUY2(Bytes(7 * 5 * 3 / 2), packed, 7, 5), answer);
    }
}

TEST_F(LibyuvCalls, AnswerOfRGB24ToARGBIsNotLookedAt) {
    const Bytes from(8 * 6 * 3);
    Bytes to(8 * 6 * 4);
    name("from", from.data(), from.size());
    name("to", to.data(), to.size());
    g_answers["RGB24ToARGB"] = -1;
    EXPECT_EQ(OVideoConverter::RGB24ToARGB32(from, to, 8, 6), 0);
    EXPECT_EQ(g_calls, Calls{"RGB24ToARGB from+0 24 to+0 32 8 -6"});
}

TEST_F(LibyuvCalls, OfRGB24ToYUY2AreTwoAndTheFirstAnswerIsIgnored) {
    const Bytes from(8 * 6 * 3);
    Bytes to(8 * 6 * 2, 9);
    name("from", from.data(), from.size());
    name("to", to.data(), to.size());
    g_answers["RGB24ToI420"] = -1;
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(from, to, 8, 6), 0);
    EXPECT_EQ(g_calls, (Calls{"RGB24ToI420 from+0 24 temporary+0 8 temporary+48 4 temporary+60 4 8 6",
                              "I420ToYUY2 temporary+0 8 temporary+48 4 temporary+60 4 to+0 16 8 6"}));
}

TEST_F(LibyuvCalls, ScalingBetweenEqualLevelsTakesNoShortcut) {
    Bytes from(320 * 240 * 3 / 2), to(320 * 240 * 3 / 2);
    name("from", from.data(), from.size());
    name("to", to.data(), to.size());
    g_answers["I420Scale"] = 5;
    EXPECT_EQ(
        OVideoScaler::scaleI420Frame(VIDEO_QUALITY_LD, from, VIDEO_QUALITY_LD, to, SCALE_METHOD_BILINEAR), 5);
    EXPECT_EQ(g_calls,
              Calls{"I420Scale from+0 320 from+76800 160 from+96000 160 320 240 to+0 320 to+76800 160 "
                    "to+96000 160 320 240 " +
                    std::to_string(libyuv::kFilterBilinear)});
}

TEST_F(LibyuvCalls, OfScalingYUY2AreThreeWhoseAnswersAreIgnored) {
    Bytes from(320 * 240 * 2), to(320 * 240 * 2);
    name("from", from.data(), from.size());
    name("to", to.data(), to.size());
    g_answers["YUY2ToI420"] = g_answers["I420Scale"] = g_answers["I420ToYUY2"] = -1;
    EXPECT_EQ(OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY_LD, from, VIDEO_QUALITY_LD, to, SCALE_METHOD_NONE),
              0);
    EXPECT_EQ(
        g_calls,
        (Calls{
            "YUY2ToI420 from+0 640 temporary+0 320 temporary+76800 160 temporary+96000 160 320 240",
            "I420Scale temporary+0 320 temporary+76800 160 temporary+96000 160 320 240 temporary+115200 320 "
            "temporary+192000 160 temporary+211200 160 320 240 0",
            "I420ToYUY2 temporary+115200 320 temporary+192000 160 temporary+211200 160 to+0 640 320 240"}));
}

TEST_F(LibyuvCalls, AStampIsOneReadingOfTheClock) {
    g_clockReadings = 0;
    EXPECT_EQ(OVideoCommon::get_time(), 3487918203u); // 1700000000123 mod 2^32
    EXPECT_EQ(g_clockReadings, 1);
}
