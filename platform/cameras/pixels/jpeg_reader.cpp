// libjpeg-turbo is called directly and not through libyuv: libyuv takes a JPEG's full-range numbers for
// limited-range ones, so that blacks and whites are cut off (measured: B 3, G 35, R 30 became 0, 22, 16). It
// takes 10 % longer at full size and a fraction of that at a half or less, where it decodes fewer pixels.
//
// Errors leave it by longjmp, which passes over destructors: between a setjmp and the last call of libjpeg
// after it no object with a destructor may live.
#include "platform/cameras/pixels/jpeg_reader.h"

#include <algorithm>
#include <iterator>
#include <jerror.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

const JOCTET END_OF_PICTURE[] = {0xFF, JPEG_EOI};

JpegReader& readerOf(void* client) {
    return *static_cast<JpegReader*>(client);
}

void silent(j_common_ptr) {}
void startOfSource(j_decompress_ptr) {}
void endOfSource(j_decompress_ptr) {}

Fault faultOfError(int code) {
    switch (code) {
    case JERR_NO_SOI:
        return Fault::NotJpeg;
    case JERR_SOF_UNSUPPORTED:
    case JERR_ARITH_NOTIMPL:
        return Fault::Unsupported;
    default:
        return Fault::Undecodable;
    }
}

int reduced(JDIMENSION side, unsigned part) {
    return static_cast<int>((side + part - 1) / part);
}

} // namespace

JpegReader::JpegReader(const uint8_t* data, size_t bytes) {
    // Some cameras put fill bytes or zeros in front of a picture, which the decoder does not pass over.
    while (bytes >= 2 && (data[0] == 0x00 || data[0] == 0xFF) && !(data[0] == 0xFF && data[1] == 0xD8)) {
        ++data;
        --bytes;
    }
    jpeg_.err = jpeg_std_error(&errors_);
    errors_.error_exit = failed;
    errors_.emit_message = warned;
    errors_.output_message = silent;
    source_.next_input_byte = data;
    source_.bytes_in_buffer = bytes;
    source_.init_source = startOfSource;
    source_.fill_input_buffer = noMoreSource;
    source_.skip_input_data = skipSource;
    source_.resync_to_restart = jpeg_resync_to_restart;
    source_.term_source = endOfSource;
}

void JpegReader::giveUp(Fault fault) {
    fault_ = fault;
    std::longjmp(escape_, 1);
}

void JpegReader::failed(j_common_ptr jpeg) {
    readerOf(jpeg->client_data).giveUp(faultOfError(jpeg->err->msg_code));
}

// Cameras often end the data of a picture a few bytes early, which harms the last blocks at most. Where it
// ends sooner, the rest would be grey; and where the end marker is missing, too, it was cut. Other warnings
// (stray bytes between segments) are normal.
void JpegReader::warned(j_common_ptr jpeg, int level) {
    if (level >= 0 || jpeg->err->msg_code != JWRN_HIT_MARKER)
        return;
    JpegReader& reader = readerOf(jpeg->client_data);
    const jpeg_decompress_struct& state = reader.jpeg_;
    if (reader.ranOut_ || state.input_iMCU_row + 1 < state.total_iMCU_rows)
        reader.giveUp(Fault::Truncated);
}

// All the bytes are there from the start: in the headers, being asked for more means that the picture is cut.
// In the compressed data it may be the end marker alone that is missing; the decoder warns if it is not.
boolean JpegReader::noMoreSource(j_decompress_ptr jpeg) {
    JpegReader& reader = readerOf(jpeg->client_data);
    if (!reader.headerRead_)
        reader.giveUp(Fault::Truncated);
    reader.ranOut_ = true;
    reader.source_.next_input_byte = END_OF_PICTURE;
    reader.source_.bytes_in_buffer = sizeof END_OF_PICTURE;
    return TRUE;
}

void JpegReader::skipSource(j_decompress_ptr jpeg, long count) {
    if (count <= 0)
        return;
    JpegReader& reader = readerOf(jpeg->client_data);
    if (static_cast<size_t>(count) > reader.left())
        reader.giveUp(Fault::Truncated);
    reader.source_.next_input_byte += count;
    reader.source_.bytes_in_buffer -= static_cast<size_t>(count);
}

Fault JpegReader::readHeader() {
    if (left() == 0)
        return Fault::Empty;
    if (setjmp(escape_))
        return fault_;
    jpeg_create_decompress(&jpeg_);
    jpeg_.client_data = this;
    jpeg_.src = &source_;
    if (jpeg_read_header(&jpeg_, TRUE) != JPEG_HEADER_OK)
        return Fault::Undecodable;
    headerRead_ = true;
    if (!sizeIsSane(width(), height()))
        return Fault::Unsupported;
    // Pictures in several passes would be held as a whole, and a short file can ask for any number of passes.
    if (jpeg_.progressive_mode || jpeg_.arith_code || jpeg_.comps_in_scan != jpeg_.num_components)
        return Fault::Unsupported;
    return Fault::None;
}

const uint8_t* JpegReader::findEnd() const {
    const uint8_t* const end = next() + left();
    return std::search(next(), end, std::begin(END_OF_PICTURE), std::end(END_OF_PICTURE));
}

void JpegReader::readRows(J_COLOR_SPACE colours, uint8_t* pixels, int width, int height, int stride) {
    jpeg_.out_color_space = colours;
    jpeg_.do_fancy_upsampling = FALSE;
    jpeg_.scale_num = 1;
    jpeg_.scale_denom = 1;
    while (jpeg_.scale_denom < 8 && (reduced(jpeg_.image_width, jpeg_.scale_denom) > width ||
                                     reduced(jpeg_.image_height, jpeg_.scale_denom) > height))
        jpeg_.scale_denom *= 2;
    jpeg_start_decompress(&jpeg_);
    if (jpeg_.output_width != static_cast<JDIMENSION>(width) ||
        jpeg_.output_height != static_cast<JDIMENSION>(height))
        giveUp(Fault::Undecodable);
    while (jpeg_.output_scanline < jpeg_.output_height) {
        JSAMPROW row = pixels + static_cast<ptrdiff_t>(jpeg_.output_scanline) * stride;
        jpeg_read_scanlines(&jpeg_, &row, 1);
    }
    // jpeg_finish_decompress would only read on to the end marker.
}

Fault JpegReader::decode(J_COLOR_SPACE colours, uint8_t* pixels, int width, int height, int stride) {
    if (setjmp(escape_))
        return fault_;
    readRows(colours, pixels, width, height, stride);
    return Fault::None;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
