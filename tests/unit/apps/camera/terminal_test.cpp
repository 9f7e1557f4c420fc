// What only happens on a terminal: the progress bar, and refusing to fill the screen with frames.
#include "program.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct TerminalOutcome {
    int code = -1;
    std::string screen; // all that was written to the terminal
};

// Runs the program with a terminal of 100 columns as its three standard streams.
TerminalOutcome runOnTerminal(const QString& folder, std::vector<std::string> arguments) {
    TerminalOutcome outcome;
    winsize size = {};
    size.ws_row = 25;
    size.ws_col = 100;
    int terminal = -1;
    const QByteArray path = folder.toLocal8Bit();
    std::vector<char*> argv = {const_cast<char*>(OSTREL_CAMERA_PROGRAM)};
    for (std::string& argument : arguments)
        argv.push_back(&argument[0]);
    argv.push_back(nullptr);
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        if (chdir(path.constData()) == 0)
            execv(argv[0], argv.data());
        _exit(127);
    }
    char bytes[4096];
    ssize_t count;
    // The end of the child shows as an error of input.
    while ((count = read(terminal, bytes, sizeof bytes)) > 0 || (count < 0 && errno == EINTR))
        outcome.screen.append(bytes, static_cast<std::size_t>(count > 0 ? count : 0));
    int status = 0;
    waitpid(child, &status, 0);
    close(terminal);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

TEST(Terminal, RecordShowsAProgressBarThatEndsWithALine) {
    ostrel::tests::Folder folder;
    const TerminalOutcome outcome =
        runOnTerminal(folder.path(), {"record", "--test-camera", "--size", "ld", "-n", "45"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_NE(outcome.screen.find("\r\033[K[#"), std::string::npos) << outcome.screen;
    EXPECT_NE(outcome.screen.find("%  "), std::string::npos);
    EXPECT_NE(outcome.screen.find("\r\033[Krecorded 45 frames in "), std::string::npos) << outcome.screen;
}

TEST(Terminal, QuietMeansNoBar) {
    ostrel::tests::Folder folder;
    const TerminalOutcome outcome =
        runOnTerminal(folder.path(), {"record", "-q", "--test-camera", "--size", "ld", "-n", "30"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.screen, "");
}

TEST(Terminal, FramesAreNotPouredOntoTheScreen) {
    EXPECT_EQ(runOnTerminal("/", {"record", "--test-camera", "-o", "-"}).screen,
              "ostrel-camera: video is nothing for a terminal: give a file with -o, or redirect\r\n");
    EXPECT_EQ(runOnTerminal("/", {"snapshot", "--test-camera", "-o", "-"}).screen,
              "ostrel-camera: a PNG picture is nothing for a terminal: give a file with -o, or redirect\r\n");
    EXPECT_EQ(runOnTerminal("/", {"snapshot", "--test-camera", "-o", "-"}).code, 2);
}

TEST(Terminal, WatchRewritesOneLine) {
    const TerminalOutcome outcome =
        runOnTerminal("/", {"watch", "-q", "--test-camera", "--size", "ld", "-n", "5"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.screen.find("\r\033[K"), 0U) << outcome.screen;
    EXPECT_NE(outcome.screen.find("  taken 5  "), std::string::npos);
    EXPECT_EQ(outcome.screen.find('\n'), outcome.screen.size() - 1);
}

} // namespace
