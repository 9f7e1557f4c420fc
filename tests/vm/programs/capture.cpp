#include "vm/programs/capture.h"

#include <ostrel/devices.h>

#include <gtest/gtest.h>

#include <QtCore/QProcess>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

namespace ostrel::vm {

bool waitUntil(const std::function<bool()>& condition, int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

QStringList cameras() {
    return videoDevices().keys();
}

QString onlyCamera() {
    const QStringList all = cameras();
    EXPECT_EQ(all.size(), 1) << all.join(QLatin1String(", ")).toStdString();
    return all.size() == 1 ? all.first() : QString();
}

int shellStatus(const std::string& command) {
    return QProcess::execute(QString::fromLatin1("bash"),
                             QStringList() << QString::fromLatin1("-c") << QString::fromStdString(command));
}

void shell(const std::string& command) {
    EXPECT_EQ(shellStatus(command), 0) << command;
}

void cameraShell(const std::string& command) {
    shell(". \"$VM_TESTS/guest/cameras.sh\" && " + command);
}

Capture::Capture(const QString& camera, int width, int height)
    : camera_(camera), driver_(OVideoCaptureUnix::ptr()) {
    driver_->startCapture(camera.toLatin1().constData(), width, height);
}

void Capture::stop() {
    driver_->stopVideoCapture();
}

const VideoFrame& Capture::takePicture() {
    driver_->selfVideoFrame(picture_);
    return picture_;
}

bool Capture::waitForStartUp() {
    return waitUntil([&] { return driver_->isFinished(); });
}

bool Capture::waitForPicture() {
    const uint32_t before = picture_.frameNumber;
    return waitUntil([&] {
        const VideoFrame& frame = takePicture();
        return !frame.data.empty() && frame.frameNumber != before;
    });
}

bool Capture::waitForFrames(uint32_t count) {
    const uint64_t before = statistics().delivered;
    return waitFor([&](const OVideoStatistics& now) { return now.delivered >= before + count; });
}

bool Capture::waitFor(const std::function<bool(const OVideoStatistics&)>& condition) {
    return waitUntil([&] { return condition(statistics()); });
}

bool Capture::waitForEnd() {
    return waitFor([](const OVideoStatistics& now) { return !now.ended.isEmpty(); });
}

OVideoStatistics Capture::statistics() const {
    OVideoStatistics figures;
    videoStatistics(camera_, figures);
    return figures;
}

uint64_t Capture::droppedFrames() const {
    uint64_t sum = 0;
    for (const uint64_t count : statistics().dropped) {
        sum += count;
    }
    return sum;
}

namespace {

using std::chrono::milliseconds;

milliseconds stopTime(const QString& camera, const std::function<void()>& beforeStop) {
    Capture capture(camera, 320, 240);
    EXPECT_TRUE(capture.waitForPicture());
    beforeStop();
    const auto begin = std::chrono::steady_clock::now();
    capture.stop();
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begin);
}

} // namespace

bool stopsWithin(int limit, const QString& camera, const std::function<void(bool frames)>& setFrames) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        const milliseconds usual = stopTime(camera, [] {});
        const milliseconds silent = stopTime(camera, [&] { setFrames(false); });
        setFrames(true);
        std::cout << "stopped in " << silent.count() << " ms, with frames in " << usual.count() << " ms\n";
        if (silent <= std::max(milliseconds(limit), 2 * usual)) {
            return true;
        }
    }
    return false;
}

} // namespace ostrel::vm
