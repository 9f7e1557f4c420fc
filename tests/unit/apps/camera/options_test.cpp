// The command line: what it understands and what it says when it does not.
#include "apps/camera/command_line.h"
#include "apps/common/failure.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

using namespace ostrel;
using namespace ostrel::apps;
using namespace ostrel::apps::cli;

Request parse(const std::string& text) {
    std::istringstream words("ostrel-camera " + text);
    std::vector<std::string> arguments;
    for (std::string word; words >> word;)
        arguments.push_back(word);
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(argument.c_str());
    return parseCommandLine(static_cast<int>(pointers.size()), pointers.data());
}

Options parsed(const std::string& text) {
    return parse(text).options.value();
}

std::string refusal(const std::string& text) {
    try {
        parse(text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), EXIT_USAGE);
        return failure.what();
    }
    return "accepted";
}

TEST(Options, SharedOptionsStandBeforeOrBehindTheCommand) {
    EXPECT_TRUE(parsed("--test-camera snapshot").camera.testCamera);
    EXPECT_TRUE(parsed("snapshot --test-camera").camera.testCamera);
    EXPECT_EQ(parsed("record --camera x").camera.camera, "x");
    EXPECT_EQ(parsed("record -c x").camera.camera, "x");
    EXPECT_TRUE(parsed("list -q").quiet);
    EXPECT_EQ(parsed("watch --timeout 0.5").camera.timeout, 0.5);
}

TEST(Options, EveryCommandIsKnown) {
    EXPECT_EQ(parsed("list").command, Command::List);
    EXPECT_EQ(parsed("snapshot").command, Command::Snapshot);
    EXPECT_EQ(parsed("record").command, Command::Record);
    EXPECT_EQ(parsed("watch").command, Command::Watch);
    EXPECT_EQ(parsed("convert a b").command, Command::Convert);
    EXPECT_EQ(parsed("scale --scale ld a b").command, Command::Scale);
}

TEST(Options, ControlsTakesSettingsAndFiles) {
    const Options options = parsed("controls -c x brightness=1 focus_auto=off --save a --load b --json");
    EXPECT_EQ(options.command, Command::Controls);
    EXPECT_EQ(options.controls.settings, (std::vector<std::string>{"brightness=1", "focus_auto=off"}));
    EXPECT_EQ(options.controls.save, "a");
    EXPECT_EQ(options.controls.load, "b");
    EXPECT_TRUE(options.controls.json);
    EXPECT_EQ(options.camera.camera, "x");
}

TEST(Options, RecordTakesItsValues) {
    const Options options =
        parsed("record -o x.yuv --size HD -n 5 -t 1.5 --format YUY2 --scale ld --filter none "
               "--rate 30000/1001");
    EXPECT_EQ(options.record.output, "x.yuv");
    EXPECT_EQ(toString(options.size()), "1280x720");
    EXPECT_EQ(options.limit.frames.value(), 5U);
    EXPECT_EQ(options.limit.seconds.value(), 1.5);
    EXPECT_FALSE(options.record.format->matroska);
    EXPECT_EQ(options.record.format->frames.layout, Layout::Yuy2);
    EXPECT_EQ(options.record.scale.value(), VIDEO_QUALITY_LD);
    EXPECT_EQ(options.filter, SCALE_METHOD_NONE);
    EXPECT_EQ(options.record.rate->numerator, 30000U);
}

TEST(Options, AMatroskaFileIsAskedForByNameOrBySuffix) {
    EXPECT_TRUE(parsed("record --format MKV --quality 50 -").record.format->matroska);
    EXPECT_EQ(parsed("record --format MKV --quality 50 -").record.quality.value(), 50);
    EXPECT_TRUE(recordingKindOfPath("a/b.Mkv")->matroska);
    EXPECT_FALSE(recordingKindOfPath("a.mkv.y4m")->matroska);
    EXPECT_FALSE(recordingKindOfPath("mkv"));
}

