#include "apps/common/library_log.h"

#include <charconv>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
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

void LibraryLogReader::feed(const std::string& bytes) {
    partial_ += bytes;
    std::size_t start = 0;
    for (std::size_t end; (end = partial_.find('\n', start)) != std::string::npos; start = end + 1)
        readLine(partial_.substr(start, end - start));
    partial_.erase(0, start);
}

// The lines that matter: "DATE TIME PROGRAM[PID:TID] Error DOING SOMETHING: REASON" from the platform log,
// the bare ">>> camera failed", and a bare number, the size of a frame that was refused.
void LibraryLogReader::readLine(const std::string& line) {
    const std::size_t error = line.find("Error ");
    const std::size_t reason = error == std::string::npos ? error : line.find(": ", error);
    if (reason != std::string::npos) {
        error_ = line.substr(reason + 2);
    } else if (line == ">>> camera failed") {
        error_ = "it is no longer attached";
    } else {
        int64_t bytes = 0;
        const std::from_chars_result number = std::from_chars(line.data(), line.data() + line.size(), bytes);
        if (number.ec == std::errc() && number.ptr == line.data() + line.size())
            refusedFrameBytes_ = bytes;
    }
}

LibraryLog::LibraryLog(int visible, bool show) : visible_(visible), show_(show) {
    memory_ = memfd_create("library-log", MFD_CLOEXEC);
    if (memory_ < 0)
        return; // then the lines are seen; nothing else is lost
    fcntl(memory_, F_SETFL, O_APPEND);
    before_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (visible_ < 0)
        visible_ = before_;
    keepReportsVisible(visible_);
    dup2(memory_, STDERR_FILENO);
}

LibraryLog::~LibraryLog() {
    if (memory_ < 0)
        return;
    drain();
    if (before_ >= 0) {
        dup2(before_, STDERR_FILENO);
        close(before_);
    } else {
        close(STDERR_FILENO);
    }
    keepReportsVisible(STDERR_FILENO);
    close(memory_);
}

const LibraryLogReader& LibraryLog::drain() {
    char bytes[4096];
    ssize_t count;
    const int64_t before = position_;
    while (memory_ >= 0 && (count = pread(memory_, bytes, sizeof bytes, position_)) > 0) {
        position_ += count;
        reader_.feed(std::string(bytes, static_cast<std::size_t>(count)));
        if (show_ && write(visible_, bytes, static_cast<std::size_t>(count)) < 0)
            show_ = false;
    }
    // The file grows for ever at its end; what has been read is given back at its start. Truncating it
    // instead could swallow a line that is written in between.
    if (position_ != before)
        fallocate(memory_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, position_);
    return reader_;
}

} // namespace ostrel::apps
