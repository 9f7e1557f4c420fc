#include "platform/cameras/virtual/y4m_clip.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ostrel {
namespace cameras {

namespace {

// Reads with pread: a mapping would end the process with SIGBUS if somebody cut the file.
class File : public ByteSource {
public:
    explicit File(int descriptor) : descriptor_(descriptor) {}
    ~File() override {
        if (isOpen())
            ::close(descriptor_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    // As fstat().
    int status(struct stat& status) const { return ::fstat(descriptor_, &status); }

    int64_t read(uint64_t offset, void* to, size_t size) const override {
        size_t done = 0;
        while (done < size) {
            const ssize_t got = ::pread(descriptor_, static_cast<char*>(to) + done, size - done,
                                        static_cast<off_t>(offset + done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                return -1;
            if (got == 0)
                break;
            done += static_cast<size_t>(got);
        }
        return static_cast<int64_t>(done);
    }

    uint64_t size() const override {
        struct stat facts;
        return status(facts) == 0 ? static_cast<uint64_t>(facts.st_size) : 0;
    }

private:
    const int descriptor_;
};

std::string reason(int number) {
    return std::generic_category().message(number);
}

} // namespace

std::string Y4mClip::open(const std::string& path, std::shared_ptr<Y4mClip>& clip) {
    // O_NONBLOCK: a named pipe would be waited for.
    std::unique_ptr<File> file(new File(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)));
    struct stat status;
    if (!file->isOpen() || file->status(status) != 0)
        return path + ": " + reason(errno);
    if (!S_ISREG(status.st_mode))
        return path + ": not a regular file";
    auto fresh = std::make_shared<Y4mClip>(std::move(file));
    const std::string wrong = fresh->readHeader();
    if (!wrong.empty())
        return path + ": " + wrong;
    clip = std::move(fresh);
    return std::string();
}

Y4mPlayer::Step Y4mPlayer::step() {
    Y4mReader::Found found = reader_.next(position_, planes_);
    if (found == Y4mReader::Found::End) {
        if (!loop_)
            return Step::Finished;
        position_ = reader_.firstFrame();
        found = reader_.next(position_, planes_);
    }
    // A file without a first frame was cut while it played.
    return found == Y4mReader::Found::Frame ? Step::Frame : Step::Broken;
}

} // namespace cameras
} // namespace ostrel