TEST(Options, AModeSaysHowLargeFramesAreUnlessASizeIsGiven) {
    for (const std::string command : {"snapshot", "record", "watch"}) {
        EXPECT_EQ(toString(parsed(command + " --mode MJPG:1280x720@60").size()), "1280x720");
        EXPECT_EQ(toString(parsed(command + " --mode hd --size ld").size()), "320x240");
        EXPECT_EQ(toString(parsed(command + " --mode YUYV@15").size()), "640x480");
        EXPECT_FALSE(parsed(command).mode);
    }
    EXPECT_EQ(parsed("watch --mode MJPG").mode->format, "MJPG");
    EXPECT_EQ(refusal("watch --mode MJPG:fast").find("--mode: 'MJPG:fast' is not a mode: FORMAT:SIZE@RATE"),
              0U);
    EXPECT_NE(refusal("list --mode hd"), "accepted");
    EXPECT_TRUE(parsed("list --modes").list.modes);
}

TEST(Options, DefaultsAreStandardSizeBoxFilterAndNoLimit) {
    const Options options = parsed("record");
    EXPECT_EQ(toString(options.size()), "640x480");
    EXPECT_EQ(options.filter, SCALE_METHOD_BOX);
    EXPECT_FALSE(options.limit.frames);
    EXPECT_FALSE(options.limit.seconds);
    EXPECT_FALSE(options.limit.reconnect);
    EXPECT_EQ(options.camera.timeout, 5);
}

TEST(Options, TheOutputMayStandWithoutItsName) {
    EXPECT_EQ(parsed("snapshot out.png").snapshot.output, "out.png");
    EXPECT_EQ(parsed("-c x snapshot -s hd out.png").snapshot.output, "out.png");
    EXPECT_EQ(parsed("record --test-camera -t 2 clip.y4m -q").record.output, "clip.y4m");
    EXPECT_EQ(parsed("record -").record.output, "-");
}

TEST(Options, UsualWritingsOfValuesAreUnderstood) {
    EXPECT_EQ(toString(parsed("snapshot -s 720p").size()), "1280x720");
    EXPECT_EQ(toString(parsed("snapshot --size 641x481").size()), "641x481");
    EXPECT_EQ(parsed("record -t 2s").limit.seconds.value(), 2);
    EXPECT_EQ(parsed("record -t 500ms").limit.seconds.value(), 0.5);
    EXPECT_EQ(parsed("record -t 1.5m").limit.seconds.value(), 90);
    EXPECT_EQ(parsed("record --reconnect 1m").limit.reconnect.value(), 60);
    EXPECT_EQ(parsed("watch --reconnect 0.5").limit.reconnect.value(), 0.5);
    EXPECT_EQ(parsed("record --scale 1280x720").record.scale.value(), VIDEO_QUALITY_HD);
    EXPECT_EQ(parsed("scale --scale 720P a b").scaleTo.value(), VIDEO_QUALITY_HD);
}

TEST(Options, WithoutArgumentsTheUsageIsShownAsAMistake) {
    EXPECT_EQ(parse("").exitCode, EXIT_USAGE);
    EXPECT_EQ(parse("").answer, parse("--help").answer);
}

TEST(Options, HelpAndVersionHaveTheirUsualOtherNames) {
    EXPECT_EQ(parse("help snapshot").answer, parse("snapshot --help").answer);
    EXPECT_EQ(parse("help").answer, parse("--help").answer);
    EXPECT_EQ(parse("-V").answer, parse("--version").answer);
}

