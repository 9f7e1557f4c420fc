// Draws the test pattern.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_PATTERN_PAINTER_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_PATTERN_PAINTER_H

#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"
#include "platform/cameras/virtual/pattern_code.h"

#include <functional>
#include <mutex>

namespace ostrel {
namespace cameras {

class Canvas;

// One picture of the pattern.
struct PatternScene {
    pattern::Stamp stamp;
    uint32_t markAhead = 0; // steps that the mark is ahead of the counter
    int brighter = 0;       // -255 to 255, added to every colour but those of the code
};

// Thread-safe: several captures may draw at the same time. Keeps the part of the picture that stands still,
// and the memory that scaling needs, from one frame to the next; takes none before the first frame is drawn.
class PatternPainter {
public:
    PatternPainter(int width, int height) : width_(width), height_(height) {}

    // The pattern at its native size, scaled when another size is asked for. False when the size cannot be
    // scaled to.
    bool paint(const PatternScene& scene, uint8_t* bgra, int width, int height, int stride);

    // Shows the pattern at its native size in memory of the pool's. Never false.
    bool show(const PatternScene& scene, const std::function<void(const pixels::Picture&)>& reader);

    // What it takes its memory from.
    pixels::PixelPool& pool() { return pool_; }

    // How many pictures' worth of memory was ever allocated.
    uint64_t allocations() const { return pool_.allocations(); }

private:
    const uint8_t* background();
    void draw(const uint8_t* background, const PatternScene& scene, Canvas& canvas) const;

    const int width_;
    const int height_;
    pixels::PixelPool pool_;
    std::mutex mutex_; // of background_, until it is drawn
    pixels::PixelPool::Block background_;
};

} // namespace cameras
} // namespace ostrel

#endif
