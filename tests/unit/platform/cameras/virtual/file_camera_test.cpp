// Playing a file as a camera.
#include "readings.h"
#include "y4m_text.h"

#include <gtest/gtest.h>
#include <libyuv.h>

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

// A folder that goes away with the test.
class FileCamera : public testing::Test {
protected:
    FileCamera() {
        char name[] = "/tmp/ostrel-file-camera-XXXXXX";
        folder = ::mkdtemp(name);
    }
    ~FileCamera() override {
        for (const std::string& file : files)
            ::unlink(file.c_str());
        ::rmdir(folder.c_str());
    }

    std::string write(const std::string& name, const std::string& bytes) {
        const std::string path = folder + "/" + name;
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        files.push_back(path);
        return path;
    }

    std::unique_ptr<OVideoFileCamera> play(const std::string& path, bool loop = true) {
        return std::make_unique<OVideoFileCamera>(QString::fromLatin1("file"), QString::fromLatin1("File"),
                                                  QString::fromStdString(path), loop);
    }

    // Attaches and opens.
    std::shared_ptr<cameras::Camera> use(OVideoFileCamera& camera) {
        EXPECT_EQ(camera.error(), QString());
        EXPECT_TRUE(camera.attach());
        const auto found = listed("file");
        EXPECT_FALSE(found->open());
        return found;
    }

    std::string folder;
    std::vector<std::string> files;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
};

// Test patterns with the counters 1 to frames, as a Y4M file in C420.
std::string patternFile(int width, int height, uint32_t frames, const std::string& rate) {
    std::string bytes = "YUV4MPEG2 W" + std::to_string(width) + " H" + std::to_string(height) + " F" + rate +
                        " Ip A1:1 C420jpeg\n";
    for (uint32_t counter = 1; counter <= frames; ++counter) {
        const Bgra picture = pattern(width, height, counter, 1000 + counter);
        const int half = width / 2;
        std::string planes(static_cast<size_t>(width * height * 3 / 2), '\0');
        uint8_t* y = reinterpret_cast<uint8_t*>(&planes[0]);
        uint8_t* u = y + width * height;
        uint8_t* v = u + half * height / 2;
        libyuv::ARGBToI420(picture.bytes.data(), picture.stride, y, width, u, half, v, half, width, height);
        bytes += "FRAME\n" + planes;
    }
    return bytes;
}

TEST_F(FileCamera, TellsTheFilesSizeAndRate) {
    const auto camera = play(write("a.y4m", patternFile(160, 120, 1, "30000:1001")));
    EXPECT_EQ(camera->error(), QString());
    EXPECT_EQ(camera->width(), 160);
    EXPECT_EQ(camera->height(), 120);
    EXPECT_DOUBLE_EQ(camera->framesPerSecond(), 30000.0 / 1001);
    const auto used = use(*camera);
    ASSERT_FALSE(used->start(320, 240, sink));
    const cameras::StreamStatistics figures = used->statistics();
    EXPECT_EQ(figures.granted.format, "I420");
    EXPECT_EQ(figures.granted.size.width, 160);
    EXPECT_EQ(figures.granted.size.height, 120);
    EXPECT_DOUBLE_EQ(figures.granted.rate(), 30000.0 / 1001);
    used->stop(sink);
}

TEST_F(FileCamera, PlaysItsFramesInOrderOnceAndTheLastStays) {
    const auto camera = play(write("a.y4m", patternFile(160, 120, 12, "200:1")), false);
    const auto used = use(*camera);
    std::vector<uint32_t> counters;
    std::atomic<bool> sawLast{false};
    sink->onFrame = [&](const RecordingSink::FramePointer& frame) {
        const Reading reading = read(frame, 320, 240);
        ASSERT_TRUE(reading.decoded);
        ASSERT_EQ(reading.clock, 1000 + reading.counter);
        counters.push_back(reading.counter);
        sawLast = reading.counter == 12;
    };
    ASSERT_FALSE(used->start(320, 240, sink));
    ASSERT_TRUE(sink->waitUntil([&] { return sawLast.load(); })) << "the last frame is never skipped";
    std::this_thread::sleep_for(std::chrono::milliseconds(30)); // six frames' time
    used->stop(sink);
    EXPECT_TRUE(std::is_sorted(counters.begin(), counters.end()));
    EXPECT_EQ(counters.back(), 12u);
    const cameras::StreamStatistics figures = used->statistics();
    EXPECT_EQ(figures.delivered + figures.skipped, 12u);
    EXPECT_TRUE(sink->ends().empty()) << "the camera has not gone";
    EXPECT_EQ(read(sink->newest()).counter, 12u) << "still there";
}

