#include "platform/cameras/start_attempts.h"

#include "platform/cameras/messages.h"
#include "platform/cameras/pixels/pixel_format.h"

#include <cerrno>

namespace ostrel {
namespace cameras {

namespace {

// A refusal that another format or size may escape: no room on the bus, no memory, a mode that the driver
// offers but does not have.
bool mayFareBetter(int error) {
    return error == ENOSPC || error == EIO || error == ENOMEM || error == EINVAL;
}

} // namespace

Error startFirst(const std::string& where, const std::vector<Candidate>& candidates, const Attempt& attempt,
                 const std::function<bool()>& isGone) {
    std::vector<Refusal> refusals;
    for (const Candidate& candidate : candidates) {
        std::string step;
        const int error = attempt(candidate, step);
        if (!error)
            return Error();
        refusals.push_back({pixels::fourccText(candidate.fourcc), candidate.size, step, error});
        if (!mayFareBetter(error) || isGone())
            break;
    }
    return isGone() ? unplugged(where) : startFailed(where, refusals);
}

} // namespace cameras
} // namespace ostrel
