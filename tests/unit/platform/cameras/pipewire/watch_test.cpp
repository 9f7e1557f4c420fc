// What tells that cameras come and go, and the daemon with them; and what it costs.
#include "unit/platform/cameras/pipewire/pipewire_test.h"

#include "platform/cameras/pipewire/daemon.h"
#include "support/process_figures.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrel::tests {

using cameras::ChangeWatch;
using cameras::pipewire::Remote;
using support::PipeWireCamera;

class PipeWireWatch : public PipeWireTest {
protected:
    static bool isReadable(const ChangeWatch& watch, int milliseconds = 0) {
        pollfd descriptor = {watch.descriptor(), POLLIN, 0};
        return ::poll(&descriptor, 1, milliseconds) == 1;
    }
    // As a monitor does: what was told is listed until nothing more is told.
    Words settled(ChangeWatch& watch) {
        Words all;
        do {
            watch.changed();
            all = names();
        } while (isReadable(watch));
        return all;
    }
    // Waits until the listing is this, and lists only when told to.
    bool comesTo(ChangeWatch& watch, const Words& expected) {
        const auto limit = std::chrono::steady_clock::now() + support::HANG;
        while (std::chrono::steady_clock::now() < limit)
            if (isReadable(watch, 1000) && watch.changed() && names() == expected)
                return true;
        return false;
    }
};

TEST_F(PipeWireWatch, ACameraThatComesAndLeavesIsToldOfAndBetweenThemNothingIs) {
    const PipeWireCamera one("one");
    const auto watch = provider->watch();
    EXPECT_EQ(settled(*watch), Words({"one"}));
    {
        const PipeWireCamera other("other");
        EXPECT_TRUE(comesTo(*watch, {"one", "other"}));
        settled(*watch);
        EXPECT_FALSE(isReadable(*watch, 1500)) << "longer than from look to look";
        EXPECT_FALSE(watch->changed());
    }
    EXPECT_TRUE(comesTo(*watch, {"one"}));
}

TEST_F(PipeWireWatch, EveryWatchIsTold) {
    const auto first = provider->watch(), second = provider->watch();
    settled(*first);
    settled(*second);
    const PipeWireCamera one("one");
    EXPECT_TRUE(comesTo(*first, {"one"}));
    EXPECT_TRUE(comesTo(*second, {"one"}));
}

TEST_F(PipeWireWatch, ADaemonThatEndsTakesItsCamerasAndOneThatComesBringsItsOwn) {
    for (const int signal : {SIGTERM, SIGKILL}) { // the latter leaves its socket behind
        std::unique_ptr<ChangeWatch> watch;
        {
            const PipeWireCamera one("one");
            watch = provider->watch();
            EXPECT_EQ(settled(*watch), Words({"one"}));
            session.daemon().end(signal);
            EXPECT_TRUE(comesTo(*watch, {}));
        }
        session.startDaemon();
        session.startManager();
        const PipeWireCamera again("again");
        EXPECT_TRUE(comesTo(*watch, {"again"}));
        settled(*watch);
    }
}

TEST_F(PipeWireWatch, WithoutADaemonNothingRunsAndOneThatComesIsNoticed) {
    session.daemon().end(SIGTERM);
    session.manager().end(SIGKILL);
    const auto before = support::processFigures();
    const auto watch = provider->watch();
    EXPECT_TRUE(settled(*watch).empty());
    EXPECT_LE(support::processFigures().threads, before.threads); // those of before may be ending
    EXPECT_FALSE(isReadable(*watch, 1500)) << "there is nothing to look at";
    session.startDaemon();
    const PipeWireCamera one("one");
    EXPECT_TRUE(comesTo(*watch, {"one"}));
}

TEST_F(PipeWireWatch, FoldersOnTheWayToTheSocketMayComeLater) {
    namespace fs = std::filesystem;
    session.daemon().end(SIGTERM);
    session.manager().end(SIGKILL);
    const std::string folder = fs::path(session.socket()).parent_path().string() + "/later/still";
    ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    const auto watch = provider->watch();
    settled(*watch);
    EXPECT_FALSE(isReadable(*watch, 1500));
    fs::create_directory(fs::path(folder).parent_path());
    EXPECT_TRUE(isReadable(*watch)) << "the first of them";
    EXPECT_FALSE(watch->changed()) << "but that is no camera";
    fs::create_directory(folder);
    session.startDaemon();
    const PipeWireCamera one("one");
    EXPECT_TRUE(comesTo(*watch, {"one"}));
}

TEST_F(PipeWireWatch, ASocketAtWhichNobodyAnswersIsLookedAtOnceASecond) {
    session.daemon().end(SIGKILL);
    session.manager().end(SIGKILL);
    ASSERT_TRUE(std::filesystem::exists(session.socket()));
    const auto watch = provider->watch();
    settled(*watch);
    EXPECT_TRUE(isReadable(*watch, 30000));
    EXPECT_FALSE(watch->changed()) << "and nothing else is listed for it";
    EXPECT_FALSE(isReadable(*watch));
}

TEST_F(PipeWireWatch, ADaemonThatAnswersAgainIsAskedAgain) {
    const PipeWireCamera one("one");
    const auto watch = provider->watch();
    EXPECT_EQ(settled(*watch), Words({"one"}));
    Remote::timeout = 100000000;
    session.daemon().kill(SIGSTOP);
    EXPECT_TRUE(names().empty());
    EXPECT_TRUE(watch->changed()) << "that its cameras are left out is a change";
    session.daemon().kill(SIGCONT);
    Remote::timeout = 30000000000;
    EXPECT_TRUE(comesTo(*watch, {"one"}));
}

TEST_F(PipeWireWatch, AConnectionThatIsHandedOverIsTheOneThatIsWatched) {
    const auto watch = provider->watch();
    settled(*watch);
    const int descriptor = cameras::pipewire::connectToDaemon();
    const std::string folder = std::filesystem::path(session.socket()).parent_path().string();
    ::setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
    ASSERT_EQ(remote->handOver(descriptor, INT64_MAX / 2), 0);
    EXPECT_TRUE(isReadable(*watch));
    EXPECT_TRUE(watch->changed());
    settled(*watch);
    ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    const PipeWireCamera one("one");
    EXPECT_TRUE(comesTo(*watch, {"one"}));
    session.daemon().end(SIGKILL);
    EXPECT_TRUE(comesTo(*watch, {}));
    settled(*watch);
    EXPECT_FALSE(isReadable(*watch, 1500)) << "it cannot come back";
}

TEST_F(PipeWireWatch, AChildOfThisProcessCanLetGoOfIt) {
    const PipeWireCamera one("one");
    auto watch = provider->watch();
    settled(*watch);
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(30);
        watch.reset();
        ::_exit(0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(watch->changed());
    const PipeWireCamera other("other");
    EXPECT_TRUE(comesTo(*watch, {"one", "other"})) << "it goes on here";
}

TEST_F(PipeWireWatch, AHundredWatchesLeaveNothingBehind) {
    const PipeWireCamera one("one");
    provider->list();
    provider->watch();
    const auto before = support::processFigures();
    for (int i = 0; i < 100; ++i) {
        const auto watch = provider->watch();
        if (i % 2)
            settled(*watch);
    }
    EXPECT_EQ(support::processFigures().descriptors, before.descriptors);
    EXPECT_TRUE(support::threadsComeDownTo(before.threads));
}

} // namespace ostrel::tests
