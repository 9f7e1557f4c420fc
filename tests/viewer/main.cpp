// Gives every test of the window a screen of its own. Listing the tests takes none.
#include "viewer/virtual_screen.h"

#include <gtest/gtest.h>

#include <QtWidgets/QApplication>

#include <cstdio>
#include <memory>

namespace {

class Screen : public testing::Environment {
public:
    void SetUp() override {
        screen_ = std::make_unique<ostrel::tests::VirtualScreen>(1280, 900);
        if (screen_->runs()) {
            qputenv("DISPLAY", screen_->display());
            qputenv("QT_QPA_PLATFORM", "xcb");
        } else {
            std::puts("Xvfb (Debian: xvfb) cannot be started: testing with Qt's offscreen platform instead");
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        static int argc = 1;
        static char name[] = "viewer_test";
        static char* argv[] = {name, nullptr};
        application_ = std::make_unique<QApplication>(argc, argv);
    }

    void TearDown() override {
        application_.reset();
        screen_.reset();
    }

private:
    std::unique_ptr<ostrel::tests::VirtualScreen> screen_;
    std::unique_ptr<QApplication> application_;
};

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::AddGlobalTestEnvironment(new Screen);
    return RUN_ALL_TESTS();
}
