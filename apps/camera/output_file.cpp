#include "apps/camera/output_file.h"

#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

// Where a chain of symbolic links ends, so that replacing the file leaves the links alone.
std::string resolved(const std::string& path) {
    char* real = realpath(path.c_str(), nullptr);
    if (!real)
        return path;
    const std::string result = real;
    std::free(real);
    return result;
}

mode_t defaultFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

} // namespace

OutputFile::OutputFile(const std::string& path, Mode mode)
    : path_(path), displayName_(path == "-" ? "standard output" : quoted(path)), whole_(mode == Mode::Whole) {
    struct stat status = {};
    const bool exists = path_ != "-" && stat(path_.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode))
        fail(EISDIR);
    // A pipe or a device cannot be replaced by another file.
    if (whole_ && path_ != "-" && (!exists || S_ISREG(status.st_mode)))
        openWhole();
    else
        openStream();
}

void OutputFile::openStream() {
    if (path_ == "-") {
        descriptor_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    } else {
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        created_ = descriptor_ >= 0;
        if (!created_)
            descriptor_ = open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    }
    if (descriptor_ < 0)
        fail(errno);
    struct stat status = {};
    // Standard output may be a file to which others have written before: it is only appended to.
    regular_ = path_ != "-" && fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
}

void OutputFile::openWhole() {
    const std::string target = resolved(path_);
    if (access(target.c_str(), F_OK) == 0 && access(target.c_str(), W_OK) != 0)
        fail(errno);
    temporary_ = target + ".XXXXXX";
    descriptor_ = mkostemp(&temporary_[0], O_CLOEXEC);
    if (descriptor_ < 0) {
        temporary_.clear();
        fail(errno);
    }
    // mkostemp makes files that only their owner reads. A file that is replaced keeps its mode.
    struct stat status = {};
    fchmod(descriptor_, stat(target.c_str(), &status) == 0 ? status.st_mode & 07777 : defaultFileMode());
    regular_ = true;
    path_ = target;
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0)
        close(descriptor_);
    if (!temporary_.empty())
        unlink(temporary_.c_str());
    else if (created_ && written_ == 0)
        unlink(path_.c_str());
}

void OutputFile::write(const void* bytes, std::size_t size) {
    if (written_ == 0 && regular_ && ftruncate(descriptor_, 0) != 0)
        fail(errno);
    const char* from = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t count = ::write(descriptor_, from, size);
        if (count < 0 && errno == EAGAIN) { // a pipe that somebody else made non-blocking
            pollfd ready = {descriptor_, POLLOUT, 0};
            poll(&ready, 1, -1);
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail(errno);
        from += count;
        size -= static_cast<std::size_t>(count);
        written_ += static_cast<uint64_t>(count);
    }
}

bool OutputFile::rewrite(uint64_t offset, const std::string& bytes) {
    if (!regular_)
        return false;
    const ssize_t count = pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count != static_cast<ssize_t>(bytes.size()))
        fail(count < 0 ? errno : ENOSPC);
    return true;
}

bool OutputFile::cutTo(uint64_t size) {
    const off_t end = static_cast<off_t>(size);
    if (!regular_ || ftruncate(descriptor_, end) != 0 || lseek(descriptor_, end, SEEK_SET) != end)
        return false;
    written_ = size;
    return true;
}

void OutputFile::commit() {
    const int descriptor = descriptor_;
    // Network file systems report a full disk only here.
    if (!temporary_.empty() && fsync(descriptor) != 0)
        fail(errno);
    descriptor_ = -1;
    if (close(descriptor) != 0 && errno != EINTR)
        fail(errno);
    if (temporary_.empty())
        return;
    if (rename(temporary_.c_str(), path_.c_str()) != 0)
        fail(errno);
    temporary_.clear();
}

void OutputFile::fail(int error) const {
    std::string hint;
    if (error == EPIPE)
        hint = ": whatever read it has ended";
    else if (error == EBADF && path_ == "-")
        hint = ": it is closed";
    else
        hint = std::string(": ") + std::strerror(error);
    throw Failure(EXIT_FILE, "cannot write " + displayName_ + hint);
}

} // namespace ostrel::apps::cli
