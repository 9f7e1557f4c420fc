#include "apps/camera/command_line.h"

#include "apps/camera/help_formatter.h"
#include "apps/camera/option_values.h"
#include "apps/common/failure.h"
#include "apps/common/suggestion.h"
#include "apps/common/text.h"

#include <CLI/CLI.hpp> // in few files: it is a hundred times as long as what it is used for

#include <algorithm>
#include <stdexcept>

namespace ostrel::apps::cli {

namespace {

const char SUMMARY[] = "List cameras, take pictures, record video, convert and scale frames.";

// Fills the options while it parses.
class CommandLine {
public:
    CommandLine();

    Request parse(std::vector<std::string> arguments);

private:
    void addCommonOptions();
    void addList();
    void addSnapshot();
    void addRecord();
    void addServe();
    void addWatch();
    void addControls();
    void addDoctor();
    void addConvert();
    void addScale();
    void addOutput(CLI::App* command, std::string& output, const std::string& description);
    void addSize(CLI::App* command);
    void addMode(CLI::App* command);
    void addLimits(CLI::App* command);
    void addFilter(CLI::App* command);
    void addFiles(CLI::App* command);
    CLI::App* addCommand(Command command, const char* name, const char* summary);
    [[noreturn]] void fail(const std::string& line) const;
    void check() const;

