// The C interface over virtual cameras: what C++ programs get, C programs get too.
#include <ostrel/camera_c.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

namespace {

const int WIDTH = 320, HEIGHT = 240;
const int TIMEOUT = 30000; // milliseconds

class CameraC : public testing::Test {
protected:
    ~CameraC() override {
        for (auto handle = open_.rbegin(); handle != open_.rend(); ++handle)
            ostrel_close(*handle, nullptr, 0);
    }

    char* words() { return why_; }
    size_t room() const { return sizeof why_; }
    std::string why() const { return why_; }

    ostrel_handle kept(int code, const ostrel_handle& handle) {
        EXPECT_EQ(code, OSTREL_OK) << why_;
        open_.push_back(handle);
        return handle;
    }
    ostrel_handle testCamera(const char* id = "c-test", const char* name = "Moving bars") {
        ostrel_handle handle = 0;
        const int code = ostrel_test_camera(id, name, WIDTH, HEIGHT, 100, &handle, why_, sizeof why_);
        return kept(code, handle);
    }
    ostrel_handle pushCamera(const char* id = "c-push") {
        ostrel_handle handle = 0;
        const int code = ostrel_push_camera(id, "Pushed", &handle, why_, sizeof why_);
        return kept(code, handle);
    }
    ostrel_handle start(const char* id = "c-test", int width = WIDTH, int height = HEIGHT) {
        ostrel_handle handle = 0;
        const int code = ostrel_start(id, width, height, &handle, why_, sizeof why_);
        return kept(code, handle);
    }
    int next(ostrel_handle handle, std::vector<uint8_t>& pixels, int layout,
             ostrel_frame_info* frame = nullptr, int timeout = TIMEOUT) {
        return ostrel_next(handle, pixels.data(), pixels.size(), 0, layout, timeout, frame, why_,
                           sizeof why_);
    }
    // As soon as the capture has begun.
    void push(ostrel_handle camera, const std::vector<uint8_t>& pixels, int width, int height, int layout) {
        int code = OSTREL_NOTHING;
        for (int attempt = 0; attempt < TIMEOUT && code == OSTREL_NOTHING; ++attempt) {
            code = ostrel_push(camera, pixels.data(), pixels.size(), width, height, 0, layout, why_,
                               sizeof why_);
            if (code == OSTREL_NOTHING)
                usleep(1000);
        }
        ASSERT_EQ(code, OSTREL_OK) << why_;
    }

private:
    char why_[1024] = "";
    std::vector<ostrel_handle> open_;
};

int64_t now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

TEST_F(CameraC, FramesAreThePatternWithTheirFacts) {
    testCamera();
    const ostrel_handle capture = start();
    std::vector<uint8_t> pixels(WIDTH * HEIGHT * 4);
    ostrel_frame_info frame = {};
    frame.size = sizeof frame;
    uint32_t before = 0;
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(next(capture, pixels, OSTREL_BGRA, &frame), OSTREL_OK) << why();
        uint32_t counter = 0, clock = 0;
        ASSERT_EQ(ostrel_read_pattern(pixels.data(), pixels.size(), WIDTH, HEIGHT, 0, &counter, &clock,
                                      words(), room()),
                  OSTREL_OK);
        EXPECT_EQ(frame.sequence, counter);
        EXPECT_EQ(frame.number, before + 1 + frame.passed_over);
        EXPECT_LE(frame.captured, now());
        EXPECT_GT(frame.captured, now() - 10000000000LL);
        EXPECT_EQ(frame.native_width, WIDTH);
        EXPECT_EQ(frame.native_height, HEIGHT);
        before = frame.number;
    }
}

