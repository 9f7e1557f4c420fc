// What has come and gone since somebody looked last.
#ifndef OSTREL_PLATFORM_CAMERAS_CAMERA_MONITOR_H
#define OSTREL_PLATFORM_CAMERAS_CAMERA_MONITOR_H

#include "platform/cameras/change_watch.h"
#include "platform/cameras/descriptor_set.h"
#include "platform/cameras/registry.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

struct CameraChange {
    bool added; // else removed
    std::string identifier, name;
};

// Compares the registry's listing with the one that its owner knows of. The watches only tell it when that is
// worth while, so a signal more or less does no harm. Bound to one thread at a time.
//
// A camera counts from when it may be opened until it has left the listing. One that was plugged in anew
// between two looks is told of as both removed and added: the listing has another object for it, and the one
// before is no longer attached.
class CameraMonitor {
public:
    CameraMonitor();
    CameraMonitor(const CameraMonitor&) = delete;
    CameraMonitor& operator=(const CameraMonitor&) = delete;

    // Identifier -> name of those that the owner knows of.
    std::map<std::string, std::string> cameras() const;

    // Readable while changes() would look, or has found something that is not yet accepted; -1 when what has
    // to be watched cannot be, so that changes() looks each time.
    int descriptor() const { return complete_ ? set_.descriptor() : -1; }
    // Waits until changes() says something; false at that time of CLOCK_MONOTONIC in nanoseconds, negative
    // for never, and where there is no descriptor. May take as long as a listing beyond that.
    bool waitUntil(int64_t time);

    // From what the owner knows of to what is there, removals first. The same until it is accepted: the owner
    // now knows.
    const std::vector<CameraChange>& changes();
    void accept() noexcept;

private:
    struct Known {
        std::shared_ptr<Camera> camera;
        std::string name;
        bool fresh = true; // nobody was told of it
    };
    using Listing = std::map<std::string, Known>;

    void look();
    void followProviders();
    bool isQuiet() const;
    Listing list() const;
    void compare();

    DescriptorSet set_;
    ChangeSignal own_;
    const std::unique_ptr<ChangeWatch> owed_ = own_.watch(); // a look, or an answer that was not accepted
    Providers providers_;
    std::vector<std::unique_ptr<ChangeWatch>> watches_;
    bool complete_ = false;   // all is in the set that tells of changes
    bool mustCompare_ = true; // the last look was not finished
    Listing told_, found_;    // found_ is what changes_ leads to
    std::vector<CameraChange> changes_;
};

} // namespace cameras
} // namespace ostrel

#endif