    CLI::App app_{SUMMARY, "ostrel-camera"};
    Options options_;
};

// The option hands its text to parse, whose answer goes to target.
template <typename Target, typename Value>
CLI::Option* addValue(CLI::App* app, const std::string& names, Target& target,
                      Value (*parse)(const std::string&), const char* type, const std::string& description) {
    const std::string longName = names.substr(names.find("--"));
    const auto set = [&target, parse, longName](const std::string& text) {
        try {
            target = parse(text);
        } catch (const std::invalid_argument& error) {
            throw CLI::ValidationError(longName, error.what());
        }
    };
    return app->add_option_function<std::string>(names, set, description)->type_name(type);
}

CommandLine::CommandLine() {
    app_.formatter(makeHelpFormatter());
    app_.require_subcommand(1);
    app_.fallthrough();
    app_.set_help_flag("-h,--help", "Show this help, or that of a command.")->group(GENERAL_GROUP);
    addCommonOptions();
    addList();
    addSnapshot();
    addRecord();
    addServe();
    addWatch();
    addControls();
    addDoctor();
    addConvert();
    addScale();
    app_.footer("Examples:\n"
                "  ostrel-camera list\n"
                "  ostrel-camera snapshot -c webcam --size hd me.png\n"
                "  ostrel-camera record --duration 10 clip.mkv\n"
                "  ostrel-camera record -o - | ffplay -\n"
                "  ostrel-camera snapshot --test-camera\n"
                "  ostrel-camera watch --play clip.y4m\n");
}

void CommandLine::addCommonOptions() {
    app_.add_option(
            "-c,--camera", options_.camera.camera,
            "Which camera: its identifier, its name, a part of the name that only one camera has, or "
            "its node, such as /dev/video2. Letter case does not matter. Identifiers of release 1.0.0 "
            "and of another port do as well. Without it, the first of the list.")
        ->type_name("CAMERA")
        ->group(CAMERA_GROUP);
    app_.add_flag("--test-camera", options_.camera.testCamera,
                  "Add a camera that shows a moving test picture, and use it unless --camera names another.")
        ->group(CAMERA_GROUP);
    app_.add_option("--play", options_.camera.play,
                    "Add a camera that plays this Y4M file at its own rate, over and over, and use it unless "
                    "--camera names another.")
        ->type_name("FILE")
        ->group(CAMERA_GROUP);
    app_.add_flag("--once", options_.camera.once,
                  "Play the file of --play once; a recording ends where it ends.")
        ->group(CAMERA_GROUP);
    addValue(&app_, "--timeout", options_.camera.timeout, secondsValue, "SECONDS",
             "Give up when no frame comes for so long (5).")
        ->group(CAMERA_GROUP);
    app_.add_flag("-q,--quiet", options_.quiet, "Say nothing but errors.")->group(GENERAL_GROUP);
    app_.add_flag("-v,--verbose", options_.verbose, "Show the diagnostics of the camera library as well.")
        ->group(GENERAL_GROUP);
    app_.set_version_flag("-V,--version", "ostrel-camera " OSTREL_VERSION, "Show the version.")
        ->group(GENERAL_GROUP);
}

CLI::App* CommandLine::addCommand(Command command, const char* name, const char* summary) {
    CLI::App* added = app_.add_subcommand(name, summary);
    added->group("Commands");
    added->callback([this, command] { options_.command = command; });
    added->get_help_ptr()->group(""); // shown once, among the general options
    return added;
}

// It may stand without its name.
void CommandLine::addOutput(CLI::App* command, std::string& output, const std::string& description) {
    command->add_option("-o,--output,output", output, description)->type_name("FILE");
}

void CommandLine::addSize(CLI::App* command) {
    addValue(command, "-s,--size", options_.captureSize, sizeValue, "SIZE",
             std::string("Frame size: ") + SIZE_NAMES + "; sd without it. A camera that lacks it is scaled.");
}

void CommandLine::addMode(CLI::App* command) {
    addValue(command, "--mode", options_.mode, modeValue, "MODE",
             std::string("The camera's own mode, as 'list --modes' shows them: ") + MODE_NAMES +
                 ". Without --size, frames are as large.");
}

void CommandLine::addLimits(CLI::App* command) {
    addValue(command, "-n,--frames", options_.limit.frames, countValue, "NUMBER",
             "End after so many frames.");
    addValue(command, "-t,--duration", options_.limit.seconds, secondsValue, "SECONDS",
             "End so long after the first frame: 10, 10s, 500ms, 5m.");
    addValue(command, "--reconnect", options_.limit.reconnect, secondsValue, "SECONDS",
             "When the camera is pulled out, wait so long for it and go on when it is back.");
}

void CommandLine::addFilter(CLI::App* command) {
    addValue(command, "--filter", options_.filter, filterValue, "FILTER",
             "How to scale: none (fast, jagged), bilinear, or box (smooth reductions, the default).");
}

void CommandLine::addList() {
    CLI::App* command = addCommand(Command::List, "list", "List the attached cameras.");
    command->add_flag("--json", options_.list.json,
                      "Write JSON: an array with id, name, formats, device and modes of each camera.");
    command->add_flag("--modes", options_.list.modes,
                      "Show the modes of each camera: formats, sizes, frames a second.");
    command->add_flag("--all", options_.list.all,
                      "Show the video nodes that are no cameras as well, each with the reason.");
    command->footer("Examples:\n"
                    "  ostrel-camera list\n"
                    "  ostrel-camera list --modes\n"
                    "  ostrel-camera list --all\n"
                    "  ostrel-camera list --json | jq -r '.[].id'\n");
}

void CommandLine::addControls() {
    CLI::App* command = addCommand(Command::Controls, "controls",
                                   "Show and set brightness, exposure, focus and what else a camera has.");
    command
        ->add_option(
            "settings", options_.controls.settings,
            "What to set: a number, an item of a menu or its beginning, on or off, default, or auto, "
            "which turns to the automatic control of NAME. Several are set at once. Names as in the "
            "table, or as other kernels have them.")
        ->type_name("NAME=VALUE");
    command->add_flag("--json", options_.controls.json, "Write JSON: an array of the controls.");
    command
        ->add_option("--save", options_.controls.save,
                     "Keep the settings in this file. Those of other cameras that are in it stay there.")
        ->type_name("FILE");
    command
        ->add_option("--load", options_.controls.load,
                     "Restore the settings that the file has: of every camera in it, or of the one that "
                     "--camera names. What could not be set is said, the rest is set.")
        ->type_name("FILE");
    command->footer(
        "Cameras keep their settings until they are unplugged. An automatic mode is never switched\n"
        "off silently: a control that it has the say over is refused unless it is set as well.\n\n"
        "Examples:\n"
        "  ostrel-camera controls\n"
        "  ostrel-camera controls brightness=140 power_line_frequency=50\n"
        "  ostrel-camera controls auto_exposure=manual exposure_time_absolute=100\n"
        "  ostrel-camera controls exposure_time_absolute=auto\n"
        "  ostrel-camera controls --save desk.json\n"
        "  ostrel-camera controls --load desk.json\n");
}

void CommandLine::addDoctor() {
    CLI::App* command = addCommand(Command::Doctor, "doctor",
                                   "Examine the machine and its cameras, and say what to do next.");
    command->add_flag("--json", options_.doctor.json,
                      "Write JSON: an object with the verdict and an array of checks.");
    command->add_flag("--test", options_.camera.testCamera, "The same as --test-camera.");
    command->footer("Each check says ok, warning or problem, what was found, and the next command.\n"
                    "It changes nothing, and captures from each camera for two seconds.\n\n"
                    "Examples:\n"
                    "  ostrel-camera doctor\n"
                    "  ostrel-camera doctor -c webcam\n"
                    "  ostrel-camera doctor --test --json\n");
}

void CommandLine::addSnapshot() {
    CLI::App* command = addCommand(Command::Snapshot, "snapshot", "Take a picture, or a series of them.");
    addOutput(
        command, options_.snapshot.output,
        "The file to write, '-' for standard output (snapshot.png). Its suffix says what it is: jpg, the "
        "camera's own JPEG where it has one; png and the other kinds that Qt writes. A series: with %04d "
        "for the number, or %H%M%S and the like for the time.");
    addSize(command);
    addMode(command);
    addValue(command, "--every", options_.snapshot.every, secondsValue, "SECONDS",
             "Take one each so many seconds, until Ctrl-C or a limit: 60, 500ms, 5m.");
    addLimits(command);
    addValue(command, "--quality", options_.snapshot.quality, qualityValue, "NUMBER",
             "How good an encoded JPEG is, 1 to 100 (85).");
    addValue(command, "--skip", options_.snapshot.skip, numberValue, "NUMBER",
             "Let so many frames pass first: many cameras start dark and adjust within a second (0).");
    command->footer("Examples:\n"
                    "  ostrel-camera snapshot\n"
                    "  ostrel-camera snapshot --size hd --skip 30 desk.jpg\n"
                    "  ostrel-camera snapshot --every 60 'desk-%H%M.jpg'\n"
                    "  ostrel-camera snapshot --test-camera -o - | display\n");
}

void CommandLine::addRecord() {
    CLI::App* command = addCommand(Command::Record, "record", "Record video, until Ctrl-C or a limit.");
    addOutput(
        command, options_.record.output,
        "The file to write, '-' for standard output (recording.y4m, or recording with the name of another "
        "format behind it).");
    addSize(command);
    addMode(command);
    addLimits(command);
    addValue(
        command, "--format", options_.record.format, recordingKindValue, "FORMAT",
        "mkv, which is small and plays as fast as it happened: the camera's own JPEG pictures where it has "
        "them, else encoded ones; y4m, which is not compressed; or bare frames one after the other: i420, "
        "yuy2, rgb24, argb (also argb32, bgra). Without it, what the suffix of the file says, else y4m.");
    addValue(command, "--quality", options_.record.quality, qualityValue, "NUMBER",
             "How good the encoded pictures of an mkv file are, 1 to 100 (85).");
    addValue(command, "--scale", options_.record.scale, levelValue, "LEVEL",
             "Scale what is captured to ld, sd or hd before it is written.");
    addFilter(command);
    addValue(
        command, "--rate", options_.record.rate, rateValue, "RATE",
        "The frames a second at which players show a Y4M file. Every frame is written all the same: 15 for "
        "a camera that delivers 30 plays at half the speed. Without it, a file states the rate that was "
        "measured, so that it plays as fast as it happened, and standard output 30.");
    command->footer("Examples:\n"
                    "  ostrel-camera record clip.mkv\n"
                    "  ostrel-camera record -t 10s -s hd clip.mkv\n"
                    "  ostrel-camera record --size hd --scale ld --frames 300 small.y4m\n"
                    "  ostrel-camera record -o - --format mkv | ffmpeg -i - clip.mp4\n"
                    "  ostrel-camera record --format yuy2 --frames 1 frame.yuy2\n");
}

void CommandLine::addServe() {
    CLI::App* command =
        addCommand(Command::Serve, "serve", "Show the live picture on a web page, on this machine only.");
    addValue(command, "--port", options_.serve.port, portValue, "PORT",
             "Where the page is: http://127.0.0.1:PORT/ (8080); 0 takes any that is free.");
    addSize(command);
    addMode(command);
    addValue(command, "--quality", options_.serve.quality, qualityValue, "NUMBER",
             "How good pictures are that the camera does not send as JPEG itself, 1 to 100 (85).");
    command->footer(
        "Every user of this machine can look, nobody else can. From another machine, by way of ssh:\n"
        "  ssh -L 8080:localhost:8080 HOST, then http://127.0.0.1:8080/\n"
        "The camera is started when somebody looks, and stopped when nobody does.\n\n"
        "Examples:\n"
        "  ostrel-camera serve\n"
        "  ostrel-camera serve -c webcam -s hd --port 8081\n");
}

void CommandLine::addWatch() {
    CLI::App* command =
        addCommand(Command::Watch, "watch", "Show how well a camera delivers, until Ctrl-C or a limit.");
    addSize(command);
    addMode(command);
    addLimits(command);
    command->footer("Examples:\n"
                    "  ostrel-camera watch --size hd\n"
                    "  ostrel-camera watch --mode MJPG:1280x720@60\n"
                    "  ostrel-camera watch --camera webcam --duration 60 > figures.txt\n");
}

void CommandLine::addFiles(CLI::App* command) {
    command->add_option("input", options_.files.input, "The file to read, '-' for standard input.")
        ->required();
    command->add_option("output", options_.files.output, "The file to write, '-' for standard output.")
        ->required();
    const std::string formats = ": y4m, png, or raw frames as i420, yuy2, rgb24, argb (also argb32, bgra). "
                                "Without it, what the suffix of the file says.";
    addValue(command, "--from", options_.files.from, kindValue, "FORMAT", "What the input is" + formats);
    addValue(command, "--to", options_.files.to, kindValue, "FORMAT", "What the output is to be" + formats);
    addValue(command, "--frame", options_.files.frame, countValue, "NUMBER",
             "Only this frame of the input, counted from 1.");
    command->add_flag(
        "--bottom-up", options_.files.bottomUp,
        "The rgb24 input starts with the bottom row, as Windows bitmaps do. All other frames start "
        "with the top row.");
}

void CommandLine::addConvert() {
    CLI::App* command =
        addCommand(Command::Convert, "convert", "Convert frames from one pixel layout to another.");
    addFiles(command);
    addValue(command, "-s,--size", options_.files.size, sizeValue, "SIZE",
             "The frame size of raw input, such as 640x480, sd or 720p; its sides are even for yuy2.");
    command->footer(
        "Raw formats have no header: frames without padding, one after the other. A PNG name may\n"
        "hold %d or %04d for the number of the picture.\n\n"
        "Examples:\n"
        "  ostrel-camera convert --frame 10 clip.y4m picture.png\n"
        "  ostrel-camera convert clip.y4m picture-%04d.png\n"
        "  ostrel-camera convert --size 640x480 capture.yuy2 capture.y4m\n"
        "  ostrel-camera convert --to rgb24 picture.png picture.raw\n");
}

void CommandLine::addScale() {
    CLI::App* command =
        addCommand(Command::Scale, "scale", "Scale frames between 320x240, 640x480 and 1280x720.");
    addFiles(command);
    addValue(command, "--scale", options_.scaleTo, levelValue, "LEVEL",
             "The size of the output: ld (320x240), sd (640x480) or hd (1280x720).")
        ->required();
    addValue(command, "-s,--size", options_.files.size, sizeValue, "SIZE",
             "The frame size of raw input: ld, sd or hd.");
    addFilter(command);
    command->footer("Examples:\n"
                    "  ostrel-camera scale --scale ld clip.y4m small.y4m\n"
                    "  ostrel-camera scale --scale hd --size sd --filter bilinear in.yuy2 out.yuy2\n"
                    "  ostrel-camera scale --scale sd snapshot.png small.png\n");
}

Request CommandLine::parse(std::vector<std::string> arguments) {
    if (arguments.empty())
        return {std::nullopt, app_.help(), EXIT_USAGE};
    if (arguments.front() == "help") { // as many programs have it
        arguments.erase(arguments.begin());
        arguments.push_back("--help");
    }
    std::reverse(arguments.begin(), arguments.end()); // as the parser takes them
    try {
        app_.parse(std::move(arguments));
    } catch (const CLI::CallForHelp&) {
        return {std::nullopt, app_.help()};
    } catch (const CLI::CallForVersion& version) {
        return {std::nullopt, std::string(version.what()) + "\n"};
    } catch (const CLI::Error& error) {
        fail(error.what());
    }
    check();
    return {options_, std::string()};
}

// line: the parser's own words, for what is not said better here.
void CommandLine::fail(const std::string& line) const {
    const std::vector<CLI::App*> chosen = app_.get_subcommands();
    std::vector<std::string> known;
    std::string program = app_.get_name();
    const auto addOptions = [&known](const CLI::App& app) {
        for (const CLI::Option* option : app.get_options())
            for (const std::string& name : namesOf(*option))
                known.push_back(name);
    };
    addOptions(app_);
    if (chosen.empty())
        for (const CLI::App* command : app_.get_subcommands([](const CLI::App*) { return true; }))
            known.push_back(command->get_name());
    for (const CLI::App* command : chosen) {
        addOptions(*command);
        program += " " + command->get_name();
    }
    const std::vector<std::string> unknown = app_.remaining(true);
    const auto isOption = [](const std::string& word) { return word.size() > 1 && word[0] == '-'; };
    auto named = std::find_if(unknown.begin(), unknown.end(), isOption);
    if (named == unknown.end() || chosen.empty())
        named = unknown.begin();
    const std::string hint = "'" + program + " --help' explains the usage";
    if (named == unknown.end())
        throw Failure(EXIT_USAGE, (chosen.empty() ? "no command is given" : line) + "; " + hint);
    std::string what = isOption(*named) ? "no option"
                       : chosen.empty() ? "no command"
                                        : "one argument too many";
    if (isOption(*named) && !chosen.empty())
        what += " of " + chosen.front()->get_name();
    const std::string meant = suggestion(*named, known);
    throw Failure(EXIT_USAGE, quoted(*named) + " is " + what +
                                  (meant.empty() ? "; " : "; did you mean " + quoted(meant) + "? ") + hint);
}

// What options mean together.
void CommandLine::check() const {
    const CameraOptions& camera = options_.camera;
    const bool files = options_.command == Command::Convert || options_.command == Command::Scale;
    if (files)
        for (const CLI::Option* option : app_.get_options())
            if (option->get_group() == CAMERA_GROUP && option->count() > 0)
                throw Failure(EXIT_USAGE, namesOf(*option).back() +
                                              " has no meaning here: convert and scale work on "
                                              "files, not on a camera");
    if (camera.once && camera.play.empty())
        throw Failure(EXIT_USAGE, "--once says how to play a file: add --play FILE");
    const bool scales = options_.command == Command::Record && options_.record.scale;
    if (scales && !levelOf(options_.size()))
        throw Failure(EXIT_USAGE,
                      "--scale works between 320x240, 640x480 and 1280x720: choose one of them with "
                      "--size instead of " +
                          toString(options_.size()));
}

} // namespace

Request parseCommandLine(int argc, const char* const* argv) {
    return CommandLine().parse(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
}

} // namespace ostrel::apps::cli
