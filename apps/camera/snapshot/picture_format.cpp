#include "apps/camera/snapshot/picture_format.h"

#include "apps/camera/layout.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <QtCore/QBuffer>
#include <QtGui/QImage>
#include <QtGui/QImageWriter>

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

// JPEG does not depend on what Qt has been installed with.
std::vector<std::string> writableNames() {
    std::vector<std::string> names = {"jpeg", "jpg"};
    const QList<QByteArray> formats = QImageWriter::supportedImageFormats();
    for (const QByteArray& format : formats)
        if (std::find(names.begin(), names.end(), format.toStdString()) == names.end())
            names.push_back(format.toStdString());
    std::sort(names.begin(), names.end());
    return names;
}

bool isJpeg(const std::string& name) {
    return name == "jpg" || name == "jpeg";
}

} // namespace

PictureFormat::PictureFormat(const std::string& path, const Size& size, const std::optional<int>& quality)
    : name_(suffixOf(path).empty() ? "png" : suffixOf(path)), size_(size) {
    const std::vector<std::string> names = writableNames();
    if (std::find(names.begin(), names.end(), name_) == names.end())
        throw Failure(EXIT_USAGE, "snapshot cannot write " + quoted(path) + ": give it one of the suffixes " +
                                      join(names, ", "));
    if (quality && !isJpeg(name_))
        throw Failure(EXIT_USAGE, "--quality is for JPEG pictures (.jpg)");
    if (isJpeg(name_))
        jpeg_.emplace(size, quality.value_or(DEFAULT_JPEG_QUALITY));
}

FrameStream::Wanted PictureFormat::wanted() const {
    return jpeg_ ? FrameStream::Wanted::OwnJpeg : FrameStream::Wanted::Pixels;
}

std::string PictureFormat::encode(const CapturedFrame& frame) {
    if (frame.isJpeg)
        return frame.jpeg.jpeg().toStdString();
    if (!jpeg_)
        return encodeByQt(frame);
    const JpegEncoder::Jpeg jpeg = jpeg_->encode(frame.pixels.data.data());
    return std::string(reinterpret_cast<const char*>(jpeg.data), jpeg.bytes);
}

std::string PictureFormat::encodeByQt(const CapturedFrame& frame) const {
    // RGB32 rather than ARGB32: not every camera sets A.
    const QImage image(frame.pixels.data.data(), size_.width, size_.height, size_.width * 4,
                       QImage::Format_RGB32);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, QByteArray::fromStdString(name_));
    if (!writer.write(image))
        throw Failure(EXIT_INTERNAL, "the picture of " + toString(size_) + " cannot be written as " + name_ +
                                         ": " + writer.errorString().toStdString());
    return bytes.toStdString();
}

} // namespace ostrel::apps::cli
