// How a camera is doing.
#include "bindings/c/call.h"

#include "base/qt_text.h"

#include <ostrel/camera_state.h>

namespace ostrel {
namespace c {

namespace {

void describeFigures(const OVideoStatistics& figures, ostrel_state_info& info) {
    info.delivered = figures.delivered;
    info.taken = figures.taken;
    info.skipped = figures.skipped;
    info.lost = figures.lost;
    info.granted_rate = figures.grantedRate;
    info.granted_width = figures.grantedWidth;
    info.granted_height = figures.grantedHeight;
    copyText(figures.grantedFormat, info.granted_format);
    std::string drops;
    for (auto drop = figures.dropped.begin(); drop != figures.dropped.end(); ++drop) {
        info.dropped += drop.value();
        drops += (drops.empty() ? "" : "\n") + std::to_string(drop.value()) + ' ' + utf8Of(drop.key());
    }
    copyText(drops, info.drops, sizeof info.drops);
}

ostrel_state_info describe(const OVideoCameraState& state) {
    ostrel_state_info info = {};
    describeFigures(state.statistics(), info);
    info.restarts = state.restarts();
    info.known = state.isKnown() ? 1 : 0;
    info.open = state.isOpen() ? 1 : 0;
    info.refused_at = state.refusedAt();
    copyText(state.whyNoFrames(), info.why_no_frames);
    copyText(state.refused(), info.refused);
    copyText(state.ended(), info.ended);
    copyText(state.stalled(), info.stalled);
    copyText(state.shared(), info.shared);
    copyText(state.capturedBy(), info.captured_by);
    return info;
}

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel::c;

extern "C" int ostrel_state(const char* id, ostrel_state_info* state, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const Answer<ostrel_state_info> answer(state);
        answer.give(describe(ostrel::OVideoCameraState(requiredText(id, "The identifier"))));
        return OSTREL_OK;
    });
}
