#include "apps/camera/camera_choice.h"

#include "apps/camera/failure.h"
#include "apps/camera/text.h"

#include <ostrel/devices.h>
#include <ostrel/virtual_camera.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <functional>

namespace ostrel {
namespace cli {

namespace {

const char TEST_CAMERA[] = "ostrel-test-pattern";
// How long a file must be silent to have ended: a few of its intervals, and long enough for a busy machine.
const double END_INTERVALS = 3;
const double SHORTEST_END_SECONDS = 1;
const char FILE_CAMERA[] = "ostrel-file";

std::string folded(const std::string& utf8) {
    return QString::fromStdString(utf8).toCaseFolded().toStdString();
}

std::string described(const std::vector<Camera>& cameras) {
    std::vector<std::string> parts;
    for (const Camera& camera : cameras)
        parts.push_back(camera.name + " (" + camera.identifier + ")");
    return join(parts, ", ");
}

std::vector<Camera> filtered(const std::vector<Camera>& cameras,
                             const std::function<bool(const Camera&)>& matches) {
    std::vector<Camera> result;
    for (const Camera& camera : cameras)
        if (matches(camera))
            result.push_back(camera);
    return result;
}

// Every camera that matches in the strictest way in which any does.
std::vector<Camera> matching(const std::vector<Camera>& cameras, const std::string& wanted) {
    const std::string text = folded(wanted);
    const std::function<bool(const Camera&)> ways[] = {
        [&](const Camera& camera) { return camera.identifier == wanted; },
        [&](const Camera& camera) { return folded(camera.identifier) == text; },
        [&](const Camera& camera) { return camera.name == wanted; },
        [&](const Camera& camera) { return folded(camera.name) == text; },
        [&](const Camera& camera) { return folded(camera.name).find(text) != std::string::npos; },
    };
    std::vector<Camera> matches;
    for (const auto& way : ways)
        if (matches.empty())
            matches = filtered(cameras, way);
    return matches;
}

} // namespace

AddedCameras::AddedCameras(const CameraOptions& options, const Size& size) {
    if (options.testCamera)
        add(std::make_unique<OVideoTestPatternCamera>(TEST_CAMERA, "Test pattern", size.width, size.height));
    if (options.play.empty())
        return;
    const QString path = QFile::decodeName(options.play.c_str());
    auto file =
        std::make_unique<OVideoFileCamera>(FILE_CAMERA, QFileInfo(path).fileName(), path, !options.once);
    if (!file->error().isEmpty())
        throw Failure(EXIT_FILE, "cannot play " + quoted(options.play) + ": " + file->error().toStdString());
    if (options.once)
        endOfFile_ = std::max(SHORTEST_END_SECONDS, END_INTERVALS / file->framesPerSecond());
    add(std::move(file));
}

AddedCameras::~AddedCameras() = default;

void AddedCameras::add(std::unique_ptr<OVideoVirtualCamera> camera) {
    camera->attach();
    identifiers_.push_back(camera->uniqueID().toStdString());
    cameras_.push_back(std::move(camera));
}

std::vector<Camera> attachedCameras() {
    std::vector<Camera> cameras;
    const QList<OVideoDeviceUnix*> devices = OVideoInfoUnix::ptr()->devices();
    for (OVideoDeviceUnix* listed : devices) {
        const std::unique_ptr<OVideoDeviceUnix> device(listed);
        Camera camera;
        camera.identifier = device->uniqueID().toStdString();
        camera.name = printable(device->name().toStdString());
        const QList<OVideoFormat> formats = device->videoFormats();
        for (const OVideoFormat& format : formats)
            camera.sizes.push_back({format.width, format.height});
        cameras.push_back(camera);
    }
    return cameras;
}

void failWithoutCamera(const std::vector<ClosedNode>& closed) {
    if (!closed.empty())
        throw Failure(EXIT_CANNOT_OPEN, permissionAdvice(closed));
    throw Failure(EXIT_NO_CAMERA,
                  "no camera is attached: plug one in, or use --test-camera for the built-in test picture");
}

Camera chooseCamera(const std::vector<Camera>& cameras, const std::string& wanted,
                    const std::vector<std::string>& added, const std::vector<ClosedNode>& closed) {
    if (cameras.empty())
        failWithoutCamera(closed);
    if (wanted.empty() && added.size() > 1)
        throw Failure(EXIT_USAGE, "several cameras are added: say with --camera which of " +
                                      join(added, ", ") + " is meant");
    if (wanted.empty() && added.empty())
        return cameras.front();
    const std::string name = wanted.empty() ? added.front() : wanted;
    const std::vector<Camera> matches = matching(cameras, name);
    if (matches.size() == 1)
        return matches.front();
    if (matches.empty())
        throw Failure(EXIT_NO_SUCH_CAMERA,
                      "no camera is called " + quoted(name) + "; attached: " + described(cameras));
    throw Failure(EXIT_NO_SUCH_CAMERA,
                  quoted(name) + " fits several cameras, give the identifier of one: " + described(matches));
}

} // namespace cli
} // namespace ostrel