// A picture with rows of padding that nobody else may touch.
TEST_F(CameraC, PicturesAreWrittenInEachLayoutBetweenThePadding) {
    const ostrel_handle camera = pushCamera(), capture = start("c-push", 64, 48);
    std::vector<uint8_t> blue(64 * 48 * 3, 0);
    for (size_t i = 0; i < blue.size(); i += 3)
        blue[i] = 255;
    push(camera, blue, 64, 48, OSTREL_BGR);
    const int stride = 64 * 3 + 10;
    std::vector<uint8_t> pixels(stride * 48, 7);
    ASSERT_EQ(ostrel_next(capture, pixels.data(), pixels.size(), stride, OSTREL_BGR, TIMEOUT, nullptr,
                          words(), room()),
              OSTREL_OK)
        << why();
    EXPECT_EQ(pixels[0], 255);
    EXPECT_EQ(pixels[1], 0);
    EXPECT_EQ(pixels[2], 0);
    EXPECT_EQ(pixels[64 * 3], 7);
    EXPECT_EQ(pixels[47 * stride], 255);

    const std::vector<uint8_t> grey(64 * 48, 200);
    push(camera, grey, 64, 48, OSTREL_GREY);
    std::vector<uint8_t> bgra(64 * 48 * 4);
    ASSERT_EQ(next(capture, bgra, OSTREL_BGRA), OSTREL_OK) << why();
    EXPECT_EQ(bgra, [] {
        std::vector<uint8_t> expected(64 * 48 * 4, 200);
        for (size_t i = 3; i < expected.size(); i += 4)
            expected[i] = 255;
        return expected;
    }());
}

TEST_F(CameraC, NothingNewIsNothing) {
    const ostrel_handle camera = pushCamera(), capture = start("c-push", 64, 48);
    std::vector<uint8_t> pixels(64 * 48);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY, nullptr, 0), OSTREL_NOTHING);
    EXPECT_EQ(why(), "");
    push(camera, pixels, 64, 48, OSTREL_GREY);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY), OSTREL_OK);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY, nullptr, 250), OSTREL_NOTHING);
}

TEST_F(CameraC, PollingGivesTheSamePictureAgain) {
    const ostrel_handle camera = pushCamera(), capture = start("c-push", 64, 48);
    std::vector<uint8_t> pixels(64 * 48 * 4, 9);
    uint32_t number = 0;
    EXPECT_EQ(ostrel_poll(capture, pixels.data(), pixels.size(), &number, words(), room()), OSTREL_NOTHING);
    push(camera, std::vector<uint8_t>(64 * 48, 77), 64, 48, OSTREL_GREY);
    for (int i = 0; i < 2; ++i) {
        pixels.assign(pixels.size(), 9);
        ASSERT_EQ(ostrel_poll(capture, pixels.data(), pixels.size(), &number, words(), room()), OSTREL_OK)
            << why();
        EXPECT_EQ(number, 1u);
        EXPECT_EQ(pixels[0], 77);
    }
}

TEST_F(CameraC, EachReaderGetsTheFrame) {
    const ostrel_handle camera = pushCamera(), capture = start("c-push", 64, 48);
    ostrel_handle reader = 0;
    kept(ostrel_reader(capture, &reader, words(), room()), reader);
    push(camera, std::vector<uint8_t>(64 * 48, 77), 64, 48, OSTREL_GREY);
    std::vector<uint8_t> pixels(64 * 48);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY), OSTREL_OK);
    EXPECT_EQ(next(reader, pixels, OSTREL_GREY), OSTREL_OK);
}

TEST_F(CameraC, DescriptorIsReadableWhileThereIsAFrame) {
    const ostrel_handle camera = pushCamera(), capture = start("c-push", 64, 48);
    int32_t descriptor = -1;
    ASSERT_EQ(ostrel_descriptor(capture, &descriptor, words(), room()), OSTREL_OK) << why();
    pollfd waiting = {descriptor, POLLIN, 0};
    EXPECT_EQ(poll(&waiting, 1, 0), 0);
    std::vector<uint8_t> pixels(64 * 48, 1);
    push(camera, pixels, 64, 48, OSTREL_GREY);
    EXPECT_EQ(poll(&waiting, 1, TIMEOUT), 1);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY, nullptr, 0), OSTREL_OK);
    EXPECT_EQ(poll(&waiting, 1, 0), 0);
    ostrel_stop(capture, nullptr, 0);
    EXPECT_EQ(poll(&waiting, 1, TIMEOUT), 1);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY, nullptr, 0), OSTREL_OVER);
    EXPECT_NE(why(), "");
}

