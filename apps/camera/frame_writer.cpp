#include "apps/camera/frame_writer.h"

#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <QtCore/QBuffer>
#include <QtGui/QImage>

namespace ostrel::apps::cli {

namespace {

// What raw files and Y4M have in common: one file that grows frame by frame.
class StreamWriter : public FrameWriter {
public:
    explicit StreamWriter(const std::string& path) : file_(path, OutputFile::Mode::Stream) {}

    void write(const Bytes& frame) override {
        const uint64_t before = file_.written();
        try {
            file_.write(prefix());
            file_.write(frame.data(), frame.size());
        } catch (const Failure& failure) {
            throw Failure(failure.code(), failure.what() + kept(before));
        }
        ++frames_;
    }

    void finish(const std::optional<Rate>&) override { file_.commit(); }
    uint64_t frames() const override { return frames_; }
    std::string displayName() const override { return file_.displayName(); }

protected:
    virtual std::string prefix() const { return std::string(); }
    OutputFile& file() { return file_; }

private:
    // Takes the torn frame away again and says what is left.
    std::string kept(uint64_t size) {
        if (frames_ == 0 || !file_.cutTo(size))
            return std::string();
        return "; it holds the " + counted(frames_, "frame") + " before";
    }

    OutputFile file_;
    uint64_t frames_ = 0;
};

class Y4mWriter : public StreamWriter {
public:
    Y4mWriter(const std::string& path, const Size& size, const Rate& rate)
        : StreamWriter(path), size_(size), rate_(rate) {}

    void finish(const std::optional<Rate>& measured) override {
        if (measured && frames() > 0)
            file().rewrite(0, y4mHeaderLine(size_, *measured));
        StreamWriter::finish(measured);
    }

protected:
    std::string prefix() const override {
        return (frames() == 0 ? y4mHeaderLine(size_, rate_) : "") + "FRAME\n";
    }

private:
    Size size_;
    Rate rate_;
};

class PngWriter : public FrameWriter {
public:
    PngWriter(const std::string& path, const Size& size) : path_(path), size_(size) { openNext(); }

    void write(const Bytes& frame) override {
        if (!file_)
            openNext();
        else if (frames_ > 0)
            throw Failure(EXIT_USAGE,
                          "a PNG file holds one picture: choose one with --frame, or give a numbered "
                          "name such as out-%04d.png");
        file_->write(encodePng(frame, size_));
        if (isNumberedPath(path_))
            commit();
        ++frames_;
    }

    // Only now is it certain that a single picture is the only one.
    void finish(const std::optional<Rate>&) override {
        if (file_)
            commit();
    }

    uint64_t frames() const override { return frames_; }
    std::string displayName() const override { return path_ == "-" ? "standard output" : quoted(path_); }

private:
    void openNext() {
        file_ = std::make_unique<OutputFile>(numberedPath(path_, frames_ + 1), OutputFile::Mode::Whole);
    }

    void commit() {
        file_->commit();
        file_.reset();
    }

    std::string path_;
    Size size_;
    std::unique_ptr<OutputFile> file_;
    uint64_t frames_ = 0;
};

// "%d" or "%04d" in a path.
struct NumberField {
    std::size_t at = std::string::npos;
    std::size_t length = 0;
    std::size_t width = 0; // least digits
};

NumberField numberField(const std::string& path) {
    for (std::size_t at = path.find('%'); at != std::string::npos; at = path.find('%', at + 1)) {
        if (path.compare(at, 2, "%d") == 0)
            return {at, 2, 0};
        const bool padded = path.compare(at, 2, "%0") == 0 && path.size() > at + 3 && path[at + 3] == 'd';
        if (padded && path[at + 2] >= '1' && path[at + 2] <= '9')
            return {at, 4, static_cast<std::size_t>(path[at + 2] - '0')};
    }
    return {};
}

} // namespace

std::unique_ptr<FrameWriter> makeFrameWriter(const std::string& path, const FileKind& kind, const Size& size,
                                             const Rate& rate) {
    switch (kind.container) {
    case Container::Y4m:
        return std::make_unique<Y4mWriter>(path, size, rate);
    case Container::Png:
        return std::make_unique<PngWriter>(path, size);
    case Container::Raw:
        break;
    }
    return std::make_unique<StreamWriter>(path);
}

bool isNumberedPath(const std::string& path) {
    return numberField(path).length > 0;
}

std::string numberedPath(const std::string& path, uint64_t number) {
    const NumberField field = numberField(path);
    if (field.length == 0)
        return path;
    std::string digits = std::to_string(number);
    digits.insert(0, field.width > digits.size() ? field.width - digits.size() : 0, '0');
    return std::string(path).replace(field.at, field.length, digits);
}

std::string encodePng(const Bytes& frame, const Size& size) {
    // RGB32 rather than ARGB32: not every camera sets A.
    const QImage image(frame.data(), size.width, size.height, size.width * 4, QImage::Format_RGB32);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        throw Failure(EXIT_INTERNAL, "the picture of " + toString(size) + " cannot be written as PNG");
    return png.toStdString();
}

} // namespace ostrel::apps::cli
