#include "platform/cameras/virtual/faulty_backend.h"

namespace ostrel {
namespace cameras {

namespace {

// One cache line, as real drivers pad.
const int PADDING_BYTES = 64;

class PaddedFrame : public CameraFrame {
public:
    explicit PaddedFrame(std::shared_ptr<CameraFrame> frame) : frame_(std::move(frame)) {}
    bool convert(const pixels::Output& to) override { return frame_->convert(to); }
    FrameFacts facts() const override { return frame_->facts(); }
    bool show(const PictureReader& reader) override { return frame_->show(reader); }
    bool hasPicture() const override { return frame_->hasPicture(); }
    bool mayBeBroken() const override { return frame_->mayBeBroken(); }
    int rowBytes(int width) const override { return frame_->rowBytes(width) + PADDING_BYTES; }

private:
    const std::shared_ptr<CameraFrame> frame_;
};

// The frame as the fault leaves it; null when it is to be held back.
std::shared_ptr<CameraFrame> spoilt(const std::shared_ptr<CameraFrame>& frame, VIRTUAL_CAMERA_FAULT fault) {
    if (fault == VIRTUAL_CAMERA_FAULT_STALL)
        return nullptr;
    if (frame && fault == VIRTUAL_CAMERA_FAULT_PADDED_ROWS)
        return std::make_shared<PaddedFrame>(frame);
    return frame;
}

} // namespace

class FaultyBackend::FaultyOutlet : public Outlet {
public:
    FaultyOutlet(std::shared_ptr<Outlet> outlet, std::shared_ptr<Fault> fault)
        : outlet_(std::move(outlet)), fault_(std::move(fault)) {}
    bool deliver(const std::shared_ptr<CameraFrame>& frame) override {
        const std::shared_ptr<CameraFrame> left = spoilt(frame, fault_->load(std::memory_order_relaxed));
        return left && outlet_->deliver(left);
    }
    const std::shared_ptr<Figures>& figures() const override { return outlet_->figures(); }

private:
    const std::shared_ptr<Outlet> outlet_;
    const std::shared_ptr<Fault> fault_;
};

Error FaultyBackend::open() {
    return told(VIRTUAL_CAMERA_FAULT_OPEN) ? Error(name_ + " was told not to open") : backend_->open();
}

Error FaultyBackend::admitInput() {
    return told(VIRTUAL_CAMERA_FAULT_INPUT) ? Error(name_ + " was told to be refused as an input")
                                            : backend_->admitInput();
}

Error FaultyBackend::admitOutput() {
    return told(VIRTUAL_CAMERA_FAULT_OUTPUT) ? Error(name_ + " was told to refuse the output")
                                             : backend_->admitOutput();
}

Error FaultyBackend::start(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    return backend_->start(request, std::make_shared<FaultyOutlet>(outlet, fault_));
}

Error FaultyBackend::restart(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    return backend_->restart(request, std::make_shared<FaultyOutlet>(outlet, fault_));
}

Error FaultyBackend::next(const StopSignal& stop, Arrival& arrival) {
    const Error why = backend_->next(stop, arrival);
    arrival.frame = spoilt(arrival.frame, fault_->load(std::memory_order_relaxed));
    return why;
}

} // namespace cameras
} // namespace ostrel
