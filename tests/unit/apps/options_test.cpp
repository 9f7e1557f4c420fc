// The command line: what it understands and what it says when it does not.
#include "apps/camera/command_line.h"
#include "apps/camera/failure.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

using namespace ostrel;
using namespace ostrel::cli;

std::string parse(CommandLine& line, const std::string& text) {
    std::istringstream words("ostrel-camera " + text);
    std::vector<std::string> arguments;
    for (std::string word; words >> word;)
        arguments.push_back(word);
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(argument.c_str());
    return line.parse(static_cast<int>(pointers.size()), pointers.data());
}

Options parsed(const std::string& text) {
    CommandLine line;
    EXPECT_EQ("", parse(line, text));
    return line.options();
}

std::string refusal(const std::string& text) {
    CommandLine line;
    try {
        parse(line, text);
    } catch (const Failure& failure) {
        EXPECT_EQ(EXIT_USAGE, failure.code());
        return failure.what();
    }
    return "accepted";
}

TEST(Options, SharedOptionsStandBeforeOrBehindTheCommand) {
    EXPECT_TRUE(parsed("--test-camera snapshot").camera.testCamera);
    EXPECT_TRUE(parsed("snapshot --test-camera").camera.testCamera);
    EXPECT_EQ("x", parsed("record --camera x").camera.camera);
    EXPECT_TRUE(parsed("list -q").quiet);
    EXPECT_EQ(0.5, parsed("watch --timeout 0.5").camera.timeout);
}

TEST(Options, EveryCommandIsKnown) {
    EXPECT_EQ(Command::List, parsed("list").command);
    EXPECT_EQ(Command::Snapshot, parsed("snapshot").command);
    EXPECT_EQ(Command::Record, parsed("record").command);
    EXPECT_EQ(Command::Watch, parsed("watch").command);
    EXPECT_EQ(Command::Convert, parsed("convert a b").command);
    EXPECT_EQ(Command::Scale, parsed("scale --scale ld a b").command);
}

TEST(Options, RecordTakesItsValues) {
    const Options options =
        parsed("record -o x.yuv --size HD -n 5 -t 1.5 --format YUY2 --scale ld --filter none "
               "--rate 30000/1001");
    EXPECT_EQ("x.yuv", options.record.output);
    EXPECT_EQ("1280x720", toString(options.size()));
    EXPECT_EQ(5U, options.limit.frames.value());
    EXPECT_EQ(1.5, options.limit.seconds.value());
    EXPECT_EQ(Layout::Yuy2, options.record.format->layout);
    EXPECT_EQ(VIDEO_QUALITY_LD, options.record.scale.value());
    EXPECT_EQ(SCALE_METHOD_NONE, options.filter);
    EXPECT_EQ(30000U, options.record.rate->numerator);
}

TEST(Options, DefaultsAreStandardSizeBoxFilterAndNoLimit) {
    const Options options = parsed("record");
    EXPECT_EQ("640x480", toString(options.size()));
    EXPECT_EQ(SCALE_METHOD_BOX, options.filter);
    EXPECT_FALSE(options.limit.frames);
    EXPECT_FALSE(options.limit.seconds);
    EXPECT_EQ(5, options.camera.timeout);
}

