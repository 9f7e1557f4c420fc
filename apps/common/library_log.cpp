#include "apps/common/library_log.h"

#include <fcntl.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#include <cstdint>
#include <sanitizer/common_interface_defs.h>
#endif

namespace ostrel::apps {

namespace {

// Reports of a sanitizer build must not vanish with the library's lines.
void keepReportsVisible(int descriptor) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<intptr_t>(descriptor)));
#else
    (void)descriptor;
#endif
}

} // namespace

HiddenLibraryLog::HiddenLibraryLog(int visible) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0)
        return; // then the lines are seen; nothing else is lost
    before_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (before_ >= 0) {
        keepReportsVisible(visible);
        dup2(nowhere, STDERR_FILENO);
    }
    close(nowhere);
}

HiddenLibraryLog::~HiddenLibraryLog() {
    if (before_ < 0)
        return;
    dup2(before_, STDERR_FILENO);
    close(before_);
    keepReportsVisible(STDERR_FILENO);
}

} // namespace ostrel::apps
