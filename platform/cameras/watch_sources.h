// What tells a watch that something may have changed.
#ifndef OSTREL_PLATFORM_CAMERAS_WATCH_SOURCES_H
#define OSTREL_PLATFORM_CAMERAS_WATCH_SOURCES_H

#include <functional>
#include <string>
#include <sys/inotify.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {

// Each has a descriptor, to be polled for reading until changed(), and is bound to one thread at a time.

class OwnedDescriptor {
public:
    explicit OwnedDescriptor(int number) : number_(number) {}
    ~OwnedDescriptor() {
        if (number_ >= 0)
            ::close(number_);
    }
    OwnedDescriptor(const OwnedDescriptor&) = delete;
    OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;
    int number() const { return number_; }

private:
    const int number_;
};

// Entries of a folder that are made, removed, renamed, or get new owners, modes and access lists.
class FolderEvents {
public:
    // Nothing is told where the folder is missing or the system has no watch left.
    FolderEvents(const std::string& folder, std::function<bool(const char* name)> isOfInterest);

    bool watches() const { return watches_; }
    int descriptor() const { return descriptor_.number(); }
    // Whether any event since the call before is of interest; events that were lost are.
    bool changed();

private:
    bool isOfInterest(const inotify_event& event);

    const OwnedDescriptor descriptor_;
    const std::function<bool(const char*)> isName_;
    bool watches_ = false;
};

// Once a second, while it is switched on; at first it is not.
class Looks {
public:
    Looks();

    int descriptor() const { return descriptor_.number(); }
    bool changed();
    void switchOn(bool on);

private:
    const OwnedDescriptor descriptor_;
    bool on_ = false;
};

} // namespace cameras
} // namespace ostrel

#endif
