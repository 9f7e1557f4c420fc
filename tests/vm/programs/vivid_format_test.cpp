// Pictures of the kernel's vivid driver in formats that the library would not choose by itself: the calls
// into the kernel are real, only the list of formats that comes back is shortened. One vivid camera is there,
// of the kind that the case loads.
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "support/machine.h"
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <ostrel/native_frame.h>

#include <gtest/gtest.h>

#include <linux/videodev2.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

struct Wish {
    const char* name;
    uint32_t fourcc;
    uint32_t bytesPerPixel; // of the first plane
};

// What the driver said of a buffer.
struct Taken {
    int64_t time; // nanoseconds
    uint32_t flags;
};

// Lets one format through, and asks the driver for rows with padding or for another order of fields when it
// is told to. Thread-safe.
class OneFormat : public cameras::v4l2::KernelCalls {
public:
    OneFormat(const Wish& wish, uint32_t padding, uint32_t field)
        : wish_(wish), padding_(padding), field_(field) {}

protected:
    int doIoctl(int descriptor, unsigned long request, void* argument) override {
        if (request == VIDIOC_ENUM_FMT) {
            return enumerate(descriptor, static_cast<v4l2_fmtdesc*>(argument));
        }
        if (request == VIDIOC_S_FMT && padding_ != 0) {
            v4l2_pix_format& format = static_cast<v4l2_format*>(argument)->fmt.pix;
            format.bytesperline = format.width * wish_.bytesPerPixel + padding_;
        }
        if (request == VIDIOC_S_FMT && field_ != V4L2_FIELD_NONE) {
            static_cast<v4l2_format*>(argument)->fmt.pix.field = field_;
        }
        const int result = KernelCalls::doIoctl(descriptor, request, argument);
        if (request == VIDIOC_DQBUF && result == 0) {
            note(*static_cast<v4l2_buffer*>(argument));
        }
        return result;
    }

public:
    // The frame with this number of the driver's.
    Taken taken(uint32_t sequence) const {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto found = taken_.find(sequence);
        return found == taken_.end() ? Taken{0, 0} : found->second;
    }

private:
    void note(const v4l2_buffer& buffer) {
        std::lock_guard<std::mutex> lock(mutex_);
        taken_[buffer.sequence] = {
            (buffer.timestamp.tv_sec * int64_t(1000000) + buffer.timestamp.tv_usec) * 1000, buffer.flags};
    }

    // The driver's own entry under the index 0, and no more.
    int enumerate(int descriptor, v4l2_fmtdesc* entry) {
        if (entry->index > 0) {
            errno = EINVAL;
            return -1;
        }
        do {
            if (KernelCalls::doIoctl(descriptor, VIDIOC_ENUM_FMT, entry) != 0) {
                return -1;
            }
            ++entry->index;
        } while (entry->pixelformat != wish_.fourcc);
        entry->index = 0;
        return 0;
    }

    const Wish wish_;
    const uint32_t padding_;
    const uint32_t field_;
    mutable std::mutex mutex_; // of the next
    std::map<uint32_t, Taken> taken_;
};

// While it lives, the machine's cameras are listed and driven with these calls.
class ShortenedMachine {
public:
    explicit ShortenedMachine(const Wish& wish, uint32_t padding = 0, uint32_t field = V4L2_FIELD_NONE)
        : calls_(std::make_shared<OneFormat>(wish, padding, field)),
          machine_(cameras::v4l2::makeProvider(calls_, cameras::v4l2::makeDiscovery())) {}
    Taken taken(uint32_t sequence) const { return calls_->taken(sequence); }

private:
    const std::shared_ptr<OneFormat> calls_;
    const support::Machine machine_;
};

const Wish YUYV = {"YUYV", V4L2_PIX_FMT_YUYV, 2};
const Wish NV12 = {"NV12", V4L2_PIX_FMT_NV12, 1};
const Wish GREY = {"GREY", V4L2_PIX_FMT_GREY, 1};

const Wish WISHES[] = {
    YUYV,
    NV12,
    {"UYVY", V4L2_PIX_FMT_UYVY, 2},
    {"YVYU", V4L2_PIX_FMT_YVYU, 2},
    {"NV21", V4L2_PIX_FMT_NV21, 1},
    {"YU12", V4L2_PIX_FMT_YUV420, 1},
    {"YV12", V4L2_PIX_FMT_YVU420, 1},
    {"422P", V4L2_PIX_FMT_YUV422P, 1},
    {"RGB3", V4L2_PIX_FMT_RGB24, 3},
    {"BGR3", V4L2_PIX_FMT_BGR24, 3},
    {"BGR4", V4L2_PIX_FMT_BGR32, 4},
    {"RGB4", V4L2_PIX_FMT_RGB32, 4},
    {"XR24", V4L2_PIX_FMT_XBGR32, 4},
    {"RGBP", V4L2_PIX_FMT_RGB565, 2},
    {"RGBR", V4L2_PIX_FMT_RGB565X, 2},
    {"NV16", V4L2_PIX_FMT_NV16, 1},
    {"NV24", V4L2_PIX_FMT_NV24, 1},
};