TEST(Options, MistakesAreExplainedInOneLine) {
    const struct {
        const char* arguments;
        const char* line;
    } cases[] = {
        {"", "no command is given; 'ostrel-camera --help' explains the usage"},
        {"shoot", "'shoot' is no command; 'ostrel-camera --help' explains the usage"},
        {"--shoot", "'--shoot' is no option; 'ostrel-camera --help' explains the usage"},
        {"snapshot --shoot",
         "The following argument was not expected: --shoot; 'ostrel-camera snapshot --help' "
         "explains the usage"},
        {"snapshot --size 5",
         "--size: '5' is not a frame size: ld, sd, hd or WIDTHxHEIGHT with sides of 1 to 16384 "
         "pixels; 'ostrel-camera snapshot --help' explains the usage"},
        {"record --frames 0",
         "--frames: '0' is not a whole number above 0; 'ostrel-camera record --help' explains "
         "the usage"},
        {"record --frames -1",
         "--frames: '-1' is not a whole number above 0; 'ostrel-camera record --help' explains "
         "the usage"},
        {"record --duration nan",
         "--duration: 'nan' is not a number of seconds above 0; 'ostrel-camera record "
         "--help' explains the usage"},
        {"record --scale xl", "--scale: 'xl' is not one of ld (320x240), sd (640x480), hd (1280x720); "
                              "'ostrel-camera record --help' explains the usage"},
        {"record --filter best",
         "--filter: 'best' is not one of none, bilinear, box; 'ostrel-camera record --help' "
         "explains the usage"},
        {"record --format gif",
         "--format: 'gif' is not one of argb (also argb32, bgra), rgb24, yuy2, i420, y4m, "
         "png; 'ostrel-camera record --help' explains the usage"},
        {"record --rate 0",
         "--rate: '0' is not a rate such as 30, 29.97 or 30000/1001; 'ostrel-camera record "
         "--help' explains the usage"},
        {"watch --timeout x",
         "--timeout: 'x' is not a number of seconds above 0; 'ostrel-camera watch --help' "
         "explains the usage"},
        {"record --once", "--once says how to play a file: add --play FILE"},
        {"record --size 641x480", "the size 641x480 is odd: frames are captured with even sides only"},
        {"record --size 800x600 --scale ld",
         "--scale works between 320x240, 640x480 and 1280x720: choose one of "
         "them with --size instead of 800x600"},
        {"scale a b", "--scale is required; 'ostrel-camera scale --help' explains the usage"},
        {"scale --scale ld --camera c a b",
         "--camera has no meaning here: convert and scale work on files, not on "
         "a camera"},
    };
    for (const auto& mistake : cases)
        EXPECT_EQ(mistake.line, refusal(mistake.arguments)) << mistake.arguments;
}

TEST(Options, HelpOfEveryCommandHasUsageAndExamples) {
    for (const std::string command : {"", "list", "snapshot", "record", "watch", "convert", "scale"}) {
        CommandLine line;
        const std::string help = parse(line, command + " --help");
        EXPECT_NE(std::string::npos, help.find("\nUsage: ostrel-camera ")) << command;
        EXPECT_NE(std::string::npos, help.find("\nExamples:\n  ostrel-camera ")) << command;
        EXPECT_NE(std::string::npos, help.find("\n  -h, --help ")) << command;
        std::istringstream lines(help);
        for (std::string text; std::getline(lines, text);)
            EXPECT_LE(text.size(), 96U) << text;
    }
}

TEST(Options, HelpNamesEveryExitCode) {
    CommandLine line;
    const std::string help = parse(line, "--help");
    for (const ExitCodeMeaning& code : exitCodeMeanings())
        EXPECT_NE(std::string::npos, help.find("\n  " + code.code + " ")) << code.code;
}

TEST(Options, ConvertDoesNotOfferACamera) {
    CommandLine line;
    EXPECT_EQ(std::string::npos, parse(line, "convert --help").find("--camera"));
}

// The examples in the help are commands that this version understands.
TEST(Options, ExamplesInTheHelpParse) {
    for (const std::string command : {"", "list", "snapshot", "record", "watch", "convert", "scale"}) {
        CommandLine line;
        std::istringstream lines(parse(line, command + " --help"));
        bool examples = false;
        for (std::string text; std::getline(lines, text);) {
            if (examples && text.find("  ostrel-camera ") == 0) {
                EXPECT_EQ("accepted", refusal(text.substr(16, text.find_first_of("|>") - 16))) << text;
            }
            examples = examples || text == "Examples:";
        }
        EXPECT_TRUE(examples);
    }
}

} // namespace
