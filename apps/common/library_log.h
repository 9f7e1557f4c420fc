// Keeps the library's own lines on standard error away from the user.
#ifndef OSTREL_APPS_COMMON_LIBRARY_LOG_H
#define OSTREL_APPS_COMMON_LIBRARY_LOG_H

namespace ostrel::apps {

// While it lives, what is written to file descriptor 2, by any thread, is lost. One object at a time; bound
// to one thread.
class HiddenLibraryLog {
public:
    // visible: a descriptor that stays what it is, for reports of sanitizers.
    explicit HiddenLibraryLog(int visible);
    ~HiddenLibraryLog(); // gives standard error back
    HiddenLibraryLog(const HiddenLibraryLog&) = delete;
    HiddenLibraryLog& operator=(const HiddenLibraryLog&) = delete;

private:
    int before_ = -1; // what descriptor 2 was; -1 when nothing is hidden
};

} // namespace ostrel::apps

#endif