// Through the interface for several planes: each plane in memory of its own, some behind an offset.
const Wish WISHES_OF_PLANES[] = {
    {"NM12", V4L2_PIX_FMT_NV12M, 1},   {"NM21", V4L2_PIX_FMT_NV21M, 1},   {"NM16", V4L2_PIX_FMT_NV16M, 1},
    {"YM12", V4L2_PIX_FMT_YUV420M, 1}, {"YM21", V4L2_PIX_FMT_YVU420M, 1}, {"YM16", V4L2_PIX_FMT_YUV422M, 1},
    {"YM24", V4L2_PIX_FMT_YUV444M, 1}, {"YUYV", V4L2_PIX_FMT_YUYV, 2},
};

const Wish WISHES_OF_GREY[] = {
    GREY,
    {"Y10", V4L2_PIX_FMT_Y10, 2},
    {"Y12", V4L2_PIX_FMT_Y12, 2},
    {"Y16", V4L2_PIX_FMT_Y16, 2},
    {"Y16-BE", V4L2_PIX_FMT_Y16_BE, 2},
};

std::string wishName(const testing::TestParamInfo<Wish>& info) {
    std::string name = info.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::ostream& operator<<(std::ostream& out, const Wish& wish) {
    return out << wish.name;
}

// One frame as another program reads it, in the mode that the driver was left in. The picture stands still.
std::string bytesByAnotherProgram() {
    shell("rm -f /tmp/frame; v4l2-ctl -d /dev/video0 --stream-mmap --stream-count=1 --stream-to=/tmp/frame "
          ">/dev/null 2>&1");
    std::ifstream file("/tmp/frame", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void expectNativeBytes(const Wish& wish) {
    OVideoNativeFrame frame;
    {
        const ShortenedMachine machine(wish);
        const QSharedPointer<OVideoCaptureUnix> capture = quietVideoCapture();
        capture->startCapture(onlyCamera().toLatin1().constData(), 640, 480);
        OVideoFrameReader reader(capture);
        QString why;
        ASSERT_EQ(nextNativeFrame(reader, frame, 120000, &why), 1) << why.toStdString();
    }
    EXPECT_EQ(frame.format().toStdString(), wish.name);
    EXPECT_EQ(frame.width(), 640);
    EXPECT_EQ(frame.height(), 480);
    const std::string expected = bytesByAnotherProgram();
    ASSERT_EQ(frame.bytesUsed(), expected.size());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), reinterpret_cast<const char*>(frame.data())))
        << "other bytes";
}

} // namespace

class VividFormat : public testing::TestWithParam<Wish> {};

TEST_P(VividFormat, ShowsTheDriversColorBarsAtEverySize) {
    const ShortenedMachine machine(GetParam());
    for (const auto& size :
         {std::pair<int, int>(320, 240), std::pair<int, int>(640, 480), std::pair<int, int>(1280, 720)}) {
        Capture capture(onlyCamera(), size.first, size.second);
        ASSERT_TRUE(capture.waitForPicture());
        EXPECT_EQ(capture.statistics().grantedFormat.toStdString(), GetParam().name);
        EXPECT_EQ(capture.statistics().grantedWidth, size.first);
        EXPECT_EQ(capture.statistics().grantedHeight, size.second);
        EXPECT_TRUE(showsColorBars(capture.picture()));
    }
}

TEST_P(VividFormat, ShowsTheColorBarsFromRowsWithPadding) {
    const ShortenedMachine machine(GetParam(), 96);
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_TRUE(showsColorBars(capture.picture()));
}

