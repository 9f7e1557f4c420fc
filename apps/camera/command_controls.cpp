// ostrel-camera controls
#include "apps/camera/commands.h"
#include "apps/camera/control_list.h"
#include "apps/camera/input_file.h"
#include "apps/camera/output_file.h"
#include "apps/common/control_names.h"
#include "apps/common/control_settings.h"
#include "apps/common/failure.h"
#include "apps/common/suggestion.h"
#include "apps/common/text.h"

#include <ostrel/device_id.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <stdexcept>

namespace ostrel::apps::cli {

namespace {

const std::size_t LARGEST_FILE = 1 << 22; // bytes: the settings of thousands of cameras

QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

QList<OVideoControl> controlsOf(const Camera& camera) {
    QString why;
    const QList<OVideoControl> controls = videoControls(qt(camera.identifier), &why);
    if (controls.isEmpty())
        throw Failure(EXIT_NOT_SET, why.toStdString());
    return controls;
}

OVideoControl parsed(const std::string& setting, const QList<OVideoControl>& controls) {
    const std::size_t equals = setting.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(EXIT_USAGE, quoted(setting) + " is no setting: write NAME=VALUE");
    const std::string name = setting.substr(0, equals);
    const int found = findControl(controls, name);
    if (found < 0) {
        std::vector<std::string> known;
        for (const OVideoControl& control : controls)
            known.push_back(controlKey(control));
        const std::string meant = suggestion(name, known);
        throw Failure(EXIT_NOT_SET, "the camera has no control " + quoted(name) +
                                        (meant.empty() ? ": it has " + join(known, ", ")
                                                       : "; did you mean " + quoted(meant) + "?"));
    }
    try {
        return withValue(controls[found], controls, setting.substr(equals + 1));
    } catch (const std::invalid_argument& error) {
        throw Failure(EXIT_USAGE, error.what());
    }
}

// Says what the camera has made of it where that is something else.
void set(const Camera& camera, const std::vector<std::string>& settings, Messages& messages) {
    const QList<OVideoControl> before = controlsOf(camera);
    QList<OVideoControl> wanted;
    for (const std::string& setting : settings)
        wanted.append(parsed(setting, before));
    QString why;
    if (!setVideoControls(qt(camera.identifier), wanted, &why))
        throw Failure(EXIT_NOT_SET, why.toStdString());
    const QList<OVideoControl> now = controlsOf(camera);
    for (const OVideoControl& one : wanted) {
        const int found = findControl(now, one.id());
        if (found >= 0 && now[found].hasValue() && now[found].value() != one.value())
            messages.say(controlKey(one) + ": the camera took " + valueText(now[found]) + " for " +
                         valueText(now[found], one.value()));
    }
}

SavedCameras readSettings(const std::string& path) {
    InputFile file(path);
    std::string text(LARGEST_FILE, '\0');
    text.resize(file.read(&text[0], text.size()));
    SavedCameras cameras;
    if (!fromJson(QByteArray::fromStdString(text), cameras))
        throw Failure(EXIT_FILE,
                      file.displayName() + " is no file that 'ostrel-camera controls --save' has written");
    return cameras;
}

void save(const Camera& camera, const std::string& path) {
    const QString id = qt(camera.identifier);
    SavedCameras cameras;
    const QFileInfo before(QFile::decodeName(path.c_str()));
    if (path != "-" && before.isFile() && before.size() > 0)
        cameras = readSettings(path);
    cameras[id] = {qt(camera.name), savedControls(controlsOf(camera))};
    OutputFile output(path, OutputFile::Mode::Whole);
    output.write(toJson(cameras).toStdString());
    output.commit();
}

// Of the camera that is named; else of all that are attached. True when all was set.
bool load(const std::string& path, const QString& only, Messages& messages) {
    const SavedCameras cameras = readSettings(path);
    QStringList refused;
    bool meant = false;
    for (auto camera = cameras.begin(); camera != cameras.end(); ++camera) {
        QString why;
        const QString id = videoDeviceID(camera.key(), &why); // as it is called today
        if (!only.isEmpty() && id != only)
            continue;
        meant = true;
        if (id.isEmpty())
            refused.append(camera.value().name + ": " + why);
        else
            refused += applyControls(id, camera.value().controls);
    }
    if (!meant)
        refused.append(
            QString("%1 has no settings of %2").arg(qt(path), only.isEmpty() ? "any camera" : only));
    for (const QString& line : refused)
        messages.error(line.toStdString());
    return refused.isEmpty();
}

void show(const Camera& camera, bool json) {
    const QList<OVideoControl> controls = controlsOf(camera);
    OutputFile output("-", OutputFile::Mode::Stream);
    output.write(json ? controlJson(controls) : controlTable(controls));
    output.commit();
}

} // namespace

int runControls(const Options& options, const Context& context) {
    const AddedCameras added = addCameras(options.camera, options.size());
    const ControlsOptions& wanted = options.controls;
    const bool shows = wanted.json || (wanted.settings.empty() && wanted.save.empty() && wanted.load.empty());
    const bool everyCamera = options.camera.camera.empty() && added.identifiers().isEmpty();
    bool allSet = true;
    if (!wanted.load.empty() && everyCamera && wanted.settings.empty() && wanted.save.empty() && !shows)
        return load(wanted.load, QString(), context.messages) ? EXIT_OK : EXIT_NOT_SET;
    const Camera camera = chooseCamera(options.camera, added);
    if (!wanted.load.empty())
        allSet = load(wanted.load, qt(camera.identifier), context.messages);
    if (!wanted.settings.empty())
        set(camera, wanted.settings, context.messages);
    if (!wanted.save.empty())
        save(camera, wanted.save);
    if (shows)
        show(camera, wanted.json);
    return allSet ? EXIT_OK : EXIT_NOT_SET;
}

} // namespace ostrel::apps::cli
