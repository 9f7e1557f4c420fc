#include "platform/cameras/buffer_frame.h"

#include "platform/cameras/pixels/convert.h"

#include <mutex>
#include <new>

namespace ostrel {
namespace cameras {

BufferFrame::BufferFrame(const std::shared_ptr<BufferOwner>& owner, unsigned index,
                         const pixels::Picture& picture, FrameFacts facts,
                         const std::shared_ptr<pixels::PixelPool>& pool,
                         const std::shared_ptr<Figures>& figures)
    : owner_(owner), index_(index), layout_(picture.layout), facts_(std::move(facts)), pool_(pool),
      figures_(figures), picture_(picture) {}

BufferFrame::~BufferFrame() {
    // First of all, while every member is whole: the owner may be turning this frame into a copy right now.
    owner_->dropped(*this, index_);
}

bool BufferFrame::convert(const pixels::Output& to) {
    pixels::Fault fault = pixels::Fault::Undecodable;
    {
        std::shared_lock<std::shared_mutex> lock(mutex_);
        if (readable_)
            fault = pixels::convert(picture_, to, *pool_);
    }
    const bool whole = fault == pixels::Fault::None;
    if (!whole)
        figures_->drop(fault);
    else if (!taken_.exchange(true, std::memory_order_relaxed))
        figures_->countTaken();
    return whole;
}

bool BufferFrame::show(const PictureReader& reader) {
    std::shared_lock<std::shared_mutex> lock(mutex_);
    if (readable_)
        reader(picture_);
    return readable_;
}

void BufferFrame::detach() {
    std::unique_lock<std::shared_mutex> lock(mutex_);
    if (own_.data() || !readable_)
        return;
    try {
        own_ = pixels::moveToPool(picture_, *pool_);
    } catch (const std::bad_alloc&) {
        readable_ = false; // better than one that reads freed memory
    }
}

} // namespace cameras
} // namespace ostrel
