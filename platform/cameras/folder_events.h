// What happens in a folder, for who watches for changes.
#ifndef OSTREL_PLATFORM_CAMERAS_FOLDER_EVENTS_H
#define OSTREL_PLATFORM_CAMERAS_FOLDER_EVENTS_H

#include <functional>
#include <string>
#include <sys/inotify.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {

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

// Entries that are made, removed, renamed, or get new owners, modes and access lists. Bound to one thread at
// a time.
class FolderEvents {
public:
    // Nothing is told where the folder is missing or the system has no watch left.
    FolderEvents(const std::string& folder, std::function<bool(const char* name)> isOfInterest);

    bool watches() const { return watches_; }
    // To be polled for reading, until changed().
    int descriptor() const { return descriptor_.number(); }
    // Whether any event since the call before is of interest; events that were lost are.
    bool changed();

private:
    bool isOfInterest(const inotify_event& event);

    const OwnedDescriptor descriptor_;
    const std::function<bool(const char*)> isName_;
    bool watches_ = false;
};

} // namespace cameras
} // namespace ostrel

#endif
