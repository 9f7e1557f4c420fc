#include "apps/camera/frame_reader.h"

#include "apps/camera/failure.h"
#include "apps/camera/input_file.h"
#include "apps/camera/text.h"

#include <QtCore/QBuffer>
#include <QtGui/QImageReader>

#include <algorithm>

namespace ostrel {
namespace cli {

namespace {

const std::size_t LONGEST_Y4M_LINE = 4096;
const std::size_t LARGEST_PNG_FILE = std::size_t(1) << 30;

[[noreturn]] void failRead(const InputFile& file, const std::string& why) {
    throw Failure(EXIT_FILE, "cannot read " + file.displayName() + ": " + why);
}

// What raw files and Y4M have in common.
class StreamReader : public FrameReader {
public:
    explicit StreamReader(const std::string& path) : file_(path) {}

    double progress() const override {
        if (!file_.size() || *file_.size() == 0)
            return -1;
        return static_cast<double>(file_.position()) / static_cast<double>(*file_.size());
    }

protected:
    InputFile& file() { return file_; }

    // Bytes of the frame that were there.
    std::size_t readFrame(Bytes& frame, Layout layout) {
        frame.resize(frameBytes(layout, size()));
        return file_.read(frame.data(), frame.size());
    }

private:
    InputFile file_;
};

class RawReader : public StreamReader {
public:
    RawReader(const std::string& path, Layout layout, const Size& size)
        : StreamReader(path), layout_(layout) {
        setFormat(size, Rate());
        const std::optional<uint64_t> length = file().size();
        if (length && (*length == 0 || *length % frameBytes(layout, size) != 0))
            failLength(*length);
    }

    bool next(Bytes& frame) override {
        const std::size_t count = readFrame(frame, layout_);
        if (count != frame.size() && (count > 0 || file().position() == 0))
            failLength(file().position());
        return count == frame.size();
    }

private:
    [[noreturn]] void failLength(uint64_t length) {
        const std::size_t one = frameBytes(layout_, size());
        std::string found = "it has " + counted(length, "byte");
        if (length > one)
            found += " (" + counted(length / one, "frame") + " and " + counted(length % one, "byte") + ")";
        failRead(file(), found + ", but a frame of " + toString(size()) + " " + layoutName(layout_) +
                             " takes " + std::to_string(one) + ": check --size and --from");
    }

    Layout layout_;
};

class Y4mReader : public StreamReader {
public:
    explicit Y4mReader(const std::string& path) : StreamReader(path) {
        const std::optional<std::string> line = file().readLine(LONGEST_Y4M_LINE);
        Y4mHeader header;
        const std::string wrong = parseY4mHeader(line.value_or(std::string()), header);
        if (!wrong.empty())
            failRead(file(), wrong);
        setFormat(header.size, header.rate);
    }

    bool next(Bytes& frame) override {
        const uint64_t start = file().position();
        const std::optional<std::string> line = file().readLine(LONGEST_Y4M_LINE);
        if (!line && file().position() == start)
            return endOfFile();
        ++frames_;
        const std::size_t mark = std::string(Y4M_FRAME).size();
        const bool marked =
            line && line->compare(0, mark, Y4M_FRAME) == 0 && (line->size() == mark || (*line)[mark] == ' ');
        if (!marked)
            failRead(file(),
                     "where frame " + std::to_string(frames_) + " should start there is something else");
        if (readFrame(frame, Layout::I420) != frame.size())
            failRead(file(), "it ends in the middle of frame " + std::to_string(frames_));
        return true;
    }

private:
    bool endOfFile() {
        if (frames_ == 0)
            failRead(file(), "it holds no frame");
        return false;
    }

    uint64_t frames_ = 0;
};

class PngReader : public FrameReader {
public:
    explicit PngReader(const std::string& path) {
        InputFile file(path);
        const QByteArray bytes = readAll(file);
        QBuffer buffer;
        buffer.setData(bytes);
        QImageReader reader(&buffer, "png");
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        reader.setAllocationLimit(0); // the size is checked here
#endif
        const QSize size = reader.size();
        if (!size.isValid())
            failRead(file, "it is no PNG picture");
        if (size.width() > MAXIMUM_EXTENT || size.height() > MAXIMUM_EXTENT)
            failRead(file, "its sides are longer than " + std::to_string(MAXIMUM_EXTENT) + " pixels");
        const QImage image = reader.read();
        if (image.isNull())
            failRead(file, toLower(reader.errorString().toStdString()));
        setFormat({image.width(), image.height()}, Rate());
        take(image.convertToFormat(QImage::Format_ARGB32));
    }

    bool next(Bytes& frame) override {
        frame.swap(frame_);
        return !std::exchange(done_, true);
    }

    double progress() const override {
        return done_ ? 1 : 0;
    }

private:
    static QByteArray readAll(InputFile& file) {
        QByteArray bytes;
        char chunk[65536];
        for (std::size_t count; (count = file.read(chunk, sizeof chunk)) > 0;) {
            bytes.append(chunk, static_cast<int>(count));
            if (static_cast<std::size_t>(bytes.size()) > LARGEST_PNG_FILE)
                failRead(file, "it is too large for a picture");
        }
        return bytes;
    }

    void take(const QImage& image) {
        const std::size_t row = frameBytes(Layout::Argb, {image.width(), 1});
        frame_.resize(row * static_cast<std::size_t>(image.height()));
        for (int y = 0; y < image.height(); ++y)
            std::copy_n(image.constScanLine(y), row, frame_.data() + row * static_cast<std::size_t>(y));
    }

    Bytes frame_;
    bool done_ = false;
};

} // namespace

std::unique_ptr<FrameReader> makeFrameReader(const std::string& path, const FileKind& kind,
                                             const std::optional<Size>& rawSize) {
    if (kind.container != Container::Raw && rawSize)
        throw Failure(EXIT_USAGE, "--size is for raw input: " + quoted(path) + " states its own size");
    switch (kind.container) {
    case Container::Y4m:
        return std::make_unique<Y4mReader>(path);
    case Container::Png:
        return std::make_unique<PngReader>(path);
    case Container::Raw:
        break;
    }
    if (!rawSize)
        throw Failure(EXIT_USAGE, "raw frames do not state their size: give it with --size");
    if (needsEvenSize(kind.layout) && !rawSize->even())
        throw Failure(EXIT_USAGE, std::string(layoutName(kind.layout)) + " frames have even sides, " +
                                      toString(*rawSize) + " does not");
    return std::make_unique<RawReader>(path, kind.layout, *rawSize);
}

} // namespace cli
} // namespace ostrel