TEST_F(CameraC, NativeFrameThatDoesNotFitIsGivenAgain) {
    const ostrel_handle camera = pushCamera(), capture = start("c-push", 128, 96);
    std::vector<uint8_t> i420(64 * 48 * 3 / 2);
    for (size_t i = 0; i < i420.size(); ++i)
        i420[i] = static_cast<uint8_t>(i);
    push(camera, i420, 64, 48, OSTREL_I420);
    ostrel_native_info native = {};
    native.size = sizeof native;
    ostrel_frame_info frame = {};
    frame.size = sizeof frame;
    std::vector<uint8_t> bytes(i420.size());
    ASSERT_EQ(ostrel_next_native(capture, nullptr, 0, TIMEOUT, &native, &frame, words(), room()),
              OSTREL_TOO_SMALL);
    ASSERT_EQ(native.bytes, i420.size());
    ASSERT_EQ(ostrel_next_native(capture, bytes.data(), bytes.size(), 0, &native, &frame, words(), room()),
              OSTREL_OK)
        << why();
    EXPECT_EQ(bytes, i420);
    EXPECT_GE(frame.number, 1u);
    EXPECT_EQ(native.planes, 3);
    EXPECT_EQ(native.width, 64);
    EXPECT_EQ(native.offset[1], 64u * 48);
    EXPECT_EQ(native.bytes_per_line[2], 32);
    EXPECT_EQ(ostrel_next_native(capture, bytes.data(), bytes.size(), 0, &native, &frame, words(), room()),
              OSTREL_NOTHING);
}

// What waits for more memory must not come after what was newer.
TEST_F(CameraC, NativeFrameThatDidNotFitIsForgottenOnceALaterOneWasHad) {
    const ostrel_handle camera = pushCamera(), capture = start("c-push", 64, 48);
    std::vector<uint8_t> pixels(64 * 48 * 4, 1);
    ostrel_native_info native = {};
    native.size = sizeof native;
    push(camera, pixels, 64, 48, OSTREL_BGRA);
    ASSERT_EQ(ostrel_next_native(capture, nullptr, 0, TIMEOUT, &native, nullptr, words(), room()),
              OSTREL_TOO_SMALL);
    push(camera, std::vector<uint8_t>(pixels.size(), 2), 64, 48, OSTREL_BGRA);
    ASSERT_EQ(next(capture, pixels, OSTREL_BGRA), OSTREL_OK) << why();
    EXPECT_EQ(pixels[0], 2);
    EXPECT_EQ(ostrel_next_native(capture, pixels.data(), pixels.size(), 0, &native, nullptr, words(), room()),
              OSTREL_NOTHING);
}

TEST_F(CameraC, WordsAreOneLineWhateverCamerasAreCalled) {
    testCamera("c-lines", "Two\nlines\tand \x1b[31mred");
    ostrel_camera_info camera = {};
    camera.size = sizeof camera;
    ASSERT_EQ(ostrel_find("nothing\nlike it", &camera, words(), room()), OSTREL_NO_CAMERA);
    EXPECT_NE(why().find("Two lines and  [31mred (c-lines)"), std::string::npos) << why();
    EXPECT_EQ(why().find('\n'), std::string::npos) << why();
}

TEST_F(CameraC, IdentifierThatWouldNotFitIntoTheListingIsRefused) {
    const std::string longest(1023, 'x');
    testCamera(longest.c_str(), "Longest");
    ostrel_camera_info camera = {};
    camera.size = sizeof camera;
    ASSERT_EQ(ostrel_find("Longest", &camera, words(), room()), OSTREL_OK) << why();
    EXPECT_EQ(camera.id, longest);
    ostrel_handle handle = 0;
    EXPECT_EQ(ostrel_push_camera((longest + 'x').c_str(), "", &handle, words(), room()), OSTREL_BAD_ARGUMENT);
    EXPECT_NE(why().find("1023"), std::string::npos) << why();
}

TEST_F(CameraC, ListingHasTheCamerasInOrderUntilTheyAreClosed) {
    testCamera("c-list-b", "Second");
    const ostrel_handle first = testCamera("c-list-a", "F\xc3\xbcrst");
    ostrel_handle list = 0;
    size_t count = 0;
    ASSERT_EQ(ostrel_cameras(&list, &count, words(), room()), OSTREL_OK);
    kept(OSTREL_OK, list);
    std::vector<std::string> names;
    for (size_t i = 0; i < count; ++i) {
        ostrel_camera_info camera = {};
        camera.size = sizeof camera;
        ASSERT_EQ(ostrel_camera_at(list, i, &camera, words(), room()), OSTREL_OK);
        if (std::string(camera.id).rfind("c-list-", 0) == 0)
            names.push_back(camera.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"F\xc3\xbcrst", "Second"}));

    ASSERT_EQ(ostrel_attach(first, 0, words(), room()), OSTREL_OK);
    ostrel_camera_info camera = {};
    camera.size = sizeof camera;
    EXPECT_EQ(ostrel_find("c-list-a", &camera, words(), room()), OSTREL_NO_CAMERA);
    ASSERT_EQ(ostrel_attach(first, 1, words(), room()), OSTREL_OK);
    ASSERT_EQ(ostrel_attach(first, 1, words(), room()), OSTREL_OK);
    EXPECT_EQ(ostrel_find("c-list-a", &camera, words(), room()), OSTREL_OK);
}

