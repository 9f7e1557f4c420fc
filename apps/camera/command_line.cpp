#include "apps/camera/command_line.h"

#include "apps/camera/failure.h"
#include "apps/camera/help.h"
#include "apps/camera/option_values.h"
#include "apps/camera/text.h"

namespace ostrel {
namespace cli {

namespace {

const char SUMMARY[] = "List cameras, take pictures, record video, convert and scale frames.";

// The option hands its text to parse, whose answer goes to target.
template <typename Target, typename Value>
CLI::Option* addValue(CLI::App* app, const std::string& names, Target& target,
                      Value (*parse)(const std::string&), const char* type, const std::string& description) {
    const std::string longName = names.substr(names.find("--"));
    const auto set = [&target, parse, longName](const std::string& text) {
        try {
            target = parse(text);
        } catch (const CLI::ValidationError& error) {
            throw CLI::ValidationError(longName, error.what());
        }
    };
    return app->add_option_function<std::string>(names, set, description)->type_name(type);
}

// The parser's own messages, as one line with the way to the help.
[[noreturn]] void failUsage(const CLI::App& app, const CLI::Error& error) {
    std::string help = "ostrel-camera";
    for (const CLI::App* command : app.get_subcommands())
        help += " " + command->get_name();
    std::string line = error.what();
    const std::vector<std::string> unknown = app.remaining();
    if (dynamic_cast<const CLI::RequiredError*>(&error) && app.get_subcommands().empty())
        line = unknown.empty()
                   ? "no command is given"
                   : quoted(unknown.front()) + " is no " + (unknown.front()[0] == '-' ? "option" : "command");
    throw Failure(EXIT_USAGE, line + "; '" + help + " --help' explains the usage");
}

} // namespace

CommandLine::CommandLine() : app_(SUMMARY, "ostrel-camera") {
    app_.formatter(std::make_shared<HelpFormatter>());
    app_.require_subcommand(1);
    app_.fallthrough();
    app_.set_help_flag("-h,--help", "Show this help, or that of a command.")->group(GENERAL_GROUP);
    addCommonOptions();
    addList();
    addSnapshot();
    addRecord();
    addWatch();
    addConvert();
    addScale();
    app_.footer("Examples:\n"
                "  ostrel-camera list\n"
                "  ostrel-camera snapshot --camera webcam --size hd -o me.png\n"
                "  ostrel-camera record --duration 10 -o clip.y4m\n"
                "  ostrel-camera record -o - | ffplay -\n"
                "  ostrel-camera snapshot --test-camera\n"
                "  ostrel-camera watch --play clip.y4m\n");
}

CommandLine::~CommandLine() = default;

void CommandLine::addCommonOptions() {
    app_.add_option("--camera", options_.camera.camera,
                    "Which camera: its identifier, its name, or a part of the name that only one camera has. "
                    "Letter case does not matter. Without it, the first of the list.")
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
    app_.set_version_flag("--version", "ostrel-camera " OSTREL_VERSION, "Show the version.")
        ->group(GENERAL_GROUP);
}

CLI::App* CommandLine::addCommand(Command command, const char* name, const char* summary) {
    CLI::App* added = app_.add_subcommand(name, summary);
    added->group("Commands");
    added->callback([this, command] { options_.command = command; });
    added->get_help_ptr()->group(""); // shown once, among the general options
    return added;
}

void CommandLine::addSize(CLI::App* command) {
    addValue(
        command, "--size", options_.captureSize, sizeValue, "SIZE",
        "Frame size: ld (320x240), sd (640x480, the default), hd (1280x720) or any WIDTHxHEIGHT with even "
        "sides. A camera that lacks it is scaled.");
}

void CommandLine::addLimits(CLI::App* command) {
    addValue(command, "-n,--frames", options_.limit.frames, countValue, "NUMBER",
             "End after so many frames.");
    addValue(command, "-t,--duration", options_.limit.seconds, secondsValue, "SECONDS",
             "End so long after the first frame.");
}

void CommandLine::addFilter(CLI::App* command) {
    addValue(command, "--filter", options_.filter, filterValue, "FILTER",
             "How to scale: none (fast, jagged), bilinear, or box (smooth reductions, the default).");
}

void CommandLine::addList() {
    CLI::App* command = addCommand(Command::List, "list", "List the attached cameras.");
    command->add_flag("--json", options_.list.json,
                      "Write JSON: an array with id, name and formats of each camera.");
    command->footer("Examples:\n"
                    "  ostrel-camera list\n"
                    "  ostrel-camera list --json | jq -r '.[].id'\n");
}

void CommandLine::addSnapshot() {
    CLI::App* command = addCommand(Command::Snapshot, "snapshot", "Take one picture and save it as PNG.");
    command
        ->add_option("-o,--output", options_.snapshot.output,
                     "The file to write, '-' for standard output (snapshot.png).")
        ->type_name("FILE");
    addSize(command);
    addValue(command, "--skip", options_.snapshot.skip, numberValue, "NUMBER",
             "Let so many frames pass first: many cameras start dark and adjust within a second (0).");
    command->footer("Examples:\n"
                    "  ostrel-camera snapshot\n"
                    "  ostrel-camera snapshot --size hd --skip 30 -o desk.png\n"
                    "  ostrel-camera snapshot --test-camera -o - | display\n");
}

void CommandLine::addRecord() {
    CLI::App* command = addCommand(Command::Record, "record", "Record video, until Ctrl-C or a limit.");
    command
        ->add_option("-o,--output", options_.record.output,
                     "The file to write, '-' for standard output (recording.y4m, or recording with the name "
                     "of a raw format behind it).")
        ->type_name("FILE");
    addSize(command);
    addLimits(command);
    addValue(
        command, "--format", options_.record.format, kindValue, "FORMAT",
        "y4m, which players read; or bare frames one after the other: i420, yuy2, rgb24, argb (also argb32, "
        "bgra). Without it, what the suffix of the file says, else y4m.");
    addValue(command, "--scale", options_.record.scale, levelValue, "LEVEL",
             "Scale what is captured to ld, sd or hd before it is written.");
    addFilter(command);
    addValue(command, "--rate", options_.record.rate, rateValue, "RATE",
             "The frames a second that a Y4M file is to state. Without it, a file states the rate that was "
             "measured, and standard output 30.");
    command->footer("Examples:\n"
                    "  ostrel-camera record\n"
                    "  ostrel-camera record --duration 10 --size hd -o clip.y4m\n"
                    "  ostrel-camera record --size hd --scale ld --frames 300 -o small.y4m\n"
                    "  ostrel-camera record -o - | ffmpeg -i - clip.mp4\n"
                    "  ostrel-camera record --format yuy2 --frames 1 -o frame.yuy2\n");
}

void CommandLine::addWatch() {
    CLI::App* command =
        addCommand(Command::Watch, "watch", "Show how well a camera delivers, until Ctrl-C or a limit.");
    addSize(command);
    addLimits(command);
    command->footer("Examples:\n"
                    "  ostrel-camera watch --size hd\n"
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
    addValue(
        command, "--size", options_.files.size, sizeValue, "SIZE",
        "The frame size of raw input: ld, sd, hd or any WIDTHxHEIGHT; sides are even for i420 and yuy2.");
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
    addValue(command, "--size", options_.files.size, sizeValue, "SIZE",
             "The frame size of raw input: ld, sd or hd.");
    addFilter(command);
    command->footer("Examples:\n"
                    "  ostrel-camera scale --scale ld clip.y4m small.y4m\n"
                    "  ostrel-camera scale --scale hd --size sd --filter bilinear in.yuy2 out.yuy2\n"
                    "  ostrel-camera scale --scale sd snapshot.png small.png\n");
}

std::string CommandLine::parse(int argc, const char* const* argv) {
    try {
        app_.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return app_.help();
    } catch (const CLI::CallForVersion& version) {
        return std::string(version.what()) + "\n";
    } catch (const CLI::Error& error) {
        failUsage(app_, error);
    }
    check();
    return std::string();
}

// What options mean together.
void CommandLine::check() const {
    const CameraOptions& camera = options_.camera;
    const bool files = options_.command == Command::Convert || options_.command == Command::Scale;
    if (files)
        for (const CLI::Option* option : app_.get_options())
            if (option->get_group() == CAMERA_GROUP && option->count() > 0)
                throw Failure(EXIT_USAGE, option->get_name() +
                                              " has no meaning here: convert and scale work on "
                                              "files, not on a camera");
    if (camera.once && camera.play.empty())
        throw Failure(EXIT_USAGE, "--once says how to play a file: add --play FILE");
    if (!options_.size().even())
        throw Failure(EXIT_USAGE, "the size " + toString(options_.size()) +
                                      " is odd: frames are captured with even "
                                      "sides only");
    const bool scales = options_.command == Command::Record && options_.record.scale;
    if (scales && !levelOf(options_.size()))
        throw Failure(EXIT_USAGE,
                      "--scale works between 320x240, 640x480 and 1280x720: choose one of them with "
                      "--size instead of " +
                          toString(options_.size()));
}

} // namespace cli
} // namespace ostrel
