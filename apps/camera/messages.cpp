#include "apps/camera/messages.h"

#include "apps/common/text.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ostrel::apps::cli {

Messages::Messages() : descriptor_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {}

Messages::~Messages() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

void Messages::error(const std::string& line) {
    write("ostrel-camera: " + printable(line) + "\n");
}

void Messages::say(const std::string& line) {
    if (!quiet_)
        write(printable(line) + "\n");
}

void Messages::write(const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(descriptor_, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return; // there is nowhere left to say it
        done += static_cast<std::size_t>(count);
    }
}

bool Messages::isTerminal() const {
    return isatty(descriptor_) == 1;
}

int Messages::columns() const {
    winsize size = {};
    const bool known = ioctl(descriptor_, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

} // namespace ostrel::apps::cli