TEST(Options, MistakesAreExplainedInOneLine) {
    const struct {
        const char* arguments;
        const char* line;
    } cases[] = {
        {"-q", "no command is given; 'ostrel-camera --help' explains the usage"},
        {"xyzzy", "'xyzzy' is no command; 'ostrel-camera --help' explains the usage"},
        {"--shoot", "'--shoot' is no option; 'ostrel-camera --help' explains the usage"},
        {"ls", "'ls' is no command; did you mean 'list'? 'ostrel-camera --help' explains the usage"},
        {"sanpshot --size hd",
         "'sanpshot' is no command; did you mean 'snapshot'? 'ostrel-camera --help' explains the usage"},
        {"record --fps 15 a.y4m", "'--fps' is no option of record; did you mean '--rate'? 'ostrel-camera "
                                  "record --help' explains the usage"},
        {"snapshot --siez hd", "'--siez' is no option of snapshot; did you mean '--size'? 'ostrel-camera "
                               "snapshot --help' explains the "
                               "usage"},
        {"scale --shoot a b",
         "'--shoot' is no option of scale; 'ostrel-camera scale --help' explains the usage"},
        {"snapshot a.png b.png",
         "'b.png' is one argument too many; 'ostrel-camera snapshot --help' explains the usage"},
        {"snapshot --size 5",
         "--size: '5' is not a frame size: WIDTHxHEIGHT, ld (320x240), sd (640x480), hd (1280x720) or 1080p; "
         "'ostrel-camera snapshot --help' explains the usage"},
        {"record --frames 0",
         "--frames: '0' is not a whole number above 0; 'ostrel-camera record --help' explains "
         "the usage"},
        {"record --frames -1",
         "--frames: '-1' is not a whole number above 0; 'ostrel-camera record --help' explains "
         "the usage"},
        {"record --duration nan", "--duration: 'nan' is not a time above 0 in seconds, or such as 500ms, 2s, "
                                  "5m or 1h; 'ostrel-camera record "
                                  "--help' explains the usage"},
        {"record --scale xl", "--scale: 'xl' is not one of ld (320x240), sd (640x480), hd (1280x720); "
                              "'ostrel-camera record --help' explains the usage"},
        {"record --filter best",
         "--filter: 'best' is not one of none, bilinear, box; 'ostrel-camera record --help' "
         "explains the usage"},
        {"record --format gif", "--format: 'gif' is not one of mkv, y4m, i420, yuy2, rgb24, argb (also "
                                "argb32, bgra); 'ostrel-camera record --help' explains the usage"},
        {"record --quality 0", "--quality: '0' is not a quality from 1 to 100; 'ostrel-camera record --help' "
                               "explains the usage"},
        {"convert --to mkv a.y4m b", "--to: 'mkv' is not one of png, y4m, i420, yuy2, rgb24, argb (also "
                                     "argb32, bgra); 'ostrel-camera convert --help' explains the usage"},
        {"record --rate 0", "--rate: '0' is not a rate from 0.001 to 1000 such as 30, 29.97 or 30000/1001; "
                            "'ostrel-camera record "
                            "--help' explains the usage"},
        {"watch --timeout x", "--timeout: 'x' is not a time above 0 in seconds, or such as 500ms, 2s, 5m or "
                              "1h; 'ostrel-camera watch --help' "
                              "explains the usage"},
        {"record --once", "--once says how to play a file: add --play FILE"},
        {"record --size 800x600 --scale ld",
         "--scale works between 320x240, 640x480 and 1280x720: choose one of "
         "them with --size instead of 800x600"},
        {"scale a b", "--scale is required; 'ostrel-camera scale --help' explains the usage"},
        {"scale --scale ld --camera c a b",
         "--camera has no meaning here: convert and scale work on files, not on "
         "a camera"},
    };
    for (const auto& mistake : cases)
        EXPECT_EQ(refusal(mistake.arguments), mistake.line) << mistake.arguments;
}

TEST(Options, HelpOfEveryCommandHasUsageAndExamples) {
    for (const std::string command : {"", "list", "snapshot", "record", "watch", "convert", "scale"}) {
        const std::string help = parse(command + " --help").answer;
        EXPECT_NE(help.find("\nUsage: ostrel-camera "), std::string::npos) << command;
        EXPECT_NE(help.find("\nExamples:\n  ostrel-camera "), std::string::npos) << command;
        EXPECT_NE(help.find("\n  -h, --help "), std::string::npos) << command;
        std::istringstream lines(help);
        for (std::string text; std::getline(lines, text);)
            EXPECT_LE(text.size(), 96U) << text;
    }
}

TEST(Options, HelpNamesEveryExitCode) {
    const std::string help = parse("--help").answer;
    for (const std::string code : {"0", "1", "2", "3", "4", "5", "6", "7", "128+N"})
        EXPECT_NE(help.find("\n  " + code + " "), std::string::npos) << code;
}

TEST(Options, ConvertDoesNotOfferACamera) {
    EXPECT_EQ(parse("convert --help").answer.find("--camera"), std::string::npos);
}

// The examples in the help are commands that this version understands.
TEST(Options, ExamplesInTheHelpParse) {
    for (const std::string command : {"", "list", "snapshot", "record", "watch", "convert", "scale"}) {
        std::istringstream lines(parse(command + " --help").answer);
        bool examples = false;
        for (std::string text; std::getline(lines, text);) {
            if (examples && text.find("  ostrel-camera ") == 0) {
                EXPECT_EQ(refusal(text.substr(16, text.find_first_of("|>") - 16)), "accepted") << text;
            }
            examples = examples || text == "Examples:";
        }
        EXPECT_TRUE(examples);
    }
}

} // namespace
