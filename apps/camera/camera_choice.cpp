#include "apps/camera/camera_choice.h"

#include "apps/common/camera_match.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <ostrel/devices.h>

#include <QtCore/QFile>

#include <memory>

namespace ostrel::apps::cli {

namespace {

std::string described(const std::vector<Camera>& cameras) {
    std::vector<std::string> parts;
    for (const Camera& camera : cameras)
        parts.push_back(camera.name + " (" + camera.identifier + ")");
    return join(parts, ", ");
}

} // namespace

AddedCameras addCameras(const CameraOptions& options, const Size& size) {
    return AddedCameras(options.testCamera, QFile::decodeName(options.play.c_str()), options.once, size);
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

Camera chooseCamera(const std::vector<Camera>& cameras, const std::string& wanted, const QStringList& added,
                    const std::vector<ClosedNode>& closed) {
    if (cameras.empty())
        failWithoutCamera(closed);
    if (wanted.empty() && added.size() > 1)
        throw Failure(EXIT_USAGE, "several cameras are added: say with --camera which of " +
                                      added.join(", ").toStdString() + " is meant");
    if (wanted.empty() && added.empty())
        return cameras.front();
    QMap<QString, QString> names;
    for (const Camera& camera : cameras)
        names.insert(QString::fromStdString(camera.identifier), QString::fromStdString(camera.name));
    const std::string text = wanted.empty() ? added.front().toStdString() : wanted;
    QString why;
    const QStringList identifiers = meantCameras(names, QString::fromStdString(text), why);
    std::vector<Camera> matches;
    for (const Camera& camera : cameras)
        if (identifiers.contains(QString::fromStdString(camera.identifier)))
            matches.push_back(camera);
    if (matches.size() == 1)
        return matches.front();
    throw Failure(EXIT_NO_SUCH_CAMERA,
                  why.toStdString() +
                      (matches.empty() ? "; attached: " + described(cameras) : ": " + described(matches)));
}

Camera chooseCamera(const CameraOptions& options, const AddedCameras& added) {
    return chooseCamera(attachedCameras(), options.camera, added.identifiers(), closedVideoNodes());
}

} // namespace ostrel::apps::cli
