// Loaded before a peer (LD_PRELOAD), this stands between it and the kernel, so that the path in TIMED_CAMERA
// is a timed camera: "/dev/video90 YUYV 1280 720 30". Waiting is the kernel's own, on the timer behind the
// descriptor.
#include "bench/capture/pictures.h"
#include "bench/capture/timed_camera.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <memory>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Opened {
    std::shared_ptr<bench::TimedCamera> camera;
    bool blocking;
};

struct World {
    World() {
        char path[64] = {}, layout[5] = {};
        const char* text = std::getenv("TIMED_CAMERA");
        if (!text || std::sscanf(text, "%63s %4s %d %d %u", path, layout, &model.width, &model.height,
                                 &model.rate) != 5)
            return;
        device = path;
        model.fourcc = v4l2_fourcc(layout[0], layout[1], layout[2], layout[3]);
        picture = std::make_shared<std::vector<uint8_t>>(
            bench::makePicture(model.fourcc, model.width, model.height));
    }
    std::string device;
    bench::CameraModel model;
    std::shared_ptr<const std::vector<uint8_t>> picture;
    std::mutex mutex;
    std::map<int, Opened> opened; // by descriptor
};

World& world() {
    static World* const instance = new World;
    return *instance;
}

bool isDevice(const char* path) {
    return path && !world().device.empty() && world().device == path;
}

Opened find(int descriptor) {
    std::lock_guard<std::mutex> lock(world().mutex);
    const auto found = world().opened.find(descriptor);
    return found == world().opened.end() ? Opened() : found->second;
}

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

// The descriptor is a duplicate, so that the peer may close it as it likes.
int openDevice(int flags) {
    const auto camera = std::make_shared<bench::TimedCamera>(world().model, world().picture);
    const int descriptor = ::fcntl(camera->descriptor(), F_DUPFD_CLOEXEC, 3);
    std::lock_guard<std::mutex> lock(world().mutex);
    world().opened[descriptor] = {camera, !(flags & O_NONBLOCK)};
    return descriptor;
}

int openPath(const char* name, const char* path, int flags, mode_t mode) {
    if (isDevice(path))
        return openDevice(flags);
    static auto* const open32 = next<int (*)(const char*, int, ...)>("open");
    static auto* const open64 = next<int (*)(const char*, int, ...)>("open64");
    return (std::strcmp(name, "open") == 0 ? open32 : open64)(path, flags, mode);
}

mode_t modeOf(int flags, va_list arguments) {
    return flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
}

// For a peer that asks what kind of file it is.
const char* lookAlike(const char* path) {
    return isDevice(path) ? "/dev/null" : path;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openPath("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return openPath("open64", path, flags, mode);
}

int __open_2(const char* path, int flags) {
    return openPath("open", path, flags, 0);
}

int __open64_2(const char* path, int flags) {
    return openPath("open64", path, flags, 0);
}

int close(int descriptor) {
    static auto* const real = next<int (*)(int)>("close");
    Opened closed;
    {
        std::lock_guard<std::mutex> lock(world().mutex);
        const auto found = world().opened.find(descriptor);
        if (found != world().opened.end()) {
            closed = found->second;
            world().opened.erase(found);
        }
    }
    return real(descriptor);
}

int dup(int descriptor) {
    static auto* const real = next<int (*)(int)>("dup");
    const Opened camera = find(descriptor);
    const int copy = real(descriptor);
    if (camera.camera && copy >= 0) {
        std::lock_guard<std::mutex> lock(world().mutex);
        world().opened[copy] = camera;
    }
    return copy;
}

int stat(const char* path, struct stat* result) {
    static auto* const real = next<int (*)(const char*, struct stat*)>("stat");
    return real(lookAlike(path), result);
}

int stat64(const char* path, struct stat64* result) {
    static auto* const real = next<int (*)(const char*, struct stat64*)>("stat64");
    return real(lookAlike(path), result);
}

int ioctl(int descriptor, unsigned long request, ...) {
    static auto* const real = next<int (*)(int, unsigned long, ...)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    const Opened camera = find(descriptor);
    if (!camera.camera)
        return real(descriptor, request, argument);
    int result = camera.camera->ioctl(request, argument);
    while (result == -1 && errno == EAGAIN && camera.blocking) {
        pollfd ready = {descriptor, POLLIN, 0};
        ::poll(&ready, 1, -1);
        result = camera.camera->ioctl(request, argument);
    }
    return result;
}

void* mmap(void* address, size_t length, int protection, int flags, int descriptor, off_t offset) {
    static auto* const real = next<void* (*)(void*, size_t, int, int, int, off_t)>("mmap");
    const Opened camera = descriptor >= 0 && !(flags & MAP_ANONYMOUS) ? find(descriptor) : Opened();
    return camera.camera ? camera.camera->mmap(length, offset)
                         : real(address, length, protection, flags, descriptor, offset);
}

void* mmap64(void* address, size_t length, int protection, int flags, int descriptor, off64_t offset) {
    return mmap(address, length, protection, flags, descriptor, offset);
}
}
#pragma GCC visibility pop
