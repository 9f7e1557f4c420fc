#include <CoreVideo/CoreVideo.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace {

const OSType BGRA = kCVPixelFormatType_32BGRA;

struct Releases {
    int count = 0;
    const void* address = nullptr;
};

void noteRelease(void* releases, const void* address) {
    auto* const noted = static_cast<Releases*>(releases);
    ++noted->count;
    noted->address = address;
}

CVReturn create(std::size_t width, std::size_t height, OSType format, CVPixelBufferRef* out) {
    return CVPixelBufferCreate(kCFAllocatorDefault, width, height, format, nullptr, out);
}

} // namespace

TEST(PixelBuffer, IsMadeWithItsSizeAndRowsWithoutPadding) {
    CVPixelBufferRef buffer = nullptr;
    ASSERT_EQ(create(639, 479, BGRA, &buffer), kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferGetWidth(buffer), 639u);
    EXPECT_EQ(CVPixelBufferGetHeight(buffer), 479u);
    EXPECT_EQ(CVPixelBufferGetBytesPerRow(buffer), 639u * 4);
    EXPECT_EQ(CVPixelBufferGetPixelFormatType(buffer), BGRA);
    EXPECT_EQ(BGRA, 0x42475241u);
    ASSERT_EQ(CVPixelBufferLockBaseAddress(buffer, 0), kCVReturnSuccess);
    void* const base = CVPixelBufferGetBaseAddress(buffer);
    ASSERT_TRUE(base);
    std::memset(base, 1, 639u * 4 * 479); // all of it is there
    EXPECT_EQ(CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnSuccess);
    CVPixelBufferRelease(buffer);
}

