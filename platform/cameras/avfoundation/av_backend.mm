#include "platform/cameras/avfoundation/av_backend.h"

#include "base/autorelease_scope.h"
#include "base/monotonic_clock.h"
#include "platform/cameras/avfoundation/guard.h"
#include "platform/cameras/messages.h"

#include <cerrno>
#include <cstdlib>
#include <poll.h>

namespace ostrel {
namespace cameras {
namespace avfoundation {

namespace {

// How long a wait for a frame takes at most, before the device is asked whether it is still there.
const int TIMEOUT_MILLISECONDS = 1000;

} // namespace

AvBackend::AvBackend(AVCaptureDevice* device, std::string where)
    : device_([device retain]), where_(std::move(where)) {}

bool AvBackend::attached() const {
    const AutoreleaseScope pool;
    return [device_.get() isConnected];
}

// No error when it may be used, or when nobody knows yet: the answer is never waited for.
Error AvBackend::refused() const {
    const Permission permission = cameraPermission();
    if (permission == Permission::Denied || permission == Permission::Restricted)
        return notPermitted(where_, permission == Permission::Restricted);
    return Error();
}

Error AvBackend::wrong(NSError* error) const {
    switch ([error code]) {
    case AVErrorApplicationIsNotAuthorizedToUseDevice:
        return notPermitted(where_, false);
    case AVErrorDeviceInUseByAnotherApplication:
    case AVErrorDeviceAlreadyUsedByAnotherSession:
        return openFailed(where_, EBUSY);
    case AVErrorDeviceWasDisconnected:
    case AVErrorDeviceNotConnected:
        return unplugged(where_);
    default:
        return failed("Cannot open", textOf([error localizedDescription]));
    }
}

Error AvBackend::failed(const std::string& what, const std::string& why) const {
    return attached() ? Error(what + ' ' + where_ + ": " + why, EIO) : unplugged(where_);
}

// This is what makes the system ask the user, if it ever does.
Error AvBackend::open() {
    const AutoreleaseScope pool;
    if (Error why = refused())
        return why;
    NSError* error = nil;
    AVCaptureDeviceInput* input = nil;
    const std::string raised =
        guarded([&] { input = [[AVCaptureDeviceInput alloc] initWithDevice:device_.get() error:&error]; });
    if (!raised.empty())
        return failed("Cannot open", raised);
    if (!input)
        return wrong(error);
    input_.reset(input);
    return Error();
}

void AvBackend::close() {
    const AutoreleaseScope pool;
    input_.reset();
}

Error AvBackend::modes(NativeModes& modes) {
    const AutoreleaseScope pool;
    addModes(device_.get(), modes);
    return Error();
}

Error AvBackend::start(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    const AutoreleaseScope pool;
    if (Error why = refused())
        return why;
    const std::vector<Offer> offers = offersFor(request, device_.get());
    if (offers.empty() && !request.wish.any())
        return attached() ? modeNotOffered(where_, request.wish) : unplugged(where_);
    const auto inbox = std::make_shared<Inbox>(outlet->figures());
    if (!inbox->valid())
        return Error(where_ + " could not be started: " + reason(EMFILE), EMFILE);
    auto session = std::make_unique<AvSession>(device_.get(), input_.get());
    const std::string why = session->start(offers, inbox);
    if (!why.empty())
        return failed("Cannot start", why);
    figures_ = outlet->figures();
    figures_->setWay("AVFoundation");
    figures_->setGranted(activeMode(device_.get()));
    session_ = std::move(session);
    inbox_ = inbox;
    interrupted_ = false;
    unanswered_ = cameraPermission() == Permission::Unanswered;
    if (unanswered_)
        figures_->setStalled(permissionAwaited(where_));
    return Error();
}

void AvBackend::stop() {
    session_.reset();
    inbox_.reset();
}

bool AvBackend::canServeBetter(const Request& request) {
    const AutoreleaseScope pool;
    const Size running = figures_->granted().size;
    for (const Offer& offer : offersFor(request, device_.get())) {
        const Size& size = offer.candidate.size;
        if (size.width >= running.width && size.height >= running.height && !(size == running))
            return true;
    }
    return false;
}

Error AvBackend::next(const StopSignal& stop, Arrival& arrival) {
    const AutoreleaseScope pool;
    pollfd descriptors[2] = {{inbox_->descriptor(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
    const int ready = ::poll(descriptors, 2, TIMEOUT_MILLISECONDS);
    if (stop.raised())
        return Error();
    if (unanswered_)
        return waitForAnswer();
    if (ready < 0 || (ready > 0 && descriptors[0].revents == 0))
        return Error(); // woken
    const Inbox::News news = inbox_->take();
    if (!attached())
        return unplugged(where_);
    if (news.broken)
        return failed("The system stopped capturing from", news.why);
    tellInterruption();
    arrival.signOfLife = news.signOfLife;
    arrival.frame = news.frame;
    if (news.frame)
        followSize(news.frame->facts().size);
    return Error();
}

// What comes before the answer is black, and no picture of the camera's.
Error AvBackend::waitForAnswer() {
    inbox_->take();
    if (!attached())
        return unplugged(where_);
    if (cameraPermission() == Permission::Unanswered)
        return Error();
    unanswered_ = false;
    figures_->setStalled(std::string());
    return refused();
}

void AvBackend::tellInterruption() {
    if (interrupted_ == inbox_->isInterrupted())
        return;
    interrupted_ = !interrupted_;
    figures_->setStalled(interrupted_ ? interrupted(where_) : std::string());
}

// The system may send another size than that of the format.
void AvBackend::followSize(const Size& size) {
    Mode mode = figures_->granted();
    if (mode.size == size)
        return;
    mode.size = size;
    figures_->setGranted(mode);
}

int64_t AvBackend::longestPause() {
    if (unanswered_ || inbox_->isInterrupted())
        return 0;
    const double rate = figures_->granted().rate();
    return rate > 0 ? static_cast<int64_t>(5 * static_cast<double>(NANOSECONDS_PER_SECOND) / rate) : 1;
}

namespace {

// The number behind a word of a model's name; 0 where it has none.
int numberBehind(const std::string& word, const std::string& model) {
    const size_t place = model.find(word);
    return place == std::string::npos ? 0 : std::atoi(model.c_str() + place + word.size());
}

// A USB camera's model is "UVC Camera VendorID_1133 ProductID_2093"; of others nobody is told more than a
// name.
CameraDetails detailsOf(AVCaptureDevice* device) {
    const std::string model = textOf([device modelID]);
    CameraDetails details;
    details.kind = "AVFoundation";
    details.vendor = numberBehind("VendorID_", model);
    details.product = numberBehind("ProductID_", model);
    return details;
}

} // namespace

std::shared_ptr<StreamingCamera> makeCamera(AVCaptureDevice* device) {
    const std::string identifier = textOf([device uniqueID]);
    const std::string name = textOf([device localizedName]);
    const std::string shown = name.empty() ? identifier : name;
    return std::make_shared<StreamingCamera>(
        StreamingCamera::Identity{identifier, shown, shown, detailsOf(device)},
        std::make_shared<AvBackend>(device, shown));
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
