// Pixel memory is recycled: this program counts each allocation that could hold a picture.
#import "recording_delegate.h"

#include "platform/QTKit/captured_picture.h"

#include <cstdlib>
#include <new>
#include <set>

namespace {

constexpr unsigned WIDTH = 320, HEIGHT = 240;
constexpr std::size_t PICTURE = WIDTH * HEIGHT * 4;

std::atomic<int> largeAllocations{0};

} // namespace

void* operator new(std::size_t size) {
    if (size >= PICTURE)
        ++largeAllocations;
    if (void* const memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

using namespace ostrel;
using support::Rig;

using PixelMemory = support::OpenDeviceTest;

TEST_F(PixelMemory, IsNotAllocatedOnceACaptureRunsSteadily) {
    Rig rig(opened, WIDTH, HEIGHT);
    rig.run();
    const int atStart = largeAllocations;
    std::set<void*> addresses;
    for (uint32_t number = 1; number <= 10; ++number) {
        camera->deliver(number);
        ASSERT_EQ(rig.newestNumber(), static_cast<int>(number));
    }
    const int warm = largeAllocations;
    EXPECT_GT(warm, atStart); // the counting works
    EXPECT_LE(warm - atStart, 3);
    for (uint32_t number = 11; number <= 300; ++number) {
        camera->deliver(number);
        ASSERT_EQ(rig.newestNumber(), static_cast<int>(number));
        addresses.insert(CVPixelBufferGetBaseAddress(rig.seen.newest));
    }
    EXPECT_EQ(largeAllocations, warm);
    EXPECT_LE(addresses.size(), 3u);
}

TEST_F(PixelMemory, OfFramesThatNobodyTakesIsNone) {
    Rig rig(opened, WIDTH, HEIGHT);
    rig.run();
    const int before = largeAllocations;
    for (uint32_t number = 1; number <= 100; ++number)
        camera->deliver(number);
    EXPECT_EQ(largeAllocations, before);
}

TEST_F(PixelMemory, OfAPictureInUseIsNeverHandedOutAgain) {
    Rig rig(opened, WIDTH, HEIGHT);
    rig.run();
    std::vector<CVImageBufferRef> held;
    std::set<void*> addresses;
    for (uint32_t number = 1; number <= 8; ++number) {
        camera->deliver(number);
        ASSERT_EQ(rig.newestNumber(), static_cast<int>(number));
        held.push_back(CVBufferRetain(rig.seen.newest));
        addresses.insert(CVPixelBufferGetBaseAddress(held.back()));
    }
    EXPECT_EQ(addresses.size(), held.size());
    for (std::size_t i = 0; i < held.size(); ++i) {
        const auto* const base = static_cast<const uint8_t*>(CVPixelBufferGetBaseAddress(held[i]));
        EXPECT_EQ(support::numberIn(base, PICTURE), static_cast<int>(i + 1));
        CVBufferRelease(held[i]);
    }
}

namespace {

// A frame whose picture was found whole before.
class WholeFrame : public cameras::CameraFrame {
public:
    explicit WholeFrame(uint8_t value) : value_(value) {}
    bool convert(const cameras::pixels::Output& to) override {
        std::fill_n(to.data, to.stride * to.height, value_);
        return true;
    }
    bool mayBeBroken() const override { return false; }

private:
    const uint8_t value_;
};

const uint8_t* pixelsOf(CVPixelBufferRef buffer) {
    CVPixelBufferLockBaseAddress(buffer, 0);
    return static_cast<const uint8_t*>(CVPixelBufferGetBaseAddress(buffer));
}

} // namespace

TEST(PixelMemoryOfWholePictures, IsOneBlockThatIsWrittenOverOnceNobodyReadsIt) {
    const auto maker = std::make_shared<PictureMaker>(WIDTH, HEIGHT);
    CVPixelBufferRef const first = maker->makeBuffer(std::make_shared<WholeFrame>(uint8_t{1}));
    const uint8_t* const firstPixels = pixelsOf(first);
    CVPixelBufferRef const second = maker->makeBuffer(std::make_shared<WholeFrame>(uint8_t{2}));
    ASSERT_NE(pixelsOf(second), firstPixels);
    EXPECT_EQ(firstPixels[PICTURE - 1], 1); // still held
    CVBufferRelease(first);
    CVPixelBufferRef const held = second;
    const uint8_t* const heldPixels = pixelsOf(held);
    CVPixelBufferRef const third = maker->makeBuffer(std::make_shared<WholeFrame>(uint8_t{3}));
    ASSERT_NE(pixelsOf(third), heldPixels);
    EXPECT_EQ(heldPixels[0], 2);
    const uint8_t* const block = pixelsOf(third);
    CVBufferRelease(third);
    CVBufferRelease(held);
    for (uint8_t value = 4; value < 20; ++value) {
        CVPixelBufferRef const next = maker->makeBuffer(std::make_shared<WholeFrame>(value));
        ASSERT_EQ(pixelsOf(next), block);
        EXPECT_EQ(block[PICTURE / 2], value);
        CVBufferRelease(next);
    }
}

namespace {

// A frame of which nobody knows yet whether its picture is whole: the one before is kept meanwhile.
class DoubtfulFrame : public WholeFrame {
public:
    using WholeFrame::WholeFrame;
    bool mayBeBroken() const override { return true; }
};

} // namespace

TEST(PixelMemoryOfSeveralCaptures, IsOneBlockForEachAndOneForAllThatAreReadInTurn) {
    const std::size_t captures = 4;
    std::vector<std::shared_ptr<PictureMaker>> makers;
    for (std::size_t i = 0; i < captures; ++i)
        makers.push_back(std::make_shared<PictureMaker>(WIDTH, HEIGHT));
    const int before = largeAllocations;
    for (uint8_t value = 0; value < 10; ++value)
        for (const auto& maker : makers) {
            CVPixelBufferRef const buffer = maker->makeBuffer(std::make_shared<DoubtfulFrame>(value));
            EXPECT_EQ(pixelsOf(buffer)[PICTURE - 1], value);
            CVBufferRelease(buffer);
        }
    EXPECT_EQ(largeAllocations - before, static_cast<int>(captures + 1));
}
