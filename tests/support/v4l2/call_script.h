// What happens to calls before the driver sees them, and a count of those that were made.
#ifndef OSTREL_TESTS_SUPPORT_V4L2_CALL_SCRIPT_H
#define OSTREL_TESTS_SUPPORT_V4L2_CALL_SCRIPT_H

#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel::support {

// The names of calls: the ioctls' own, and of those that are none.
const unsigned long ANY_CALL = 0; // but poll()
const unsigned long OPEN = 1, MMAP = 2, POLL = 3, MUNMAP = 4, CLOSE = 5;

const int FOREVER = -1;

struct CallRule {
    unsigned long call = ANY_CALL;
    int error = 0;         // != 0: what the call fails with, without reaching the driver
    int times = 1;         // so many calls are hit
    int after = 0;         // once so many went well
    std::string path = {}; // of this node; empty: of any
    // Called first, by the thread that makes the call and without a lock but the node's own: it may take
    // long, wait, or unplug the device.
    std::function<void()> before = {};
};

// Thread-safe.
class CallScript {
public:
    void add(const CallRule& rule);
    // Every call counts, and is a turn of every rule that fits. Runs what comes before the call; returns its
    // errno, 0 when it may go on.
    int enter(unsigned long call, const std::string& path);

    int calls(unsigned long call) const; // on all nodes
    int calls(const std::string& path, unsigned long call) const;
    int calls(const std::string& path) const;

private:
    bool hits(CallRule& rule, unsigned long call, const std::string& path);

    mutable std::mutex mutex_;
    std::list<CallRule> rules_;
    std::map<std::string, std::map<unsigned long, int>> calls_;
};

} // namespace ostrel::support

#endif
