#import "unit/platform/Foundation/counted.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <regex>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

using namespace ostrel::tests;

namespace {

// What is written to standard error, a piece for each write.
class Pieces {
public:
    Pieces() : original_(dup(STDERR_FILENO)) {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0, sockets_), 0);
        dup2(sockets_[0], STDERR_FILENO);
    }
    ~Pieces() {
        dup2(original_, STDERR_FILENO);
        for (const int descriptor : {original_, sockets_[0], sockets_[1]})
            close(descriptor);
    }
    std::vector<std::string> take() {
        std::vector<std::string> pieces;
        char buffer[4096];
        for (ssize_t size = 0; (size = read(sockets_[1], buffer, sizeof buffer)) > 0;)
            pieces.emplace_back(buffer, static_cast<std::size_t>(size));
        return pieces;
    }

private:
    const int original_;
    int sockets_[2] = {-1, -1};
};

} // namespace

class FoundationLog : public FoundationTest {};

TEST_F(FoundationLog, WritesDateProgramProcessThreadAndTextInOnePiece) {
    Pieces pieces;
    const std::time_t before = std::time(nullptr);
    NSLog(@"%d frames of %@", 3, @"camera");
    const std::vector<std::string> written = pieces.take();
    ASSERT_EQ(written.size(), 1u);
    const std::regex shape("(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d)\\.\\d{3} "
                           "test_foundation\\[(\\d+):(\\d+)\\] 3 frames of camera\n");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(written[0], parts, shape)) << written[0];
    std::tm date = {};
    strptime(parts.str(1).c_str(), "%Y-%m-%d %H:%M:%S", &date);
    date.tm_isdst = -1;
    EXPECT_NEAR(static_cast<double>(std::mktime(&date)), static_cast<double>(before), 2);
    EXPECT_EQ(parts.str(2), std::to_string(getpid()));
    EXPECT_EQ(parts.str(3), std::to_string(syscall(SYS_gettid)));
}

TEST_F(FoundationLog, TellsTheThread) {
    Pieces pieces;
    long thread = 0;
    std::thread([&thread] {
        NSAutoreleasePool* const inner = [[NSAutoreleasePool alloc] init];
        thread = syscall(SYS_gettid);
        NSLog(@"here");
        [inner release];
    }).join();
    const std::vector<std::string> written = pieces.take();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_NE(written[0].find(":" + std::to_string(thread) + "] here\n"), std::string::npos) << written[0];
}

TEST_F(FoundationLog, EndsEachTextWithOneLineBreak) {
    Pieces pieces;
    NSLog(@"with its own\n");
    NSLog(@"");
    const std::vector<std::string> written = pieces.take();
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(written[0].substr(written[0].find(']')), "] with its own\n");
    EXPECT_EQ(written[1].substr(written[1].find(']')), "] \n");
}
