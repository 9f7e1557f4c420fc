#include "platform/cameras/pixels/jpeg.h"

#include "base/limits.h"
#include "platform/cameras/pixels/jpeg_reader.h"

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

const int SMALLEST_PART = 8;

int reduced(int side, int part) {
    return (side + part - 1) / part;
}

// As small as it goes, and every row over the one before: only the verdict counts.
Fault faultOfData(JpegReader& reader) {
    uint8_t row[LARGEST_SIDE / SMALLEST_PART];
    return reader.decode(JCS_GRAYSCALE, row, reduced(reader.width(), SMALLEST_PART),
                         reduced(reader.height(), SMALLEST_PART), 0);
}

J_COLOR_SPACE coloursOf(OutputFormat format) {
    return format == OutputFormat::Bgra  ? JCS_EXT_BGRA
           : format == OutputFormat::Bgr ? JCS_EXT_BGR
                                         : JCS_GRAYSCALE;
}

} // namespace

Fault sizeOfJpeg(const uint8_t* data, size_t bytes, JpegSize& size) {
    JpegReader reader(data, bytes);
    const Fault fault = reader.readHeader();
    if (fault == Fault::None) {
        size.width = reader.width();
        size.height = reader.height();
    }
    return fault;
}

Fault faultOfJpeg(const uint8_t* data, size_t bytes) {
    JpegReader reader(data, bytes);
    const Fault fault = reader.readHeader();
    if (fault != Fault::None)
        return fault;
    const uint8_t* const end = reader.findEnd();
    if (end == reader.next())
        return Fault::Truncated;
    return end < reader.next() + reader.left() ? Fault::None : faultOfData(reader);
}

void reduceForJpeg(int& width, int& height, int wantedWidth, int wantedHeight) {
    const int wholeWidth = width, wholeHeight = height;
    for (int part = 2; part <= SMALLEST_PART; part *= 2) {
        const int w = reduced(wholeWidth, part);
        const int h = reduced(wholeHeight, part);
        if (w < wantedWidth || h < wantedHeight)
            break;
        width = w;
        height = h;
    }
}

Fault decodeJpeg(const uint8_t* data, size_t bytes, const Output& to) {
    JpegReader reader(data, bytes);
    const Fault fault = reader.readHeader();
    if (fault != Fault::None)
        return fault;
    return reader.decode(coloursOf(to.format), to.data, to.width, to.height, to.stride);
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
