#include "unit/platform/cameras/contract/kinds.h"

#ifdef OSTREL_TEST_AVFOUNDATION
#include "platform/cameras/avfoundation/av_provider.h"
#include "support/avfoundation/standin.h"
#endif
#include "platform/cameras/registry.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "platform/cameras/virtual/virtual_provider.h"
#include "support/machine.h"
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"
#ifdef OSTREL_PIPEWIRE
#include "platform/cameras/pipewire/pipewire_provider.h"
#include "support/pipewire/session.h"
#endif

#include <ostrel/virtual_camera.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <poll.h>
#include <thread>
#include <unistd.h>

namespace ostrel::tests {

namespace {

const int64_t PERIOD = 1000000; // nanoseconds
const char* const PATH = "/dev/video0";

class KernelCall {
public:
    KernelCall() { tell(true); }
    ~KernelCall() { tell(false); }
    KernelCall(const KernelCall&) = delete;
    KernelCall& operator=(const KernelCall&) = delete;

private:
    static void tell(bool begins) {
        if (g_kernelCall)
            g_kernelCall(begins);
    }
};

class WatchedKernel : public support::ScriptedKernel {
    int doOpen(const char* path, int flags) override {
        const KernelCall call;
        return ScriptedKernel::doOpen(path, flags);
    }
    int doClose(int descriptor) override {
        const KernelCall call;
        return ScriptedKernel::doClose(descriptor);
    }
    int doIoctl(int descriptor, unsigned long request, void* argument) override {
        const KernelCall call;
        return ScriptedKernel::doIoctl(descriptor, request, argument);
    }
    void* doMmap(size_t length, int descriptor, long offset) override {
        const KernelCall call;
        return ScriptedKernel::doMmap(length, descriptor, offset);
    }
    int doMunmap(void* address, size_t length) override {
        const KernelCall call;
        return ScriptedKernel::doMunmap(address, length);
    }
    int doPoll(pollfd* descriptors, unsigned long count, int milliseconds) override {
        const KernelCall call;
        return ScriptedKernel::doPoll(descriptors, count, milliseconds);
    }
};

class ScriptedV4l2 : public Kind {
public:
    ~ScriptedV4l2() override {
        if (plugged_)
            unplug();
    }
    std::shared_ptr<cameras::Camera> plug() override {
        support::DeviceScript device;
        device.formats.push_back(support::raw(V4L2_PIX_FMT_GREY, {support::only(64, 48)}));
        device.period = PERIOD;
        device.picture = std::make_shared<std::vector<uint8_t>>(64 * 48, uint8_t(77));
        kernel_->plug(PATH, device);
        discovery_->add(PATH, "Camera");
        plugged_ = true;
        // While another thread's listing asks the node what it is, this one goes on without it.
        std::vector<std::shared_ptr<cameras::Camera>> listed = cameras::attachedCameras();
        while (listed.empty()) {
            std::this_thread::yield();
            listed = cameras::attachedCameras();
        }
        return listed.front();
    }
    void unplug() override {
        discovery_->remove(PATH);
        kernel_->unplug(PATH);
        plugged_ = false;
        cameras::attachedCameras(); // so that the listing lets go of it
    }
    bool streams() override { return plugged_ && kernel_->isStreaming(PATH); }
    bool breakDown() override {
        kernel_->failNext(VIDIOC_DQBUF, EIO, 10);
        return true;
    }
    std::string leftBehind() override {
        std::string all;
        for (const std::string& one : kernel_->misuse())
            all += one + "; ";
        if (kernel_->openDescriptors() || kernel_->mappings())
            all += std::to_string(kernel_->openDescriptors()) + " descriptors, " +
                   std::to_string(kernel_->mappings()) + " mappings";
        return all;
    }

private:
    const std::shared_ptr<support::ScriptedKernel> kernel_ = std::make_shared<WatchedKernel>();
    const std::shared_ptr<support::ScriptedDiscovery> discovery_ =
        std::make_shared<support::ScriptedDiscovery>();
    const support::Machine machine_{cameras::v4l2::makeProvider(kernel_, discovery_)};
    bool plugged_ = false;
};

#ifdef OSTREL_TEST_AVFOUNDATION
namespace standin = support::avfoundation;

class AvFoundation : public Kind {
public:
    AvFoundation() {
        standin::reset();
        standin::setLoopTurning(true);
    }
    ~AvFoundation() override { standin::reset(); }
    std::shared_ptr<cameras::Camera> plug() override {
        standin::Device device;
        device.identifier = "identifier";
        device.formats = {standin::Format(), standin::Format()};
        device.formats[0].width = 64;
        device.formats[0].height = 48;
        device.period = PERIOD;
        device.startMilliseconds = 1;
        device.nilFrames = 10;
        standin::plug(device);
        const auto cameras = cameras::attachedCameras();
        return cameras.empty() ? nullptr : cameras[0];
    }
    void unplug() override {
        standin::unplug("identifier");
        cameras::attachedCameras(); // so that the listing lets go of it
    }
    bool streams() override { return standin::isStreaming("identifier"); }
    bool breakDown() override {
        standin::failSession("identifier", "the camera is too hot");
        return true;
    }
    std::string leftBehind() override { return standin::leftBehind(); }

private:
    const support::Machine machine_{cameras::avfoundation::makeProvider()};
};
#endif

int threadsNamed(const std::string& expected) {
    int count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        count += name == expected;
    }
    return count;
}

class Virtual : public Kind {
public:
    std::shared_ptr<cameras::Camera> plug() override {
        EXPECT_TRUE(object().attach());
        for (const auto& camera : cameras::attachedCameras())
            if (camera->identifier() == "identifier")
                return camera;
        return nullptr;
    }
    void unplug() override { object().detach(); }
    bool streams() override { return threadsNamed("ostrel-virtual") > 0; }

protected:
    virtual OVideoVirtualCamera& object() = 0;
    static QString text(const std::string& ascii) { return QString::fromLatin1(ascii.c_str()); }

private:
    const support::Machine machine_;
};

class Pattern : public Virtual {
    OVideoTestPatternCamera camera_{text("identifier"), text("Camera"), 64, 48, 1000};
    OVideoVirtualCamera& object() override { return camera_; }
};

class File : public Virtual {
public:
    File() {
        std::ofstream file(path_);
        file << "YUV4MPEG2 W64 H48 F1000:1 C420jpeg\n";
        for (int frame = 0; frame < 2; ++frame)
            file << "FRAME\n" << std::string(64 * 48 * 3 / 2, static_cast<char>(50 * frame + 50));
        file.close();
        camera_ = std::make_unique<OVideoFileCamera>(text("identifier"), text("Camera"), text(path_), true);
    }
    ~File() override { ::unlink(path_.c_str()); }

private:
    OVideoVirtualCamera& object() override { return *camera_; }

