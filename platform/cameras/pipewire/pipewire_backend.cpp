#include "platform/cameras/pipewire/pipewire_backend.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/pixels/pixel_format.h"
#include "platform/cameras/start_attempts.h"
#include "platform/cameras/unusable_formats.h"
#include "platform/cameras/wishes.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <thread>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

// How long a wait for a frame takes at most.
const int TIMEOUT_MILLISECONDS = 1000;

// A camera whose driver has to wake the hardware takes its time until the first picture is due.
const int64_t TIMEOUT = 5 * NANOSECONDS_PER_SECOND;

// A session manager that has just taken a camera apart gives it out again when it is done with that.
const int64_t MANAGERS_TIMEOUT = NANOSECONDS_PER_SECOND;
const std::chrono::milliseconds PAUSE(20);

Mode modeOf(const Granted& granted) {
    Mode mode;
    mode.format = pixels::fourccText(granted.fourcc);
    mode.size = granted.size;
    mode.interval = granted.interval;
    mode.hasPicture = granted.layout != pixels::Layout::Opaque;
    return mode;
}

// Whatever is asked for, a node that runs gives what it has.
bool fits(const Mode& mode, const ModeWish& wish) {
    NativeMode native;
    native.format = mode.format;
    native.sizes.least = native.sizes.most = mode.size;
    native.intervals = {mode.interval, mode.interval};
    return offers(native, wish);
}

} // namespace

PipewireBackend::PipewireBackend(std::shared_ptr<Remote> remote, CameraNode node, std::string where)
    : remote_(std::move(remote)), node_(std::move(node)), where_(std::move(where)) {}

// The daemon is asked, since of what happened a moment ago it may not have told yet; what does not answer is
// taken to be as it was.
bool PipewireBackend::attached() const {
    std::shared_ptr<Connection> connection;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        connection = connection_;
    }
    if (connection) {
        remote_->ask(*connection);
        return connection->has(node_.serial);
    }
    connection = remote_->ask();
    return connection ? connection->has(node_.serial) : errno == ETIMEDOUT;
}

Error PipewireBackend::open() {
    std::shared_ptr<Connection> connection = remote_->ask();
    if (!connection)
        return failed(errno);
    if (!connection->has(node_.serial))
        return unplugged(where_);
    const std::lock_guard<std::mutex> lock(mutex_);
    connection_ = std::move(connection);
    return Error();
}

void PipewireBackend::close() {
    std::shared_ptr<Connection> connection; // let go of outside the lock
    const std::lock_guard<std::mutex> lock(mutex_);
    connection.swap(connection_);
}

Error PipewireBackend::modes(NativeModes& modes) {
    const std::shared_ptr<Connection> connection = connection_ ? connection_ : remote_->ask();
    if (!connection)
        return failed(errno);
    std::vector<Offer> offers;
    const int error = connection->ask(node_.serial, monotonicNanoseconds() + TIMEOUT, offers);
    addModes(offers, modes);
    return error ? failed(error) : Error();
}

// The best first. What a running stream must not lose is left out.
std::vector<Candidate> PipewireBackend::candidatesFor(const Request& request) const {
    return ranked(candidates(offers_, request, nativeOnlyIsListed()), request.size, request.leastRate);
}

Error PipewireBackend::nothingFits(const Request& request) const {
    if (!request.wish.any())
        return modeNotOffered(where_, request.wish);
    return noUsableFormat(where_, unusableFormats(formatsOf(offers_)));
}

Error PipewireBackend::start(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    const int error = connection_->ask(node_.serial, monotonicNanoseconds() + TIMEOUT, offers_);
    if (error)
        return failed(error);
    const std::vector<Candidate> best = candidatesFor(request);
    if (best.empty())
        return nothingFits(request);
    figures_ = outlet->figures();
    figures_->setWay("PipeWire (" + node_.name + ")");
    Mode running; // of a camera that somebody else has
    const Error refused = startFirst(
        where_, best,
        [&](const Candidate& candidate, std::string& step) {
            return tryToStart(candidate, request, step, running);
        },
        [&] { return isGone(); });
    if (refused && running.size.width != 0)
        return runsInAnotherMode(where_, running, request.wish);
    const bool saysLittle = refused.code == ENOLINK || refused.code == EAGAIN || refused.code == ETIMEDOUT ||
                            refused.code == EPIPE;
    return saysLittle ? failed(refused.code == EAGAIN ? ENOLINK : refused.code) : refused;
}

