// record and a camera that sends JPEG, with a driver whose frames and times are known.
#include "jpeg_camera.h"
#include "video.h"

#include <QtGui/QImage>

namespace {

using namespace ostrel;
using namespace ostrel::support;
using namespace ostrel::tests;

class RecordedJpegCamera : public JpegCameraTest {
protected:
    RecordedJpegCamera() { options.record.output = file().toStdString(); }

    QString file() const { return folder.file("clip.mkv"); }

    qint64 wholePictures() const { return folder.read("clip.mkv").count("\xFF\xD9"); }

    // The next one is fed once the one before has been written, so that none is passed over.
    void feed(const std::vector<uint8_t>& jpeg, int64_t microseconds, int sequence = -1,
              bool written = true) {
        const qint64 before = wholePictures();
        JpegCameraTest::feed(jpeg, microseconds, sequence);
        if (written)
            EXPECT_TRUE(comesTrue([&] { return wholePictures() > before; }));
        else
            EXPECT_TRUE(kernel->waitUntilIdle(path));
    }

    std::string record(uint64_t frames, const std::function<void()>& camera) {
        options.limit.frames = frames;
        return run(apps::cli::runRecord, camera);
    }
};

TEST_F(RecordedJpegCamera, ItsOwnPicturesGoInUntouchedEachWithItsTime) {
    plug(64, 48);
    // From 30 frames a second to 7.5, as by a long exposure in the dark.
    std::vector<int64_t> times;
    QByteArray sent;
    for (int number = 0; number < 40; ++number)
        times.push_back(number == 0 ? 5123456 : times.back() + (number < 20 ? 33333 : 133333));
    record(40, [&] {
        for (int number = 0; number < 40; ++number) {
            const std::vector<uint8_t> jpeg = numbered(number);
            sent.append(reinterpret_cast<const char*>(jpeg.data()), static_cast<int>(jpeg.size()));
            feed(jpeg, times[static_cast<std::size_t>(number)]);
        }
    });
    const Video video = readVideo(file());
    ASSERT_EQ(video.times.size(), 40U);
    for (std::size_t at = 0; at < 40; ++at)
        EXPECT_NEAR(video.times[at], double(times[at] - times[0]) / 1e6, 0.001) << at;
    EXPECT_TRUE(sent == video.pictures) << sent.size() << " bytes, found " << video.pictures.size();
    EXPECT_EQ(video.errors.toStdString(), "");
    EXPECT_EQ(video.decoded, 40);
    EXPECT_EQ(video.width, 64);
    EXPECT_EQ(video.height, 48);
    // 19 short intervals, 20 long ones, and the last picture's own.
    const double shown = (19 * 33333 + 20 * 133333) / 1e6;
    EXPECT_NEAR(video.duration, shown * 40 / 39, 0.002);
}

TEST_F(RecordedJpegCamera, PicturesOfAnotherSizeAreScaledAndEncoded) {
    plug(128, 96);
    JpegOptions jpeg;
    record(3, [&] {
        for (int number = 0; number < 3; ++number)
            feed(quadrantsAsJpeg(128, 96, jpeg), 1000000 + number * 40000);
    });
    const Video video = readVideo(file());
    EXPECT_EQ(video.decoded, 3);
    EXPECT_EQ(video.errors.toStdString(), "");
    const QImage image = QImage::fromData(video.pictures, "JPEG");
    ASSERT_EQ(image.size(), QSize(64, 48));
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
        const QColor colour = image.pixelColor(quadrant % 2 ? 48 : 16, quadrant / 2 ? 36 : 12);
        const uint8_t* const bgr = JPEG_QUADRANTS[quadrant];
        EXPECT_NEAR(colour.blue(), bgr[0], 6) << quadrant;
        EXPECT_NEAR(colour.green(), bgr[1], 6) << quadrant;
        EXPECT_NEAR(colour.red(), bgr[2], 6) << quadrant;
    }
}

// The mode's size is no promise: the header's counts.
TEST_F(RecordedJpegCamera, APictureThatIsNotOfTheModesSizeIsScaled) {
    plug(64, 48);
    record(3, [&] {
        feed(numbered(1), 1000000);
        feed(numbered(2, 128, 96), 1040000);
        feed(numbered(3), 1080000);
    });
    const Video video = readVideo(file());
    EXPECT_EQ(video.decoded, 3);
    EXPECT_EQ(video.errors.toStdString(), "");
    const auto first = numbered(1);
    EXPECT_TRUE(video.pictures.startsWith(
        QByteArray(reinterpret_cast<const char*>(first.data()), static_cast<int>(first.size()))));
    const auto middle = numbered(2, 128, 96);
    EXPECT_EQ(video.pictures.indexOf(
                  QByteArray(reinterpret_cast<const char*>(middle.data()), static_cast<int>(middle.size()))),
              -1);
    const auto last = numbered(3);
    EXPECT_TRUE(video.pictures.endsWith(
        QByteArray(reinterpret_cast<const char*>(last.data()), static_cast<int>(last.size()))));
}

TEST_F(RecordedJpegCamera, BytesThatAreNoPictureAreLeftOutAndCounted) {
    plug(64, 48);
    options.quiet = false;
    const std::string said = record(2, [&] {
        feed(numbered(1), 1000000);
        feed(std::vector<uint8_t>(3000, 0x55), 1040000, -1, false);
        feed(numbered(2), 1080000);
    });
    EXPECT_EQ(readVideo(file()).decoded, 2);
    EXPECT_NE(said.find("lost"), std::string::npos) << said;
    EXPECT_NE(said.find("(1 after frame 1)"), std::string::npos) << said;
}

TEST_F(RecordedJpegCamera, FramesThatTheDriverLostAreNamed) {
    plug(64, 48);
    options.quiet = false;
    const std::string said = record(4, [&] {
        feed(numbered(1), 1000000, 7);
        feed(numbered(2), 1033000, 8);
        feed(numbered(3), 1133000, 11);
        feed(numbered(4), 1200000, 13);
    });
    EXPECT_NE(said.find(", 3 lost (2 after frame 2, 1 after frame 3), to "), std::string::npos) << said;
}

// Neither a clock that steps back nor frames that come all at once make a file that players refuse.
TEST_F(RecordedJpegCamera, TimesNeverStandStillOrGoBack) {
    plug(64, 48);
    record(5, [&] {
        feed(numbered(1), 9000000);
        feed(numbered(2), 9040000);
        feed(numbered(3), 2000000);
        feed(numbered(4), 9041200);
        feed(numbered(5), 9042600);
    });
    const Video video = readVideo(file());
    EXPECT_EQ(video.times, (std::vector<double>{0, 0.04, 0.041, 0.042, 0.043}));
    EXPECT_EQ(video.errors.toStdString(), "");
}

} // namespace
