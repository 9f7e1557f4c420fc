// Calls of the C interface while there is no memory at all, not for the words of the answer either.
#include <ostrel/camera_c.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <new>

namespace {

thread_local int t_left = -1; // allocations that succeed; negative: all

void* allocate(std::size_t size) {
    if (t_left == 0)
        return nullptr;
    if (t_left > 0)
        --t_left;
    return std::malloc(size);
}

} // namespace

void* operator new(std::size_t size) {
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

// Runs the call with no memory, with memory for one allocation, and so on, until it answers as ever.
void runWithout(int usual, const std::function<int(char* why, size_t room)>& call) {
    char why[256];
    ASSERT_EQ(call(why, sizeof why), usual) << why;
    int code = OSTREL_NO_MEMORY;
    for (int n = 0; n < 1000 && code == OSTREL_NO_MEMORY; ++n) {
        std::memset(why, 'x', sizeof why);
        t_left = n;
        code = call(why, sizeof why);
        t_left = -1;
        if (code == OSTREL_NO_MEMORY) {
            EXPECT_STREQ(why, "There is not enough memory");
        }
    }
    EXPECT_EQ(code, usual) << why;
}

TEST(CameraCWithoutMemory, SaysSo) {
    runWithout(OSTREL_BAD_HANDLE, [](char* why, size_t room) { return ostrel_stop(7, why, room); });
    ostrel_handle camera = 0;
    ASSERT_EQ(ostrel_push_camera("without-memory", "", &camera, nullptr, 0), OSTREL_OK);
    const uint8_t pixel = 0;
    runWithout(OSTREL_BAD_ARGUMENT, [&](char* why, size_t room) {
        return ostrel_push(camera, &pixel, 1, 64, 48, 0, OSTREL_BGRA, why, room);
    });
    EXPECT_EQ(ostrel_close(camera, nullptr, 0), OSTREL_OK);
}

} // namespace
