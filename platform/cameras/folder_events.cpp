#include "platform/cameras/folder_events.h"

namespace ostrel {
namespace cameras {

FolderEvents::FolderEvents(const std::string& folder, std::function<bool(const char*)> isOfInterest)
    : descriptor_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)), isName_(std::move(isOfInterest)) {
    const uint32_t events = IN_CREATE | IN_DELETE | IN_ATTRIB | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR;
    watches_ = ::inotify_add_watch(descriptor_.number(), folder.c_str(), events) >= 0;
}

bool FolderEvents::changed() {
    bool any = false;
    alignas(inotify_event) char buffer[4096];
    ssize_t bytes = 0;
    while ((bytes = ::read(descriptor_.number(), buffer, sizeof(buffer))) > 0) {
        for (ssize_t at = 0; at < bytes;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            any = isOfInterest(*event) || any;
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
    return any;
}

bool FolderEvents::isOfInterest(const inotify_event& event) {
    if (event.mask & IN_IGNORED) // the folder has gone
        watches_ = false;
    const bool lost = event.mask & (IN_Q_OVERFLOW | IN_IGNORED);
    return lost || (event.len > 0 && isName_(event.name));
}

} // namespace cameras
} // namespace ostrel
