#include "apps/camera/frame_writer.h"

#include "apps/camera/y4m.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

TEST(FrameWriter, NumbersReplaceTheirField) {
    EXPECT_EQ(numberedPath("a-%04d.png", 7), "a-0007.png");
    EXPECT_EQ(numberedPath("a%03d.png", 12345), "a12345.png");
    EXPECT_EQ(numberedPath("%d%.png", 7), "7%.png");
    EXPECT_FALSE(isNumberedPath("100%.png"));
    EXPECT_FALSE(isNumberedPath("%s.png"));
    EXPECT_FALSE(isNumberedPath("%00d.png"));
    EXPECT_FALSE(isNumberedPath("%0"));
}

TEST(FrameWriter, AMeasuredRateReplacesTheStatedOne) {
    QTemporaryDir folder;
    const QString path = folder.filePath("a.y4m");
    const auto writer = makeFrameWriter(path.toStdString(), {Container::Y4m, Layout::I420}, {4, 2}, Rate());
    writer->write(Bytes(12, 100));
    writer->write(Bytes(12, 101));
    writer->finish(Rate{25, 2});
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::string text = file.readAll().toStdString();
    EXPECT_EQ(text.find("YUV4MPEG2 W4 H2 F25:2 Ip"), 0U);
    EXPECT_EQ(text.size(), y4mHeaderLine({4, 2}, Rate()).size() + 2 * (6 + 12));
    EXPECT_EQ(text.substr(text.size() - 18), "FRAME\n" + std::string(12, 101));
}

} // namespace ostrel::tests
