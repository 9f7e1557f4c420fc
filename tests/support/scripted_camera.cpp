#include "support/scripted_camera.h"

namespace ostrel::support {

NumberedFrame::NumberedFrame(uint32_t number, int padding, bool broken, std::shared_ptr<FrameLog> log)
    : number_(number), padding_(padding), broken_(broken), log_(std::move(log)) {
    ++log_->alive;
}

NumberedFrame::~NumberedFrame() {
    --log_->alive;
}

bool NumberedFrame::convert(const cameras::pixels::Output& to) {
    ++log_->conversions;
    if (log_->holdsNext.exchange(false))
        log_->gate.pass();
    const int bytes = cameras::pixels::bytesPerPixel(to.format);
    for (int y = 0; y < to.height; ++y)
        for (int x = 0; x < to.width; ++x)
            for (int i = 0; i < bytes; ++i)
                to.row(y)[x * bytes + i] = i == 3 ? 255 : static_cast<uint8_t>(number_ >> 8 * i);
    return !broken_;
}

int numberIn(const uint8_t* bgra, std::size_t bytes) {
    if (bytes < 4 || bytes % 4 != 0)
        return -1;
    for (std::size_t i = 0; i < bytes; ++i)
        if (bgra[i] != bgra[i % 4])
            return -1;
    return bgra[3] == 255 ? bgra[0] | bgra[1] << 8 | bgra[2] << 16 : -1;
}

void ScriptedCamera::unplug() {
    attached_ = false;
    sinks_.end(cameras::Error("unplugged"));
}

bool ScriptedCamera::deliver(uint32_t number) {
    return sinks_.deliver(std::make_shared<NumberedFrame>(number, padding_, broken_, log_));
}

std::vector<std::pair<int, int>> ScriptedCamera::sizesStarted() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return sizes_;
}

cameras::Error ScriptedCamera::open() {
    opening_.pass();
    const cameras::Error refused = read(refusedOpen_);
    if (!refused)
        ++opens_;
    return refused;
}

void ScriptedCamera::close() {
    ++closes_;
}

cameras::Error ScriptedCamera::start(int width, int height, const std::shared_ptr<cameras::FrameSink>& sink) {
    const cameras::Error refused = read(refusedStart_);
    if (refused)
        return refused;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        sizes_.emplace_back(width, height);
    }
    sinks_.add(sink);
    return cameras::Error();
}

void ScriptedCamera::stop(const std::shared_ptr<cameras::FrameSink>& sink) {
    sinks_.remove(sink);
}

Feeder::Feeder(std::shared_ptr<ScriptedCamera> camera)
    : thread_([this, camera] {
          for (uint32_t number = 1; !stop_.load(std::memory_order_acquire); ++number) {
              camera->deliver(number);
              delivered_.store(number, std::memory_order_release);
          }
      }) {}

Feeder::~Feeder() {
    stop_.store(true, std::memory_order_release);
    thread_.join();
}

void Feeder::awaitMore(uint32_t frames) const {
    const uint32_t before = delivered();
    const auto end = std::chrono::steady_clock::now() + HANG;
    while (delivered() - before < frames && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
}

} // namespace ostrel::support