TEST_P(VividFormat, NativeBytesAreThoseThatAnotherProgramReads) {
    expectNativeBytes(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Kernel, VividFormat, testing::ValuesIn(WISHES), wishName);

class VividPlanes : public testing::TestWithParam<Wish> {};

TEST_P(VividPlanes, ShowTheDriversColorBars) {
    const ShortenedMachine machine(GetParam());
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_EQ(capture.statistics().grantedFormat.toStdString(), GetParam().name);
    EXPECT_TRUE(showsColorBars(capture.picture()));
}

TEST_P(VividPlanes, NativeBytesAreThoseThatAnotherProgramReads) {
    expectNativeBytes(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Kernel, VividPlanes, testing::ValuesIn(WISHES_OF_PLANES), wishName);

// The driver of an analog input weaves the fields itself when it is asked to: what it gives then is what we
// have to make of fields that come one after the other.
TEST(VividFields, OneAfterTheOtherAreWovenAsTheDriverWeavesThem) {
    shell("v4l2-ctl -c test_pattern=15"); // lines, light and dark in turn
    const auto brightnessOfRows = [](uint32_t field) {
        const ShortenedMachine machine(GREY, 0, field);
        Capture capture(onlyCamera(), 720, 576);
        std::vector<int> rows;
        EXPECT_TRUE(capture.waitForPicture());
        EXPECT_EQ(capture.statistics().grantedHeight, 576);
        // The first row has data in it, not picture.
        for (size_t row = 1; row < 576 && capture.picture().data.size() == static_cast<size_t>(720 * 576 * 4);
             ++row)
            rows.push_back(capture.picture().data[(row * 720 + 300) * 4]);
        return rows;
    };
    const std::vector<int> woven = brightnessOfRows(V4L2_FIELD_INTERLACED);
    ASSERT_EQ(woven.size(), 575u);
    EXPECT_GT(std::abs(woven[0] - woven[1]), 100); // else nothing is shown by this
    EXPECT_EQ(brightnessOfRows(V4L2_FIELD_SEQ_TB), woven);
    EXPECT_EQ(brightnessOfRows(V4L2_FIELD_SEQ_BT), woven);
}

// libyuv's largest factor is 2, and blue of limited range needs 2.11 in BT.709.
const int TOLERANCE709 = 14;

TEST(VividColors, FollowTheMatrixAndTheRangeThatTheDriverNames) {
    // vivid's menus: 0 SMPTE 170M (BT.601), 1 Rec. 709, 2 sRGB (BT.601); 1 full range, 2 limited range.
    for (const std::string colorspace : {"0", "1", "2"}) {
        for (const char* range : {"1", "2"}) {
            SCOPED_TRACE("colorspace " + colorspace + ", range " + range);
            shell("v4l2-ctl -c colorspace=" + colorspace + ",quantization=" + range);
            for (const Wish& wish : {YUYV, NV12}) {
                const ShortenedMachine machine(wish);
                Capture capture(onlyCamera(), 320, 240);
                ASSERT_TRUE(capture.waitForPicture());
                EXPECT_TRUE(showsColorBars(capture.picture(), colorspace == "1" ? TOLERANCE709 : TOLERANCE));
            }
        }
    }
    shell("v4l2-ctl -c colorspace=2,quantization=0");
}

TEST(VividTimes, AreTheDriversOfThatFrameAndSayWhatTheyMean) {
    const struct {
        const char* control;
        uint32_t flag;
        OVideoFrameFacts::TimeSource source;
    } sources[] = {{"0", V4L2_BUF_FLAG_TSTAMP_SRC_EOF, OVideoFrameFacts::END_OF_FRAME},
                   {"1", V4L2_BUF_FLAG_TSTAMP_SRC_SOE, OVideoFrameFacts::START_OF_EXPOSURE}};
    for (const auto& each : sources) {
        SCOPED_TRACE(each.control);
        shell(std::string("v4l2-ctl -d /dev/video0 -c timestamp_source=") + each.control);
        const ShortenedMachine machine(YUYV);
        const QSharedPointer<OVideoCaptureUnix> capture = quietVideoCapture();
        capture->startCapture(onlyCamera().toLatin1().constData(), 320, 240);
        OVideoFrameReader reader(capture);
        VideoFrame frame;
        OVideoFrameFacts facts;
        for (int i = 0; i < 20; ++i) {
            ASSERT_EQ(nextVideoFrame(reader, frame, 120000, &facts), 1);
            const Taken taken = machine.taken(facts.sequence());
            EXPECT_EQ(facts.captureTime(), taken.time);
            EXPECT_EQ(facts.timeSource(), each.source);
            EXPECT_EQ(taken.flags & V4L2_BUF_FLAG_TSTAMP_SRC_MASK, each.flag);
        }
    }
    shell("v4l2-ctl -d /dev/video0 -c timestamp_source=0");
}

class VividGrey : public testing::TestWithParam<Wish> {};

TEST_P(VividGrey, ShowsTheBarsFromLightToDark) {
    const ShortenedMachine machine(GetParam());
    Capture capture(onlyCamera(), 320, 240);
    ASSERT_TRUE(capture.waitForPicture());
    const uint8_t* row = capture.picture().data.data() + 120 * 320 * 4;
    int before = 256;
    for (int bar = 0; bar < 8; ++bar) {
        const uint8_t* pixel = row + (bar * 40 + 20) * 4;
        EXPECT_EQ(pixel[0], pixel[1]);
        EXPECT_EQ(pixel[0], pixel[2]);
        EXPECT_LT(pixel[0], before) << "bar " << bar;
        before = pixel[0];
    }
}

TEST_P(VividGrey, NativeBytesAreThoseThatAnotherProgramReads) {
    expectNativeBytes(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Kernel, VividGrey, testing::ValuesIn(WISHES_OF_GREY), wishName);
