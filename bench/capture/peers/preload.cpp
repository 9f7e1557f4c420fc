// Loaded before a peer (LD_PRELOAD), this stands between it and the kernel, so that the path in TIMED_CAMERA
// is a timed camera: "/dev/video90 YUYV 1280 720 30". Waiting is the kernel's own, on the timer behind the
// descriptor.
#include "bench/capture/timed_kernel.h"

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

// An open descriptor of the kernel's, which the peer has duplicates of.
class Camera {
public:
    Camera(bench::TimedKernel& kernel, const std::string& path, bool blocking)
        : kernel_(kernel), descriptor_(kernel.open(path.c_str(), O_RDWR)), blocking_(blocking) {}
    ~Camera() { kernel_.close(descriptor_); }
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    int duplicate() const { return ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 3); }
    void* mmap(size_t length, off_t offset) { return kernel_.mmap(length, descriptor_, offset); }
    int ioctl(unsigned long request, void* argument) {
        int result = kernel_.ioctl(descriptor_, request, argument);
        while (result == -1 && errno == EAGAIN && blocking_) {
            pollfd ready = {descriptor_, POLLIN, 0};
            kernel_.poll(&ready, 1, -1);
            result = kernel_.ioctl(descriptor_, request, argument);
        }
        return result;
    }

private:
    bench::TimedKernel& kernel_;
    const int descriptor_;
    const bool blocking_;
};

struct World {
    World() {
        char path[64] = {}, layout[5] = {};
        bench::CameraModel model;
        const char* text = std::getenv("TIMED_CAMERA");
        if (!text || std::sscanf(text, "%63s %4s %d %d %u", path, layout, &model.width, &model.height,
                                 &model.rate) != 5)
            return;
        device = path;
        model.fourcc = v4l2_fourcc(layout[0], layout[1], layout[2], layout[3]);
        kernel.plug(device, bench::timedCamera(model));
    }
    std::string device;
    bench::TimedKernel kernel;
    std::mutex mutex;
    std::map<int, std::shared_ptr<Camera>> opened; // by descriptor
};

World& world() {
    static World* const instance = new World;
    return *instance;
}

bool isDevice(const char* path) {
    return path && !world().device.empty() && world().device == path;
}

std::shared_ptr<Camera> find(int descriptor) {
    std::lock_guard<std::mutex> lock(world().mutex);
    const auto found = world().opened.find(descriptor);
    return found == world().opened.end() ? nullptr : found->second;
}

template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

// The descriptor is a duplicate, so that the peer may close it as it likes.
int openDevice(int flags) {
    const auto camera = std::make_shared<Camera>(world().kernel, world().device, !(flags & O_NONBLOCK));
    const int descriptor = camera->duplicate();
    std::lock_guard<std::mutex> lock(world().mutex);
    world().opened[descriptor] = camera;
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

// For a peer that asks how old its frames are.
extern "C" __attribute__((visibility("default"))) int64_t bench_timed_camera_arrival(uint32_t number) {
    return world().kernel.arrival(world().device, number);
}

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
    std::shared_ptr<Camera> closed;
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
    const auto camera = find(descriptor);
    const int copy = real(descriptor);
    if (camera && copy >= 0) {
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
    const auto camera = find(descriptor);
    return camera ? camera->ioctl(request, argument) : real(descriptor, request, argument);
}

void* mmap(void* address, size_t length, int protection, int flags, int descriptor, off_t offset) {
    static auto* const real = next<void* (*)(void*, size_t, int, int, int, off_t)>("mmap");
    const auto camera = descriptor >= 0 && !(flags & MAP_ANONYMOUS) ? find(descriptor) : nullptr;
    return camera ? camera->mmap(length, offset)
                  : real(address, length, protection, flags, descriptor, offset);
}

void* mmap64(void* address, size_t length, int protection, int flags, int descriptor, off64_t offset) {
    return mmap(address, length, protection, flags, descriptor, offset);
}
}
#pragma GCC visibility pop
