// snapshot and a camera that sends JPEG; the names of a series.
#include "jpeg_camera.h"

#include "apps/camera/snapshot/picture_format.h"
#include "apps/camera/snapshot/series_name.h"

#include <QtGui/QImage>

#include <cstdlib>

namespace {

using namespace ostrel;
using namespace ostrel::support;
using namespace ostrel::tests;
using namespace ostrel::apps::cli;

class SnapshotOfJpegCamera : public JpegCameraTest {
protected:
    QByteArray take(const QString& name, const std::vector<uint8_t>& picture) {
        options.snapshot.output = folder.file(name).toStdString();
        run(runSnapshot, [&] { feed(picture, 1000000); });
        return folder.read(name);
    }
};

// The encoder writes the standard tables in the same place and order, so that the bytes can be compared.
TEST_F(SnapshotOfJpegCamera, IsItsOwnPictureWithTheTablesThatItLeftOut) {
    plug(64, 48);
    JpegOptions bare;
    bare.tables = false;
    const std::vector<uint8_t> whole = quadrantsAsJpeg(64, 48);
    const QByteArray file = take("a.jpg", quadrantsAsJpeg(64, 48, bare));
    EXPECT_EQ(whole, std::vector<uint8_t>(file.begin(), file.end()));
}

TEST_F(SnapshotOfJpegCamera, OfAnotherSizeIsScaled) {
    plug(128, 96);
    EXPECT_EQ(QImage::fromData(take("a.JPEG", quadrantsAsJpeg(128, 96))).size(), QSize(64, 48));
}

TEST_F(SnapshotOfJpegCamera, AsAnotherKindIsDecoded) {
    plug(64, 48);
    const QByteArray file = take("a.bmp", quadrantsAsJpeg(64, 48));
    EXPECT_TRUE(file.startsWith("BM"));
    EXPECT_EQ(QImage::fromData(file).size(), QSize(64, 48));
}

TEST(SeriesPath, IsNumberedOrHasATime) {
    setenv("TZ", "UTC", 1);
    tzset();
    const std::time_t time = 1795320304; // 2026-11-22 04:05:04
    EXPECT_EQ(seriesPath("shot-%04d.jpg", 12, time), "shot-0012.jpg");
    EXPECT_EQ(seriesPath("shot-%d.jpg", 3, time), "shot-3.jpg");
    EXPECT_EQ(seriesPath("%Y%m%d-%H%M%S.jpg", 12, time), "20261122-040504.jpg");
    EXPECT_TRUE(isSeriesPath("%F.png"));
    EXPECT_TRUE(isSeriesPath("%d.png"));
    EXPECT_FALSE(isSeriesPath("snapshot.png"));
    EXPECT_FALSE(isSeriesPath("100%"));
    EXPECT_FALSE(isSeriesPath("50%%.png"));
}

} // namespace
