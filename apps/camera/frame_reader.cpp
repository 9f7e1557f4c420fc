#include "apps/camera/frame_reader.h"

#include "apps/camera/input_file.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <QtCore/QBuffer>
#include <QtGui/QImageReader>

#include <algorithm>

namespace ostrel::apps::cli {

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

    // Bytes that were there.
    std::size_t readInto(Bytes& frame, std::size_t size) {
        frame.resize(size);
        return file_.read(frame.data(), size);
    }

private:
    InputFile file_;
};

class RawReader : public StreamReader {
public:
    RawReader(const std::string& path, Layout layout, const Size& size, bool bottomUp)
        : StreamReader(path), bottomUp_(bottomUp) {
        setFormat(size, layout, Rate());
        const std::optional<uint64_t> length = file().size();
        if (length && (*length == 0 || *length % frameBytes(layout, size) != 0))
            failLength(*length);
    }

    bool next(Bytes& frame) override {
        const std::size_t count = readInto(frame, frameBytes(layout(), size()));
        if (count != frame.size() && (count > 0 || file().position() == 0))
            failLength(file().position());
        if (bottomUp_ && count > 0)
            turnOver(frame);
        return count == frame.size();
    }

private:
    [[noreturn]] void failLength(uint64_t length) {
        const std::size_t one = frameBytes(layout(), size());
        std::string found = "it has " + counted(length, "byte");
        if (length > one)
            found += " (" + counted(length / one, "frame") + " and " + counted(length % one, "byte") + ")";
        failRead(file(), found + ", but a frame of " + toString(size()) + " " + layoutName(layout()) +
                             " takes " + std::to_string(one) + ": check --size and --from");
    }

    void turnOver(Bytes& frame) const {
        const auto row = static_cast<std::ptrdiff_t>(frameBytes(layout(), {size().width, 1}));
        for (int top = 0, bottom = size().height - 1; top < bottom; ++top, --bottom)
            std::swap_ranges(frame.begin() + row * top, frame.begin() + row * (top + 1),
                             frame.begin() + row * bottom);
    }

    bool bottomUp_;
};

// Hands C420 out as it is. What else there is becomes ARGB, so that no colour is lost on the way.
class Y4mReader : public StreamReader {
public:
    explicit Y4mReader(const std::string& path) : StreamReader(path) {
        const std::optional<std::string> line = file().readLine(LONGEST_Y4M_LINE);
        const std::string wrong = parseY4mHeader(line.value_or(std::string()), header_);
        if (!wrong.empty())
            failRead(file(), wrong);
        const bool plain = header_.colours == Y4M_420 && !header_.fullRange;
        setFormat({header_.width, header_.height}, plain ? Layout::I420 : Layout::Argb,
                  {header_.rateNumerator, header_.rateDenominator});
    }

    bool next(Bytes& frame) override {
        const uint64_t start = file().position();
        const std::optional<std::string> line = file().readLine(LONGEST_Y4M_LINE);
        if (!line && file().position() == start)
            return endOfFile();
        ++frames_;
        if (!line || (*line != "FRAME" && line->compare(0, 6, "FRAME ") != 0))
            failRead(file(),
                     "where frame " + std::to_string(frames_) + " should start there is something else");
        const std::size_t bytes = y4mFrameBytes(header_);
        Bytes& planes = layout() == Layout::I420 ? frame : planes_;
        if (readInto(planes, bytes) != bytes)
            failRead(file(), "it ends in the middle of frame " + std::to_string(frames_));
        if (layout() == Layout::Argb)
            y4mToArgb(header_, planes_, frame);
        return true;
    }

private:
    bool endOfFile() {
        if (frames_ == 0)
            failRead(file(), "it holds no frame");
        return false;
    }

    Y4mHeader header_;
    Bytes planes_;
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
        setFormat({image.width(), image.height()}, Layout::Argb, Rate());
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
                                             const std::optional<Size>& rawSize, bool bottomUp) {
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
    requireSize(kind.layout, *rawSize);
    return std::make_unique<RawReader>(path, kind.layout, *rawSize, bottomUp);
}

} // namespace ostrel::apps::cli