TEST_F(CameraC, CameraIsFoundByPartOfItsNameThatNoOtherHas) {
    testCamera("c-find-1", "Desk Webcam 9000");
    testCamera("c-find-2", "Door Camera");
    ostrel_camera_info camera = {};
    camera.size = sizeof camera;
    ASSERT_EQ(ostrel_find("webcam", &camera, words(), room()), OSTREL_OK) << why();
    EXPECT_STREQ(camera.id, "c-find-1");
    EXPECT_STREQ(camera.name, "Desk Webcam 9000");
    ASSERT_EQ(ostrel_find("C-FIND-2", &camera, words(), room()), OSTREL_OK);
    EXPECT_STREQ(camera.id, "c-find-2");
    // Both have it.
    EXPECT_EQ(ostrel_find("cam", &camera, words(), room()), OSTREL_NO_CAMERA);
    EXPECT_NE(why().find("attached: Desk Webcam 9000 (c-find-1), Door Camera (c-find-2)"), std::string::npos)
        << why();
    EXPECT_EQ(ostrel_find("scanner", &camera, words(), room()), OSTREL_NO_CAMERA);
    EXPECT_NE(why().find("Door Camera (c-find-2)"), std::string::npos) << why();
}

TEST_F(CameraC, StateSaysWhyAStartWasRefused) {
    const ostrel_handle camera = testCamera();
    ASSERT_EQ(ostrel_set_fault(camera, 1, words(), room()), OSTREL_OK);
    const ostrel_handle capture = start();
    std::vector<uint8_t> pixels(WIDTH * HEIGHT);
    ASSERT_EQ(next(capture, pixels, OSTREL_GREY), OSTREL_OVER);
    const std::string reason = why();
    ostrel_state_info state = {};
    state.size = sizeof state;
    ASSERT_EQ(ostrel_state("c-test", &state, words(), room()), OSTREL_OK);
    EXPECT_EQ(state.refused_at, OSTREL_REFUSED_AT_OPENING);
    EXPECT_STRNE(state.refused, "");
    EXPECT_STREQ(state.why_no_frames, state.refused);
    EXPECT_NE(reason.find(state.refused), std::string::npos) << reason;
}

TEST_F(CameraC, StateHasTheFiguresOfTheRunningCamera) {
    testCamera();
    const ostrel_handle capture = start();
    std::vector<uint8_t> pixels(WIDTH * HEIGHT);
    ASSERT_EQ(next(capture, pixels, OSTREL_GREY), OSTREL_OK);
    ostrel_state_info state = {};
    state.size = sizeof state;
    ASSERT_EQ(ostrel_state("c-test", &state, words(), room()), OSTREL_OK);
    EXPECT_EQ(state.known, 1);
    EXPECT_EQ(state.open, 1);
    EXPECT_GE(state.delivered, 1u);
    EXPECT_EQ(state.granted_width, WIDTH);
    EXPECT_EQ(state.granted_height, HEIGHT);
    EXPECT_DOUBLE_EQ(state.granted_rate, 100);
    EXPECT_STREQ(state.why_no_frames, "");
}