TEST_F(FileCamera, LoopsWithoutAnEnd) {
    const auto camera = play(write("a.y4m", patternFile(160, 120, 3, "1000:1")));
    const auto used = use(*camera);
    int restarts = 0;
    uint32_t before = 0;
    std::atomic<bool> enough{false};
    sink->onFrame = [&](const RecordingSink::FramePointer& frame) {
        const uint32_t counter = read(frame).counter;
        ASSERT_GE(counter, 1u);
        ASSERT_LE(counter, 3u);
        restarts += counter < before;
        before = counter;
        enough = restarts >= 5;
    };
    ASSERT_FALSE(used->start(160, 120, sink));
    ASSERT_TRUE(sink->waitUntil([&] { return enough.load(); }));
    used->stop(sink);
}

TEST_F(FileCamera, EachStreamBeginsAtTheBeginning) {
    const auto camera = play(write("a.y4m", patternFile(160, 120, 2, "1:1")));
    const auto used = use(*camera);
    for (int round = 0; round < 5; ++round) {
        auto fresh = std::make_shared<RecordingSink>();
        ASSERT_FALSE(used->start(160, 120, fresh));
        ASSERT_TRUE(fresh->waitForFrames(1));
        used->stop(fresh);
        EXPECT_EQ(read(fresh->newest()).counter, 1u);
    }
}

