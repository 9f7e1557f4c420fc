// Cameras without hardware.
#include "bindings/c/handles.h"
#include "bindings/c/pixels.h"

#include "base/qt_text.h"

#include <ostrel/virtual_camera.h>

#include <utility>
#include <vector>

namespace ostrel {
namespace c {

namespace {

// Thread-safe, as the cameras are.
class Virtual : public Object {
public:
    explicit Virtual(std::unique_ptr<OVideoVirtualCamera> camera) : camera_(std::move(camera)) {}

    void end() override { camera_->detach(); }
    OVideoVirtualCamera& camera() { return *camera_; }

private:
    const std::unique_ptr<OVideoVirtualCamera> camera_;
};

class Pushed : public Virtual {
public:
    explicit Pushed(std::unique_ptr<OVideoPushCamera> camera)
        : Virtual(std::unique_ptr<OVideoVirtualCamera>(camera.release())) {}

    bool push(const uint8_t* pixels, int width, int height, int stride, int32_t layout);

private:
    OVideoPushCamera& pushCamera() { return static_cast<OVideoPushCamera&>(camera()); }

    std::mutex mutex_;
    std::vector<uint8_t> bgra_; // of a picture in another layout; kept for the next
};

bool Pushed::push(const uint8_t* pixels, int width, int height, int stride, int32_t layout) {
    if (layout == OSTREL_I420)
        return pushCamera().pushI420(pixels, width, height);
    if (layout == OSTREL_BGRA)
        return pushCamera().push(pixels, width, height, stride);
    const std::lock_guard<std::mutex> lock(mutex_);
    bgra_.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    for (int row = 0; row < height; ++row)
        spreadRow(pixels + static_cast<ptrdiff_t>(row) * stride, layout,
                  bgra_.data() + static_cast<ptrdiff_t>(row) * width * 4, width);
    return pushCamera().push(bgra_.data(), width, height, width * 4);
}

// One that would not fit where identifiers are handed out could be listed and never found.
QString newIdentifier(const char* id) {
    const QString text = requiredText(id, "The identifier");
    const size_t most = sizeof(ostrel_camera_info::id) - 1;
    if (static_cast<size_t>(text.size()) > most)
        throw Failure(OSTREL_BAD_ARGUMENT,
                      "An identifier has at most " + std::to_string(most) + " characters");
    return text;
}

void attach(OVideoVirtualCamera& camera) {
    if (!camera.attach())
        throw Failure(OSTREL_REFUSED,
                      "No virtual camera can be attached as \"" + utf8Of(camera.uniqueID()) +
                          "\": the identifier is not printable ASCII, or an attached one has it");
}

template <typename Kind>
int add(std::unique_ptr<Kind> camera, ostrel_handle* to) {
    required(to, "The place for the handle");
    attach(*camera);
    using Kept =
        typename std::conditional<std::is_same<Kind, OVideoPushCamera>::value, Pushed, Virtual>::type;
    *to = addHandle(std::make_shared<Kept>(std::move(camera)));
    return OSTREL_OK;
}

void checkPicture(size_t bytes, int32_t width, int32_t height, int32_t& stride, int32_t layout) {
    if (width < 1 || height < 1 || width > LARGEST_SIDE || height > LARGEST_SIDE)
        throw Failure(OSTREL_BAD_ARGUMENT,
                      "A picture has 1 to " + std::to_string(LARGEST_SIDE) + " pixels in each direction");
    size_t needed = pictureBytes(layout, width, height);
    if (layout != OSTREL_I420) {
        const int row = static_cast<int>(needed / static_cast<size_t>(height));
        if (stride == 0)
            stride = row;
        if (stride < row)
            throw Failure(OSTREL_BAD_ARGUMENT, "A row has " + std::to_string(row) + " bytes");
        needed = static_cast<size_t>(stride) * static_cast<size_t>(height - 1) + static_cast<size_t>(row);
    }
    if (bytes < needed)
        throw Failure(OSTREL_BAD_ARGUMENT, "The picture has " + std::to_string(needed) + " bytes, and not " +
                                               std::to_string(bytes));
}

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel;
using namespace ostrel::c;

extern "C" int ostrel_test_camera(const char* id, const char* name, int32_t width, int32_t height,
                                  double frames_per_second, ostrel_handle* camera, char* why,
                                  size_t why_bytes) {
    return call(why, why_bytes, [&] {
        return add(std::make_unique<OVideoTestPatternCamera>(
                       newIdentifier(id), requiredText(name, "The name"), width, height, frames_per_second),
                   camera);
    });
}

extern "C" int ostrel_push_camera(const char* id, const char* name, ostrel_handle* camera, char* why,
                                  size_t why_bytes) {
    return call(why, why_bytes, [&] {
        return add(std::make_unique<OVideoPushCamera>(newIdentifier(id), requiredText(name, "The name")),
                   camera);
    });
}

extern "C" int ostrel_file_camera(const char* id, const char* name, const char* path, int32_t loop,
                                  ostrel_handle* camera, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        auto file = std::make_unique<OVideoFileCamera>(newIdentifier(id), requiredText(name, "The name"),
                                                       requiredText(path, "The path"), loop != 0);
        if (!file->error().isEmpty())
            throw Failure(OSTREL_REFUSED, utf8Of(file->error()));
        return add(std::move(file), camera);
    });
}

extern "C" int ostrel_push(ostrel_handle camera, const uint8_t* pixels, size_t bytes, int32_t width,
                           int32_t height, int32_t stride, int32_t layout, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        required(pixels, "The picture");
        checkPicture(bytes, width, height, stride, layout);
        const auto pushed = objectOf<Pushed>(camera, "a push camera");
        return pushed->push(pixels, width, height, stride, layout) ? OSTREL_OK : OSTREL_NOTHING;
    });
}

extern "C" int ostrel_attach(ostrel_handle camera, int32_t attached, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const auto found = objectOf<Virtual>(camera, "a virtual camera");
        if (!attached)
            found->camera().detach();
        else if (!found->camera().isAttached())
            attach(found->camera());
        return OSTREL_OK;
    });
}

extern "C" int ostrel_set_fault(ostrel_handle camera, int32_t fault, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        if (fault < VIRTUAL_CAMERA_FAULT_NONE || fault > VIRTUAL_CAMERA_FAULT_STALL)
            throw Failure(OSTREL_BAD_ARGUMENT, "There is no fault " + std::to_string(fault));
        objectOf<Virtual>(camera, "a virtual camera")
            ->camera()
            .setFault(static_cast<VIRTUAL_CAMERA_FAULT>(fault));
        return OSTREL_OK;
    });
}

extern "C" int ostrel_read_pattern(const uint8_t* pixels, size_t bytes, int32_t width, int32_t height,
                                   int32_t stride, uint32_t* counter, uint32_t* clock, char* why,
                                   size_t why_bytes) {
    return call(why, why_bytes, [&] {
        required(pixels, "The picture");
        checkPicture(bytes, width, height, stride, OSTREL_BGRA);
        const bool read = OVideoTestPatternCamera::decode(pixels, width, height, stride,
                                                          required(counter, "The place for the counter"),
                                                          required(clock, "The place for the clock"));
        return read ? OSTREL_OK : OSTREL_NOTHING;
    });
}
