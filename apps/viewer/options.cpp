#include "apps/viewer/options.h"

#include <QtCore/QCommandLineParser>

namespace ostrel {
namespace viewer {

namespace {

const char DESCRIPTION[] = "Shows the picture of a camera in a window.";

// "640x480", or a short name.
std::optional<VIDEO_QUALITY> parseSize(const QString& text) {
    const QString names[] = {"ld", "sd", "hd"};
    for (const VIDEO_QUALITY level : {VIDEO_QUALITY_LD, VIDEO_QUALITY_SD, VIDEO_QUALITY_HD}) {
        const QString size = OVideoCommon::qualityToString(level).remove(' ');
        if (text.compare(size, Qt::CaseInsensitive) == 0 ||
            text.compare(names[level], Qt::CaseInsensitive) == 0)
            return level;
    }
    return std::nullopt;
}

Request refusal(const QString& reason) {
    return {std::nullopt, "ostrel-viewer: " + reason + "\nTry 'ostrel-viewer --help'.\n", EXIT_USAGE};
}

} // namespace

Request parseCommandLine(const QStringList& arguments) {
    const QCommandLineOption testCamera("test-camera", "Add a camera that shows a moving test pattern.");
    const QCommandLineOption play("play", "Add a camera that plays a Y4M file, over and over.", "FILE");
    const QCommandLineOption camera("camera", "Begin with this camera, named by its identifier or its name.",
                                    "NAME");
    const QCommandLineOption size(
        "size", "Capture in this size: 320x240 (ld), 640x480 (sd, the default) or 1280x720 (hd).", "SIZE");
    const QCommandLineOption fullScreen("full-screen", "Begin in full screen. Esc leads back.");
    const QCommandLineOption help({"h", "help"}, "Show this help.");
    const QCommandLineOption version({"v", "version"}, "Show the version.");
    QCommandLineParser parser;
    parser.setApplicationDescription(DESCRIPTION);
    parser.addOptions({camera, size, testCamera, play, fullScreen, help, version});

    if (!parser.parse(arguments))
        return refusal(parser.errorText());
    if (parser.isSet(help))
        return {std::nullopt, parser.helpText(), 0};
    if (parser.isSet(version))
        return {std::nullopt, "ostrel-viewer " OSTREL_VERSION "\n", 0};
    if (!parser.positionalArguments().isEmpty())
        return refusal(QString("unexpected argument '%1'").arg(parser.positionalArguments().first()));

    Options options;
    options.testCamera = parser.isSet(testCamera);
    options.play = parser.value(play);
    options.camera = parser.value(camera);
    options.fullScreen = parser.isSet(fullScreen);
    if (parser.isSet(size)) {
        const std::optional<VIDEO_QUALITY> level = parseSize(parser.value(size));
        if (!level)
            return refusal(
                QString("'%1' is no size: give 320x240, 640x480 or 1280x720").arg(parser.value(size)));
        options.size = *level;
    }
    return {options, QString(), 0};
}

} // namespace viewer
} // namespace ostrel