TEST_F(FileCamera, ReadsAFrameOnlyWhenItIsTaken) {
    const std::string path = write("a.y4m", patternFile(160, 120, 2, "1:1"));
    const auto camera = play(path);
    const auto used = use(*camera);
    ASSERT_FALSE(used->start(160, 120, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    // What is in the file now is what the frame shows.
    const std::string other = patternFile(160, 120, 9, "1:1");
    const size_t frameBytes = 6 + 160 * 120 * 3 / 2;
    const size_t header = other.find('\n') + 1;
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(header));
    file << other.substr(header + 8 * frameBytes, frameBytes);
    file.close();
    EXPECT_EQ(read(sink->newest()).counter, 9u);
    used->stop(sink);
}

TEST_F(FileCamera, AFileCutWhileItPlaysGivesNoFrameAndNoCrash) {
    const std::string path = write("a.y4m", patternFile(160, 120, 3, "100:1"));
    const auto camera = play(path);
    const auto used = use(*camera);
    ASSERT_FALSE(used->start(160, 120, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    ASSERT_EQ(::truncate(path.c_str(), 100), 0);
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_EQ(sink->ends().front(), "File found no further frame in its file: it is damaged, or was changed");
    EXPECT_FALSE(read(sink->newest()).converted);
    EXPECT_EQ(camera->framesTaken(), 0u);
    EXPECT_EQ(used->start(160, 120, std::make_shared<RecordingSink>()).text, sink->ends().front())
        << "whoever joins now hears why";
    EXPECT_TRUE(used->attached());
    used->stop(sink);
}

TEST_F(FileCamera, AHeldFrameOutlivesStopCloseAndTheFilesName) {
    const std::string path = write("a.y4m", patternFile(160, 120, 1, "30:1"));
    auto camera = play(path);
    auto used = use(*camera);
    ASSERT_FALSE(used->start(160, 120, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    used->stop(sink);
    used->close();
    used.reset();
    camera.reset();
    ::unlink(path.c_str());
    EXPECT_EQ(read(sink->newest()).counter, 1u);
}

TEST_F(FileCamera, NoDescriptorStaysOpenForACameraThatNobodyUses) {
    const auto descriptors = [] {
        int count = 0;
        for (int d = 0; d < 1024; ++d)
            count += ::fcntl(d, F_GETFD) >= 0;
        return count;
    };
    const int before = descriptors();
    const auto camera = play(write("a.y4m", patternFile(160, 120, 1, "30:1")));
    EXPECT_EQ(descriptors(), before);
    const auto used = use(*camera);
    ASSERT_FALSE(used->start(160, 120, sink));
    EXPECT_EQ(descriptors(), before + 2) << "the file, and what wakes the thread";
    ASSERT_TRUE(sink->waitForFrames(1));
    used->stop(sink);
    used->close();
    sink.reset();
    EXPECT_EQ(descriptors(), before);
}

TEST_F(FileCamera, SaysWhatIsWrongAndDoesNotOpen) {
    const std::string png = write("a.png", "\x89PNG");
    const struct {
        std::string path;
        std::string says;
    } CASES[] = {
        {folder + "/none.y4m", folder + "/none.y4m: No such file or directory"},
        {folder, folder + ": not a regular file"},
        {png, png + ": not a Y4M file: it does not begin with YUV4MPEG2"},
    };
    for (const auto& test : CASES) {
        const auto camera = play(test.path);
        EXPECT_EQ(camera->error(), QString::fromStdString(test.says));
        EXPECT_EQ(camera->width(), 0);
        EXPECT_EQ(camera->height(), 0);
        EXPECT_EQ(camera->framesPerSecond(), 0);
        ASSERT_TRUE(camera->attach());
        EXPECT_EQ(listed("file")->open().text, test.says);
        EXPECT_TRUE(listed("file")->start(320, 240, sink));
    }
}

TEST_F(FileCamera, ANamedPipeIsRefusedAndNotWaitedFor) {
    const std::string path = folder + "/pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    files.push_back(path);
    EXPECT_EQ(play(path)->error(), QString::fromStdString(path + ": not a regular file"));
}

TEST_F(FileCamera, AFileThatHasGoneSinceIsAnErrorAtOpening) {
    const std::string path = write("a.y4m", patternFile(160, 120, 1, "30:1"));
    const auto camera = play(path);
    EXPECT_EQ(camera->error(), QString());
    ASSERT_TRUE(camera->attach());
    ASSERT_EQ(::unlink(path.c_str()), 0);
    EXPECT_EQ(listed("file")->open().text, path + ": No such file or directory");
}

TEST_F(FileCamera, PlaysOddSizes) {
    const auto camera = play(write("odd.y4m", "YUV4MPEG2 W5 H3 F100:1 C420\n" + frame(15 + 12, '\x80')));
    const auto used = use(*camera);
    ASSERT_FALSE(used->start(320, 240, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    Bgra got(320, 240);
    ASSERT_TRUE(sink->newest()->convert(got.bytes.data(), 320, 240, got.stride));
    EXPECT_NEAR(got.at(319, 239)[1], (128 - 16) * 255 / 219, 3);
    used->stop(sink);
}

TEST_F(FileCamera, CanBeToldToFail) {
    const auto camera = play(write("a.y4m", patternFile(160, 120, 1, "1000:1")));
    camera->setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    ASSERT_TRUE(camera->attach());
    const auto used = listed("file");
    EXPECT_EQ(used->open().text, "File was told not to open");
    camera->setFault(VIRTUAL_CAMERA_FAULT_STALL);
    ASSERT_FALSE(used->open());
    ASSERT_FALSE(used->start(160, 120, sink));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(sink->frames(), 0);
    camera->setFault(VIRTUAL_CAMERA_FAULT_PADDED_ROWS);
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(sink->newest()->rowBytes(8), 8 * 4 + 64);
    EXPECT_TRUE(sink->newest()->mayBeBroken()) << "its file may be cut";
    camera->detach();
    EXPECT_EQ(sink->ends().size(), 1u);
}

} // namespace
