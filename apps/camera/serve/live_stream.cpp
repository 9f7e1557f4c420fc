#include "apps/camera/serve/live_stream.h"

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

const char BOUNDARY[] = "--picture\r\n";

// Copies what of a piece lies behind the first `sent` bytes, and takes its length off them.
std::size_t copyPiece(const std::string& piece, std::size_t& sent, char* buffer, std::size_t room) {
    if (sent >= piece.size()) {
        sent -= piece.size();
        return 0;
    }
    const std::size_t count = std::min(room, piece.size() - sent);
    std::copy_n(piece.data() + sent, count, buffer);
    sent = 0;
    return count;
}

} // namespace

const char LiveStream::CONTENT_TYPE[] = "multipart/x-mixed-replace; boundary=picture";

// Browsers show a part when the boundary behind it has come: it is sent at once, with the part.
bool LiveStream::begin() {
    switch (seat_.next(picture_)) {
    case Audience::Next::Picture:
        break;
    case Audience::Next::Over:
        over_ = true;
        return false;
    case Audience::Next::Later:
        return false;
    }
    head_ = std::string(first_ ? BOUNDARY : "") +
            "Content-Type: image/jpeg\r\nContent-Length: " + std::to_string(picture_->jpeg.size()) +
            "\r\n\r\n";
    first_ = false;
    sent_ = 0;
    return true;
}

long LiveStream::read(char* buffer, std::size_t room) {
    if (!picture_ && !begin())
        return over_ ? -1 : 0;
    static const std::string tail = std::string("\r\n") + BOUNDARY;
    std::size_t filled = 0;
    std::size_t before = sent_;
    const std::string* const pieces[] = {&head_, &picture_->jpeg, &tail};
    for (const std::string* piece : pieces)
        filled += copyPiece(*piece, before, buffer + filled, room - filled);
    sent_ += filled;
    if (sent_ == head_.size() + picture_->jpeg.size() + tail.size())
        picture_.reset();
    return static_cast<long>(filled);
}

} // namespace ostrel::apps::cli