// Grey of which the upper half is white, by each way; the converted picture must not stand on its head.
TEST_F(CameraC, ConversionsKeepTheTopRowFirst) {
    const int width = 16, height = 8;
    std::vector<uint8_t> bgr(width * height * 3, 0), i420(width * height * 3 / 2), yuy2(width * height * 2),
        bgra(width * height * 4);
    std::fill_n(bgr.begin(), bgr.size() / 2, uint8_t(255));
    const auto convert = [&](int from, const std::vector<uint8_t>& source, int to,
                             std::vector<uint8_t>& target) {
        target.assign(target.size(), 1);
        return ostrel_convert(from, source.data(), source.size(), to, target.data(), target.size(), width,
                              height, words(), room());
    };
    const auto isRight = [&](const std::vector<uint8_t>& picture, uint8_t white, uint8_t black) {
        // The last luma, or blue, of the upper half and the first of the lower.
        const size_t row = picture.size() == i420.size() ? width : picture.size() / height;
        return picture[0] == white && picture[4 * row - (picture.size() == bgra.size() ? 4 : 1)] != black &&
               picture[4 * row] == black;
    };
    ASSERT_EQ(convert(OSTREL_BGR, bgr, OSTREL_I420, i420), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(i420, 235, 16));
    ASSERT_EQ(convert(OSTREL_BGR, bgr, OSTREL_YUY2, yuy2), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(yuy2, 235, 16));
    ASSERT_EQ(convert(OSTREL_BGR, bgr, OSTREL_BGRA, bgra), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(bgra, 255, 0));
    EXPECT_EQ(bgra.back(), 255);
    ASSERT_EQ(convert(OSTREL_BGRA, bgra, OSTREL_I420, i420), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(i420, 235, 16));
    ASSERT_EQ(convert(OSTREL_I420, i420, OSTREL_YUY2, yuy2), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(yuy2, 235, 16));
    ASSERT_EQ(convert(OSTREL_YUY2, yuy2, OSTREL_I420, i420), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(i420, 235, 16));
    ASSERT_EQ(convert(OSTREL_I420, i420, OSTREL_BGRA, bgra), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(bgra, 255, 0));
    ASSERT_EQ(convert(OSTREL_YUY2, yuy2, OSTREL_BGRA, bgra), OSTREL_OK) << why();
    EXPECT_TRUE(isRight(bgra, 255, 0));
}

TEST_F(CameraC, ScalingFillsTheLargerFrame) {
    std::vector<uint8_t> small(320 * 240 * 3 / 2, 90), large(640 * 480 * 3 / 2, 1);
    ASSERT_EQ(ostrel_scale(OSTREL_I420, small.data(), small.size(), 320, 240, large.data(), large.size(), 640,
                           480, OSTREL_BOX, words(), room()),
              OSTREL_OK)
        << why();
    EXPECT_EQ(large, std::vector<uint8_t>(large.size(), 90));
}

TEST_F(CameraC, NothingIsWrittenToStandardError) {
    testing::internal::CaptureStderr();
    const ostrel_handle camera = testCamera();
    const ostrel_handle capture = start();
    std::vector<uint8_t> pixels(WIDTH * HEIGHT * 4);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY), OSTREL_OK);
    uint32_t number = 0;
    ostrel_poll(capture, pixels.data(), pixels.size(), &number, words(), room());
    ostrel_stop(capture, nullptr, 0);
    ostrel_set_fault(camera, 1, nullptr, 0);
    const ostrel_handle refused = start();
    EXPECT_EQ(next(refused, pixels, OSTREL_GREY), OSTREL_OVER);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

#if !defined(__SANITIZE_THREAD__) // it cannot follow a child of a process with threads
TEST_F(CameraC, CallsInAForkedChildAreRefusedAndItsExitHoldsUpNobody) {
    testCamera();
    const ostrel_handle capture = start();
    std::vector<uint8_t> pixels(WIDTH * HEIGHT);
    ASSERT_EQ(next(capture, pixels, OSTREL_GREY), OSTREL_OK);
    const pid_t child = fork();
    if (child == 0) {
        alarm(TIMEOUT / 1000);
        ostrel_handle list = 0;
        size_t count = 0;
        const bool refused = next(capture, pixels, OSTREL_GREY) == OSTREL_FORKED && !why().empty() &&
                             ostrel_close(capture, nullptr, 0) == OSTREL_FORKED &&
                             ostrel_cameras(&list, &count, words(), room()) == OSTREL_FORKED;
#if defined(__SANITIZE_ADDRESS__) // takes what the parent's threads hold for lost
        _exit(refused ? 0 : 1);
#endif
        std::exit(refused ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(next(capture, pixels, OSTREL_GREY), OSTREL_OK); // the parent goes on
}
#endif

} // namespace
