#include "apps/camera/video_nodes.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

namespace {

class VideoNodes : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"video0", "video10", "video2", "videox", "v4l-subdev0"}) {
            QFile file(folder_.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        }
    }
    std::string path(const char* name) const { return folder_.filePath(name).toStdString(); }

    QTemporaryDir folder_;
};

} // namespace

TEST_F(VideoNodes, ThoseThatMayNotBeOpenedAreFoundInTheOrderOfTheirNumbers) {
    const std::vector<ClosedNode> nodes = closedVideoNodes(
        folder_.path().toStdString(), [this](const std::string& node) { return node == path("video0"); });
    ASSERT_EQ(nodes.size(), 2U);
    EXPECT_EQ(nodes[0].path, path("video2"));
    EXPECT_EQ(nodes[1].path, path("video10"));
    EXPECT_EQ(nodes[0].group, ""); // its group may not write
}

TEST_F(VideoNodes, AdviceNamesTheNodesAndTheGroupToJoin) {
    EXPECT_EQ(permissionAdvice({{"/dev/video0", "video"}, {"/dev/video1", "video"}}),
              "no permission to use /dev/video0, /dev/video1: join the group video (sudo usermod -aG video "
              "\"$USER\") "
              "and log in again");
    EXPECT_EQ(permissionAdvice({{"/dev/video0", ""}}),
              "no permission to use /dev/video0: ask the administrator of this machine for access");
}

} // namespace ostrel::tests
