#include "apps/camera/serve/audience.h"

#include <algorithm>

namespace ostrel::apps::cli {

Audience::Place Audience::join(std::function<void()> sleep, std::function<void()> wake) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Looker looker;
    looker.sleep = std::move(sleep);
    looker.wake = std::move(wake);
    looker.failures_ = failures_;
    joined_.set();
    return lookers_.insert(lookers_.end(), std::move(looker));
}

void Audience::leave(Place place) {
    const std::lock_guard<std::mutex> lock(mutex_);
    lookers_.erase(place);
}

Audience::Next Audience::next(Place place, LivePicturePointer& picture) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (closed_ || place->failures_ != failures_)
        return Next::Over;
    if (newest_ && newest_->number != place->seen_) {
        place->seen_ = newest_->number;
        picture = newest_;
        return Next::Picture;
    }
    place->sleeps_ = true;
    place->sleep();
    return Next::Later;
}

LiveFacts Audience::facts() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return facts_;
}

std::size_t Audience::size() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<std::size_t>(
        std::count_if(lookers_.begin(), lookers_.end(),
                      [this](const Looker& looker) { return looker.failures_ == failures_; }));
}

void Audience::settle() {
    joined_.clear();
}

void Audience::publish(std::string jpeg, int64_t captureTime, double rate) {
    const auto picture = std::make_shared<LivePicture>();
    picture->jpeg = std::move(jpeg);
    picture->captureTime = captureTime;
    const std::lock_guard<std::mutex> lock(mutex_);
    picture->number = ++facts_.number;
    facts_.captureTime = captureTime;
    facts_.rate = rate;
    facts_.shown = true;
    facts_.why.clear();
    newest_ = picture;
    wakeAll();
}

void Audience::repeat() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!newest_)
        return;
    for (Looker& looker : lookers_)
        if (looker.sleeps_)
            looker.seen_ = 0;
    wakeAll();
}

void Audience::fail(const std::string& why) {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++failures_;
    newest_.reset();
    facts_.shown = false;
    facts_.why = why;
    wakeAll();
}

void Audience::clear() {
    const std::lock_guard<std::mutex> lock(mutex_);
    newest_.reset();
    facts_.shown = false;
    facts_.why.clear();
}

void Audience::close() {
    const std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    wakeAll();
}

void Audience::wakeAll() {
    for (Looker& looker : lookers_) {
        if (looker.sleeps_)
            looker.wake();
        looker.sleeps_ = false;
    }
}

} // namespace ostrel::apps::cli
