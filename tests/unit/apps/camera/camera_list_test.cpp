#include "apps/camera/camera_list.h"

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <clocale>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

TEST(CameraList, ColumnsFollowTheWidthOfLettersNotOfBytes) {
    ASSERT_TRUE(std::setlocale(LC_CTYPE, "C.UTF-8"));
    const std::string table = cameraTable({{"id-1", "K\xc3\xa4mera", {{320, 240}}}, {"i2", "Cam", {}}});
    EXPECT_EQ(table, "NAME    IDENTIFIER  SIZES\n"
                     "K\xc3\xa4mera  id-1        320x240\n"
                     "Cam     i2\n");
}

TEST(CameraList, NodesThatAreNoCamerasStandWithTheirReasons) {
    const std::vector<OtherNode> nodes = {{"/dev/video1", "Webcam", "delivers data about pictures"},
                                          {"/dev/video10", "Card", "is a touch pad"}};
    EXPECT_EQ(nodeTable(nodes), "NODE          NAME    WHY IT IS NO CAMERA, OR CANNOT BE USED\n"
                                "/dev/video1   Webcam  delivers data about pictures\n"
                                "/dev/video10  Card    is a touch pad\n");
    EXPECT_EQ(nodeTable({}), "");
    EXPECT_NE(nodeTable({{"pipewire:\x1b[2J", "a", "b"}}).find("\npipewire:?[2J  a     b\n"),
              std::string::npos);
    const QJsonObject json =
        QJsonDocument::fromJson(QByteArray::fromStdString(allJson({{"pci-7", "Cam", {}}}, nodes))).object();
    EXPECT_EQ(json["cameras"].toArray()[0].toObject()["id"].toString().toStdString(), "pci-7");
    EXPECT_EQ(json["others"].toArray()[1].toObject()["reason"].toString().toStdString(), "is a touch pad");
}

} // namespace ostrel::tests
