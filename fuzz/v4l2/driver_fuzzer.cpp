// A camera whose driver answers whatever the input says: it is listed, opened, captured from and closed
// without a bad access, a hang, or anything of the kernel's that is not given back.
#include "fuzz/support/check.h"
#include "fuzz/v4l2/malicious_kernel.h"

#include "platform/cameras/control_rules.h"
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "support/v4l2/scripted_discovery.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <vector>

using namespace ostrel::cameras;

namespace {

using Kernel = std::shared_ptr<fuzz::MaliciousKernel>;

void draw(CameraFrame& frame, int width, int height) {
    const int stride = width * 4;
    fuzz::FencedBuffer target(static_cast<size_t>(stride) * static_cast<size_t>(height));
    const bool drawn = frame.convert(target.data(), width, height, stride);
    CHECK(target.startIntact());
    for (size_t i = 3; drawn && i < target.size(); i += 4)
        CHECK(target[i] == 255);
}

// Draws some frames as they come and keeps others beyond the end of the stream.
class Sink : public FrameSink {
public:
    explicit Sink(const Kernel& kernel) : kernel_(kernel) {}

    void frameArrived(const std::shared_ptr<CameraFrame>& frame) override {
        CHECK(!ended_);
        const uint8_t what = kernel_->byte();
        if (what % 2 == 0)
            draw(*frame, 1 + what % 80, 1 + what / 4);
        if (what % 3 == 0)
            kept_.push_back(frame);
    }

    void streamEnded(const Error& why) override {
        CHECK(why && !why.text.empty() && !ended_);
        ended_ = true;
        kernel_->streamEnded();
    }

    void drawKept() {
        for (const auto& frame : kept_)
            draw(*frame, 33, 17);
    }

private:
    const Kernel kernel_;
    std::vector<std::shared_ptr<CameraFrame>> kept_;
    bool ended_ = false;
};

std::shared_ptr<v4l2::Discovery> machine(const Kernel& kernel) {
    const auto discovery = std::make_shared<ostrel::support::ScriptedDiscovery>();
    for (int number = 0, count = 1 + kernel->byte() % 2; number < count; ++number) {
        v4l2::NodeFacts facts;
        facts.path = "/dev/video" + std::to_string(number);
        const uint8_t known = kernel->byte();
        facts.described = known & 1;
        facts.isUsb = known & 2;
        facts.isVirtual = known & 4;
        facts.index = known >> 6;
        if (known & 8)
            facts.capabilities = ":capture:";
        if (known & 16) {
            facts.serial = kernel->text();
            facts.model = kernel->text();
            facts.port = kernel->text();
        }
        if (known & 32)
            facts.name = kernel->text();
        discovery->add(facts);
    }
    return discovery;
}

bool isAsciiWord(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c <= '~'; });
}

bool hasNoControl(const std::string& text) {
    return !text.empty() && std::none_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == 127;
    });
}

int side(const Kernel& kernel) {
    const uint8_t how = kernel->byte();
    return how < 200 ? how : kernel->number(); // clients may ask for anything
}

void capture(const Kernel& kernel, Camera& camera) {
    const auto sink = std::make_shared<Sink>(kernel);
    const auto second = std::make_shared<Sink>(kernel);
    kernel->beginStream();
    const int width = side(kernel), height = side(kernel);
    const Error error = camera.start(width, height, sink);
    CHECK(!error || !error.text.empty());
    if (!error) {
        // Where the first stream has ended by itself this is another one, whose figures replace its own.
        const bool refused = kernel->byte() % 4 == 3 && camera.start(8, 8, second);
        kernel->waitUntilIdle();
        const StreamStatistics figures = camera.statistics();
        CHECK(refused || (figures.granted.size.width > 0 && figures.granted.size.height > 0 &&
                          !figures.granted.format.empty()));
        CHECK(figures.granted.rate() >= 0);
        if (kernel->byte() % 4 == 3)
            camera.close(); // without a stop
    }
    camera.stop(sink);
    camera.stop(second);
    sink->drawKept();
}

// Values within the limits that the driver states, others, and those of controls that it does not have.
std::vector<Setting> settingsFor(const Kernel& kernel, const std::vector<Control>& controls) {
    std::vector<Setting> settings;
    for (int left = kernel->byte() % 8; left > 0; --left) {
        Setting one;
        one.id = controls.empty() ? 0 : controls[kernel->byte() % controls.size()].id;
        one.value = kernel->byte() % 2 ? kernel->number() : kernel->byte() % 4;
        one.text = kernel->byte() % 4 == 3 ? kernel->text() : std::string();
        settings.push_back(one);
    }
    return settings;
}

void control(const Kernel& kernel, const Camera& camera) {
    const std::shared_ptr<Controls> all = camera.controls();
    std::vector<Control> controls;
    const Error error = all->list(controls);
    CHECK(!error || !error.text.empty());
    for (const Control& one : controls)
        CHECK(one.id != 0 && one.items.size() <= 1024 && one.text.size() <= 65536);
    const Error refused = setControls(*all, settingsFor(kernel, controls));
    CHECK(!refused || !refused.text.empty());
    std::unique_ptr<ControlWatch> watch;
    const Error unwatched = all->watch(watch);
    CHECK(!unwatched == (watch != nullptr) && (watch || !unwatched.text.empty()));
    std::vector<Control> changed;
    if (watch)
        watch->take(changed);
}

void use(const Kernel& kernel, Camera& camera) {
    CHECK(isAsciiWord(camera.identifier()));
    CHECK(hasNoControl(camera.displayName()));
    const Error error = camera.open();
    CHECK(!error || !error.text.empty());
    if (!error) {
        capture(kernel, camera);
        if (kernel->byte() % 4 == 3)
            capture(kernel, camera);
    }
    camera.attached();
    camera.close();
    control(kernel, camera);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The script first, as long as the first byte says, then what the buffers hold.
    const size_t script = size == 0 ? 0 : std::min<size_t>(size - 1, data[0] * 4u);
    const uint8_t* const begin = data + (size == 0 ? 0 : 1);
    const auto kernel = std::make_shared<fuzz::MaliciousKernel>(
        fuzz::Input(begin, script), fuzz::Input(begin + script, size == 0 ? 0 : size - 1 - script));
    {
        const auto provider = v4l2::makeProvider(kernel, machine(kernel));
        const std::vector<std::shared_ptr<Camera>> cameras = provider->list();
        std::set<std::string> identifiers;
        for (const auto& camera : cameras) {
            CHECK(identifiers.insert(camera->identifier()).second);
            use(kernel, *camera);
        }
        provider->list();
    }
    kernel->checkNothingLeft();
    return 0;
}