int PipewireBackend::tryToStart(const Candidate& candidate, const Request& request, std::string& step,
                                Mode& running) {
    step = "PipeWire";
    const int64_t begin = monotonicNanoseconds();
    std::unique_ptr<CaptureStream> stream;
    int error = EAGAIN;
    while (error == EAGAIN && !isGone() && monotonicNanoseconds() < begin + MANAGERS_TIMEOUT) {
        if (stream)
            std::this_thread::sleep_for(PAUSE);
        stream = std::make_unique<CaptureStream>(connection_, node_.id, node_.serial, figures_);
        error = stream->begin(candidate, request.wish);
        if (!error)
            error = stream->wait(begin + TIMEOUT);
    }
    if (error == ETIMEDOUT && remote_->ask(*connection_) == 0)
        error = ENOLINK; // the daemon is well
    if (!error && isSlower(stream->granted().interval, request.leastRate))
        error = EINVAL;
    if (!error && !fits(modeOf(stream->granted()), request.wish)) {
        running = modeOf(stream->granted());
        error = EBUSY;
    }
    if (error)
        return error;
    stream_ = std::move(stream);
    announce(stream_->granted());
    return 0;
}

void PipewireBackend::announce(const Granted& granted) {
    announced_ = modeOf(granted);
    figures_->setGranted(announced_);
}

void PipewireBackend::stop() {
    stream_.reset();
}

// Of a node that others use as well nobody can have another picture.
bool PipewireBackend::canServeBetter(const Request& request) {
    if (stream_->isShared())
        return false;
    const Size running = announced_.size;
    const std::vector<Candidate> all = candidatesFor(request);
    return std::any_of(all.begin(), all.end(), [&](const Candidate& one) {
        return one.size.width >= running.width && one.size.height >= running.height && !(one.size == running);
    });
}

// The stream is made anew and not waited for: a stop must not wait for a daemon that says nothing.
Error PipewireBackend::restart(const Request& request, const std::shared_ptr<Outlet>&) {
    stop();
    const std::vector<Candidate> best = candidatesFor(request);
    if (best.empty())
        return nothingFits(request);
    auto stream = std::make_unique<CaptureStream>(connection_, node_.id, node_.serial, figures_);
    if (const int error = stream->begin(best.front(), request.wish))
        return failed(error);
    stream_ = std::move(stream);
    return Error();
}

Error PipewireBackend::next(const StopSignal& stop, Arrival& arrival) {
    pollfd descriptors[2] = {{stream_->buffers().descriptor(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
    const int ready = ::poll(descriptors, 2, TIMEOUT_MILLISECONDS);
    if (stop.raised() || (ready < 0 && errno == EINTR))
        return Error();
    // A start anew that the session manager has refused is silence, and will be tried again.
    if (const int error = stream_->ended(); error != 0 && error != EAGAIN)
        return error == ENODEV && !isGone() ? failed(EIO) : failed(error);
    if (ready <= 0 || descriptors[0].revents == 0)
        return Error(); // silence, or woken
    Granted granted;
    stream_->buffers().take(stream_->isShared(), arrival, granted);
    if (arrival.signOfLife &&
        (!(granted.size == announced_.size) || pixels::fourccText(granted.fourcc) != announced_.format))
        announce(granted); // another program has had the picture changed
    return Error();
}

int64_t PipewireBackend::longestPause() {
    const double rate = stream_->granted().interval.rate();
    return rate > 0 ? static_cast<int64_t>(5 * static_cast<double>(NANOSECONDS_PER_SECOND) / rate) : 1;
}

bool PipewireBackend::isGone() const {
    return !connection_->isOver() && !connection_->has(node_.serial);
}

bool PipewireBackend::isOpenAtPipeWire() const {
    if (!connection_)
        return false;
    const std::vector<CameraNode> all = connection_->cameras();
    return std::any_of(all.begin(), all.end(),
                       [&](const CameraNode& one) { return one.serial == node_.serial && one.inUse; });
}

Error PipewireBackend::failed(int error) const {
    return pipeWireFailed(where_, error, isOpenAtPipeWire());
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
