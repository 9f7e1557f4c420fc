#include "apps/camera/input_file.h"

#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

const std::size_t READ_AHEAD = 65536;

} // namespace

InputFile::InputFile(const std::string& path)
    : displayName_(path == "-" ? "standard input" : quoted(path)), buffer_(READ_AHEAD) {
    descriptor_ = path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)
                              : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0)
        throw Failure(EXIT_FILE, "cannot read " + displayName_ + ": " + std::strerror(errno));
    // Standard input may be a file that somebody else has read a part of.
    if (path != "-" && S_ISREG(status.st_mode))
        size_ = static_cast<uint64_t>(status.st_size);
}

InputFile::~InputFile() {
    close(descriptor_);
}

std::size_t InputFile::fill(char* bytes, std::size_t size) {
    while (true) {
        const ssize_t count = ::read(descriptor_, bytes, size);
        if (count >= 0)
            return static_cast<std::size_t>(count);
        if (errno == EAGAIN) { // a pipe that somebody else made non-blocking
            pollfd ready = {descriptor_, POLLIN, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            throw Failure(EXIT_FILE, "cannot read " + displayName_ + ": " + std::strerror(errno));
        }
    }
}

std::size_t InputFile::read(void* bytes, std::size_t size) {
    char* to = static_cast<char*>(bytes);
    std::size_t done = std::min(size, end_ - begin_);
    std::copy_n(buffer_.data() + begin_, done, to);
    begin_ += done;
    while (done < size) {
        const std::size_t count = fill(to + done, size - done);
        if (count == 0)
            break;
        done += count;
    }
    position_ += done;
    return done;
}

std::optional<std::string> InputFile::readLine(std::size_t limit) {
    std::string line;
    while (line.size() < limit) {
        if (begin_ == end_) {
            begin_ = 0;
            end_ = fill(buffer_.data(), buffer_.size());
            if (end_ == 0)
                return std::nullopt;
        }
        const char letter = buffer_[begin_++];
        ++position_;
        if (letter == '\n')
            return line;
        line += letter;
    }
    return std::nullopt;
}

bool sameFile(const std::string& a, const std::string& b) {
    struct stat first = {};
    struct stat second = {};
    return a != "-" && b != "-" && stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
           S_ISREG(first.st_mode) && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace ostrel::apps::cli