    const std::string path_ =
        testing::TempDir() + "contract-" + std::to_string(::getpid()) + ".y4m"; // of this process alone
    std::unique_ptr<OVideoFileCamera> camera_;
};

class Push : public Virtual {
public:
    Push()
        : feeder_([this] {
              const std::vector<uint8_t> bgra(64 * 48 * 4, 77);
              while (!over_) {
                  taken_ = camera_.push(bgra.data(), 64, 48, 64 * 4);
                  std::this_thread::sleep_for(std::chrono::nanoseconds(PERIOD));
              }
          }) {}
    ~Push() override {
        over_ = true;
        feeder_.join();
    }
    bool streams() override { return taken_; }

private:
    OVideoVirtualCamera& object() override { return camera_; }

    OVideoPushCamera camera_{text("identifier"), text("Camera")};
    std::atomic<bool> over_{false}, taken_{false};
    std::thread feeder_;
};

#ifdef OSTREL_PIPEWIRE
// A daemon, a session manager and a camera that are programs of their own. The first two serve all tests of
// this process.
class PipeWire : public Kind {
public:
    PipeWire() {
        static const support::PipeWireSession session;
        static_cast<void>(session);
    }
    std::shared_ptr<cameras::Camera> plug() override {
        program_.reset();
        program_ = std::make_unique<support::PipeWireCamera>(
            "Camera", std::vector<std::string>{"format=GREY", "sizes=64x48", "rates=1000"});
        const auto all = provider_->list();
        return all.empty() ? nullptr : all.front();
    }
    void unplug() override {
        program_->unplug();
        provider_->list(); // by then its connection has told of it as well
    }
    bool streams() override { return program_->streams(); }

private:
    std::unique_ptr<support::PipeWireCamera> program_;
    const std::shared_ptr<cameras::CameraProvider> provider_ =
        cameras::pipewire::makeProvider(std::make_shared<cameras::pipewire::Remote>());
    const support::Machine machine_{provider_};
};
#endif

template <typename One>
std::unique_ptr<Kind> make() {
    return std::make_unique<One>();
}

} // namespace

std::vector<KindOfCamera> kindsOfCameras() {
    std::vector<KindOfCamera> kinds = {{"V4l2", make<ScriptedV4l2>},
#ifdef OSTREL_TEST_AVFOUNDATION
                                       {"AvFoundation", make<AvFoundation>},
#endif
                                       {"Pattern", make<Pattern>},
                                       {"File", make<File>},
                                       {"Push", make<Push>}};
#ifdef OSTREL_PIPEWIRE
    const std::string missing = support::PipeWireSession::missing();
    if (missing.empty())
        kinds.push_back({"PipeWire", make<PipeWire>});
    else
        std::cerr << "Cameras through PipeWire are not tested: " << missing << "\n";
#endif
    return kinds;
}

bool Contract::becomesStreaming(bool expected) const {
    const auto limit = std::chrono::steady_clock::now() + support::HANG;
    while (kind->streams() != expected)
        if (std::chrono::steady_clock::now() > limit)
            return false;
    return true;
}

} // namespace ostrel::tests
