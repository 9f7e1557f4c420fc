// The pictures that go into recordings: what their headers say, and those that the program makes itself.
#include "apps/camera/jpeg/jpeg_encoder.h"
#include "apps/camera/jpeg/jpeg_size.h"
#include "apps/camera/record/ebml.h"

#include "frames.h"

#include <gtest/gtest.h>

#include <QtGui/QImage>

namespace {

using namespace ostrel::apps;
using namespace ostrel::apps::cli;

QByteArray encoded(const ostrel::tests::Bytes& bgra, const Size& size, int quality) {
    JpegEncoder encoder(size, quality);
    const JpegEncoder::Jpeg jpeg = encoder.encode(bgra.data());
    return QByteArray(reinterpret_cast<const char*>(jpeg.data), static_cast<int>(jpeg.bytes));
}

std::optional<Size> sizeIn(const QByteArray& jpeg) {
    return jpegSize(reinterpret_cast<const uint8_t*>(jpeg.constData()),
                    static_cast<std::size_t>(jpeg.size()));
}

// Noise: what compresses worst.
ostrel::tests::Bytes noise(const Size& size) {
    ostrel::tests::Bytes bgra(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                              4);
    uint32_t state = 1;
    for (uint8_t& byte : bgra) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bgra;
}

TEST(JpegEncoder, KeepsColoursAndSidesOfEverySize) {
    for (const Size& size : {Size{64, 48}, Size{33, 17}, Size{16, 9}}) {
        const QImage image =
            QImage::fromData(encoded(ostrel::tests::flagArgb(size.width, size.height), size, 95), "JPEG");
        ASSERT_EQ(image.width(), size.width);
        ASSERT_EQ(image.height(), size.height);
        const QColor top = image.pixelColor(size.width - 1, 0);
        const QColor bottom = image.pixelColor(size.width - 1, size.height - 1);
        EXPECT_GT(top.red(), bottom.red() + 50) << toString(size);
        EXPECT_LT(top.blue(), bottom.blue() - 50) << toString(size);
    }
}

TEST(JpegEncoder, HoldsTheLargestPictureThatThereCanBe) {
    const Size size = {97, 53};
    const QImage image = QImage::fromData(encoded(noise(size), size, 100), "JPEG");
    EXPECT_EQ(image.width(), 97);
}

TEST(JpegEncoder, QualityIsPaidForInBytes) {
    const Size size = {160, 120};
    EXPECT_LT(2 * encoded(noise(size), size, 20).size(), encoded(noise(size), size, 90).size());
}

TEST(JpegSize, IsWhatTheHeaderSays) {
    const QByteArray jpeg = encoded(ostrel::tests::flagArgb(48, 32), {48, 32}, 80);
    EXPECT_EQ(sizeIn(jpeg), (Size{48, 32}));
    QByteArray filled = jpeg; // fill bytes in front of a marker
    filled.insert(2, QByteArray(3, '\xFF'));
    EXPECT_EQ(sizeIn(filled), (Size{48, 32}));
}

TEST(JpegSize, CutOrForeignBytesHaveNone) {
    const QByteArray jpeg = encoded(ostrel::tests::flagArgb(48, 32), {48, 32}, 80);
    const int scan = static_cast<int>(jpeg.indexOf("\xFF\xDA"));
    for (int bytes = 0; bytes < scan + 4; ++bytes)
        EXPECT_FALSE(sizeIn(jpeg.left(bytes))) << bytes;
    EXPECT_FALSE(sizeIn(QByteArray(100, '\0')));
    EXPECT_FALSE(sizeIn(jpeg.mid(2)));
}

// The bytes are those of RFC 8794.
TEST(Ebml, ElementsAreAsPublished) {
    const auto hex = [](const std::string& bytes) {
        return QByteArray::fromStdString(bytes).toHex().toStdString();
    };
    EXPECT_EQ(hex(ebml::number(0x4286, 1)), "4286"
                                            "0100000000000001"
                                            "01");
    EXPECT_EQ(hex(ebml::number(0xD7, 256)), "d7"
                                            "0100000000000002"
                                            "0100");
    EXPECT_EQ(hex(ebml::openMaster(0x1F43B675)), "1f43b675"
                                                 "01ffffffffffffff");
    EXPECT_EQ(hex(ebml::real(0x4489, 1.5)), "4489"
                                            "0100000000000008"
                                            "3ff8000000000000");
    EXPECT_EQ(hex(ebml::space(11)), "ec"
                                    "0100000000000002"
                                    "0000");
}

} // namespace