TEST(PixelBuffer, RefusesWhatItCannotMake) {
    CVPixelBufferRef buffer = nullptr;
    EXPECT_EQ(create(16, 16, BGRA, nullptr), kCVReturnInvalidArgument);
    EXPECT_EQ(create(16, 16, 32, &buffer), kCVReturnInvalidPixelFormat);
    EXPECT_EQ(create(0, 16, BGRA, &buffer), kCVReturnInvalidSize);
    EXPECT_EQ(create(16, 0, BGRA, &buffer), kCVReturnInvalidSize);
    EXPECT_EQ(create(SIZE_MAX, 1, BGRA, &buffer), kCVReturnInvalidSize);
    EXPECT_EQ(create(SIZE_MAX / 4, 2, BGRA, &buffer), kCVReturnInvalidSize);
    EXPECT_EQ(buffer, nullptr);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// A sanitizer ends the program instead.
TEST(PixelBuffer, OfMoreMemoryThanThereIsIsRefused) {
    CVPixelBufferRef buffer = nullptr;
    EXPECT_EQ(create(std::size_t{1} << 28, std::size_t{1} << 30, BGRA, &buffer), kCVReturnAllocationFailed);
    EXPECT_EQ(buffer, nullptr);
}
#endif

TEST(PixelBuffer, LivesAsLongAsItsReferences) {
    std::vector<uint8_t> memory(64);
    Releases releases;
    CVPixelBufferRef buffer = nullptr;
    ASSERT_EQ(CVPixelBufferCreateWithBytes(kCFAllocatorDefault, 4, 4, BGRA, memory.data(), 16, noteRelease,
                                           &releases, nullptr, &buffer),
              kCVReturnSuccess);
    EXPECT_EQ(CVBufferRetain(buffer), buffer);
    CVBufferRelease(buffer);
    EXPECT_EQ(releases.count, 0);
    CVBufferRelease(buffer);
    EXPECT_EQ(releases.count, 1);
    EXPECT_EQ(releases.address, memory.data());
}

TEST(PixelBuffer, OverTheCallersBytesUsesThemInPlace) {
    std::vector<uint8_t> memory(100 * 3, 7);
    CVPixelBufferRef buffer = nullptr;
    ASSERT_EQ(CVPixelBufferCreateWithBytes(nullptr, 20, 3, BGRA, memory.data(), 100, nullptr, nullptr,
                                           nullptr, &buffer),
              kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferGetBytesPerRow(buffer), 100u);
    ASSERT_EQ(CVPixelBufferLockBaseAddress(buffer, 0), kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferGetBaseAddress(buffer), memory.data());
    CVBufferRelease(buffer);
    EXPECT_EQ(memory.front(), 7); // still the caller's
}

TEST(PixelBuffer, OverTheCallersBytesRefusesBadArgumentsWithoutCallingBack) {
    std::vector<uint8_t> memory(64);
    Releases releases;
    CVPixelBufferRef buffer = nullptr;
    const auto make = [&](std::size_t width, std::size_t height, OSType format, void* bytes, std::size_t row,
                          CVPixelBufferRef* out) {
        return CVPixelBufferCreateWithBytes(nullptr, width, height, format, bytes, row, noteRelease,
                                            &releases, nullptr, out);
    };
    EXPECT_EQ(make(4, 4, BGRA, memory.data(), 16, nullptr), kCVReturnInvalidArgument);
    EXPECT_EQ(make(4, 4, BGRA, nullptr, 16, &buffer), kCVReturnInvalidArgument);
    EXPECT_EQ(make(4, 4, BGRA, memory.data(), 15, &buffer), kCVReturnInvalidArgument);
    EXPECT_EQ(make(4, 4, 24, memory.data(), 16, &buffer), kCVReturnInvalidPixelFormat);
    EXPECT_EQ(make(0, 4, BGRA, memory.data(), 16, &buffer), kCVReturnInvalidSize);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(releases.count, 0);
}

TEST(PixelBuffer, LocksNest) {
    CVPixelBufferRef buffer = nullptr;
    ASSERT_EQ(create(4, 4, BGRA, &buffer), kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferLockBaseAddress(buffer, 0), kCVReturnSuccess);
    void* const base = CVPixelBufferGetBaseAddress(buffer);
    EXPECT_EQ(CVPixelBufferLockBaseAddress(buffer, 0), kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnSuccess);
    EXPECT_EQ(CVPixelBufferGetBaseAddress(buffer), base);
    EXPECT_EQ(CVPixelBufferUnlockBaseAddress(buffer, 0), kCVReturnSuccess);
    CVBufferRelease(buffer);
}

TEST(PixelBuffer, NullIsTakenEverywhere) {
    EXPECT_EQ(CVBufferRetain(nullptr), nullptr);
    CVBufferRelease(nullptr);
    EXPECT_EQ(CVPixelBufferLockBaseAddress(nullptr, 0), kCVReturnInvalidArgument);
    EXPECT_EQ(CVPixelBufferUnlockBaseAddress(nullptr, 0), kCVReturnInvalidArgument);
    EXPECT_EQ(CVPixelBufferGetBaseAddress(nullptr), nullptr);
    EXPECT_EQ(CVPixelBufferGetBytesPerRow(nullptr), 0u);
    EXPECT_EQ(CVPixelBufferGetWidth(nullptr), 0u);
    EXPECT_EQ(CVPixelBufferGetHeight(nullptr), 0u);
}

TEST(PixelBuffer, ReferencesOfManyThreadsAreCounted) {
    std::vector<uint8_t> memory(64);
    Releases releases;
    CVPixelBufferRef buffer = nullptr;
    ASSERT_EQ(CVPixelBufferCreateWithBytes(nullptr, 4, 4, BGRA, memory.data(), 16, noteRelease, &releases,
                                           nullptr, &buffer),
              kCVReturnSuccess);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([buffer] {
            for (int j = 0; j < 10000; ++j) {
                CVBufferRetain(buffer);
                CVBufferRelease(buffer);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(releases.count, 0);
    CVBufferRelease(buffer);
    EXPECT_EQ(releases.count, 1);
}
