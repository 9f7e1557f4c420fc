#include "apps/viewer/options.h"

#include "apps/common/failure.h"
#include "apps/common/suggestion.h"

#include <QtCore/QCommandLineParser>

namespace ostrel::apps::viewer {

namespace {

const char DESCRIPTION[] = "Shows the picture of a camera in a window.";

Request refusal(const QString& reason) {
    return {std::nullopt, "ostrel-viewer: " + reason + "\nTry 'ostrel-viewer --help'.\n", EXIT_USAGE};
}

QString dashed(const QString& name) {
    return (name.size() > 1 ? "--" : "-") + name;
}

Request unknownOption(const QString& name, const QList<QCommandLineOption>& options) {
    std::vector<std::string> known;
    for (const QCommandLineOption& option : options)
        for (const QString& one : option.names())
            known.push_back(dashed(one).toStdString());
    const QString meant = QString::fromStdString(suggestion(dashed(name).toStdString(), known));
    return refusal(QString("'%1' is no option%2")
                       .arg(dashed(name), meant.isEmpty() ? "" : QString("; did you mean '%1'?").arg(meant)));
}

} // namespace

Request parseCommandLine(const QStringList& arguments) {
    const QCommandLineOption testCamera("test-camera", "Add a camera that shows a moving test pattern.");
    const QCommandLineOption play("play", "Add a camera that plays a Y4M file, over and over, as does FILE.",
                                  "FILE");
    const QCommandLineOption camera({"c", "camera"},
                                    "Begin with this camera: its identifier, its name, a part of the name "
                                    "that only one camera has, or its "
                                    "node, such as /dev/video2.",
                                    "CAMERA");
    const QCommandLineOption size(
        {"s", "size"}, QString("Capture in this size: %1; sd without it.").arg(SIZE_NAMES), "SIZE");
    const QCommandLineOption fullScreen({"full-screen", "fullscreen"},
                                        "Begin in full screen. Esc leads back.");
    const QCommandLineOption help({"h", "help"}, "Show this help.");
    const QCommandLineOption version({"V", "v", "version"}, "Show the version.");
    const QList<QCommandLineOption> options = {camera, size, testCamera, play, fullScreen, help, version};
    QCommandLineParser parser;
    parser.setApplicationDescription(DESCRIPTION);
    parser.addOptions(options);
    parser.addPositionalArgument("FILE", "A Y4M file to play.", "[FILE]");

    const bool parsed = parser.parse(arguments);
    if (!parser.unknownOptionNames().isEmpty())
        return unknownOption(parser.unknownOptionNames().first(), options);
    if (!parsed)
        return refusal(parser.errorText());
    if (parser.isSet(help))
        return {std::nullopt, parser.helpText(), 0};
    if (parser.isSet(version))
        return {std::nullopt, "ostrel-viewer " OSTREL_VERSION "\n", 0};
    const QStringList files = parser.values(play) + parser.positionalArguments();
    if (files.size() > 1)
        return refusal(QString("one file can be played, '%1' is one too many").arg(files.last()));
    const std::optional<Size> wanted = parseSize(parser.value(size).toStdString());
    if (parser.isSet(size) && !wanted)
        return refusal(QString("'%1' is no size: %2").arg(parser.value(size), SIZE_NAMES));

    Options chosen;
    chosen.testCamera = parser.isSet(testCamera);
    chosen.play = files.value(0);
    chosen.camera = parser.value(camera);
    chosen.fullScreen = parser.isSet(fullScreen);
    chosen.size = wanted.value_or(chosen.size);
    return {chosen, QString(), 0};
}

} // namespace ostrel::apps::viewer
