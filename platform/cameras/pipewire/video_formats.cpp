#include "platform/cameras/pipewire/video_formats.h"

#include "base/limits.h"
#include "platform/cameras/pixels/pixel_format.h"
#include "platform/cameras/wished_candidates.h"

#include <algorithm>
#include <linux/videodev2.h>
#include <spa/pod/builder.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

struct Entry {
    uint32_t spa; // SPA_VIDEO_FORMAT_*, or SPA_MEDIA_SUBTYPE_*
    uint32_t fourcc;
};

// Kernel headers older than 6.0 lack it.
const uint32_t P010 = v4l2_fourcc('P', '0', '1', '0');

const Entry RAW_FORMATS[] = {
    {SPA_VIDEO_FORMAT_YUY2, V4L2_PIX_FMT_YUYV},
    {SPA_VIDEO_FORMAT_UYVY, V4L2_PIX_FMT_UYVY},
    {SPA_VIDEO_FORMAT_YVYU, V4L2_PIX_FMT_YVYU},
    {SPA_VIDEO_FORMAT_VYUY, V4L2_PIX_FMT_VYUY},
    {SPA_VIDEO_FORMAT_NV12, V4L2_PIX_FMT_NV12},
    {SPA_VIDEO_FORMAT_NV21, V4L2_PIX_FMT_NV21},
    {SPA_VIDEO_FORMAT_NV16, V4L2_PIX_FMT_NV16},
    {SPA_VIDEO_FORMAT_NV24, V4L2_PIX_FMT_NV24},
    {SPA_VIDEO_FORMAT_P010_10LE, P010},
    {SPA_VIDEO_FORMAT_I420, V4L2_PIX_FMT_YUV420},
    {SPA_VIDEO_FORMAT_YV12, V4L2_PIX_FMT_YVU420},
    {SPA_VIDEO_FORMAT_Y42B, V4L2_PIX_FMT_YUV422P},
    {SPA_VIDEO_FORMAT_Y444, V4L2_PIX_FMT_YUV444M},
    {SPA_VIDEO_FORMAT_RGB, V4L2_PIX_FMT_RGB24},
    {SPA_VIDEO_FORMAT_BGR, V4L2_PIX_FMT_BGR24},
    {SPA_VIDEO_FORMAT_BGRx, V4L2_PIX_FMT_XBGR32},
    {SPA_VIDEO_FORMAT_BGRA, V4L2_PIX_FMT_ABGR32},
    {SPA_VIDEO_FORMAT_xRGB, V4L2_PIX_FMT_XRGB32},
    {SPA_VIDEO_FORMAT_ARGB, V4L2_PIX_FMT_ARGB32},
    {SPA_VIDEO_FORMAT_RGBx, V4L2_PIX_FMT_RGBX32},
    {SPA_VIDEO_FORMAT_RGBA, V4L2_PIX_FMT_RGBA32},
    {SPA_VIDEO_FORMAT_RGB16, V4L2_PIX_FMT_RGB565},
    {SPA_VIDEO_FORMAT_GRAY8, V4L2_PIX_FMT_GREY},
    {SPA_VIDEO_FORMAT_GRAY16_LE, V4L2_PIX_FMT_Y16},
    {SPA_VIDEO_FORMAT_GRAY16_BE, V4L2_PIX_FMT_Y16_BE},
    // Without a picture here. Some have no name in the kernel's headers, but the usual one.
    {SPA_VIDEO_FORMAT_v210, v4l2_fourcc('v', '2', '1', '0')},
    {SPA_VIDEO_FORMAT_v216, v4l2_fourcc('v', '2', '1', '6')},
    {SPA_VIDEO_FORMAT_v308, v4l2_fourcc('v', '3', '0', '8')},
    {SPA_VIDEO_FORMAT_r210, v4l2_fourcc('r', '2', '1', '0')},
    {SPA_VIDEO_FORMAT_UYVP, v4l2_fourcc('U', 'Y', 'V', 'P')},
    {SPA_VIDEO_FORMAT_AYUV, v4l2_fourcc('A', 'Y', 'U', 'V')},
};

// Not SPA_MEDIA_SUBTYPE_bayer, which does not say in which order the colours are.
const Entry COMPRESSED_FORMATS[] = {
    {SPA_MEDIA_SUBTYPE_mjpg, V4L2_PIX_FMT_MJPEG},  {SPA_MEDIA_SUBTYPE_h264, V4L2_PIX_FMT_H264},
    {SPA_MEDIA_SUBTYPE_dv, V4L2_PIX_FMT_DV},       {SPA_MEDIA_SUBTYPE_mpegts, V4L2_PIX_FMT_MPEG},
    {SPA_MEDIA_SUBTYPE_h263, V4L2_PIX_FMT_H263},   {SPA_MEDIA_SUBTYPE_mpeg1, V4L2_PIX_FMT_MPEG1},
    {SPA_MEDIA_SUBTYPE_mpeg2, V4L2_PIX_FMT_MPEG2}, {SPA_MEDIA_SUBTYPE_mpeg4, V4L2_PIX_FMT_MPEG4},
    {SPA_MEDIA_SUBTYPE_xvid, V4L2_PIX_FMT_XVID},   {SPA_MEDIA_SUBTYPE_vc1, V4L2_PIX_FMT_VC1_ANNEX_G},
    {SPA_MEDIA_SUBTYPE_vp8, V4L2_PIX_FMT_VP8},     {SPA_MEDIA_SUBTYPE_vp9, V4L2_PIX_FMT_VP9},
};

// A node that never says "no more" must not fill the memory.
const size_t MOST_OFFERS = 4096;
const size_t MOST_MODES = 4096;

// 0 where there is none, in both directions.
template <size_t Count>
uint32_t fourccOf(uint32_t spa, const Entry (&entries)[Count]) {
    for (const Entry& entry : entries)
        if (entry.spa == spa)
            return entry.fourcc;
    return 0;
}

template <size_t Count>
uint32_t spaOf(uint32_t fourcc, const Entry (&entries)[Count]) {
    for (const Entry& entry : entries)
        if (entry.fourcc == fourcc)
            return entry.spa;
    return 0;
}

bool hasPicture(uint32_t fourcc) {
    pixels::PixelFormat known;
    return pixels::formatOf(fourcc, known);
}

// The values of one property of a format: the single one, those of a list, or the ends of a range and maybe
// the steps within it.
template <typename Value>
struct Values {
    std::vector<Value> all;
    bool isRange = false;
};

template <typename Value>
Values<Value> values(const spa_pod* format, uint32_t key, uint32_t type) {
    Values<Value> result;
    const spa_pod_prop* const property = spa_pod_find_prop(format, nullptr, key);
    if (!property)
        return result;
    uint32_t count = 0;
    uint32_t choice = SPA_CHOICE_None;
    const spa_pod* const pod = spa_pod_get_values(&property->value, &count, &choice);
    if (pod->type != type || pod->size < sizeof(Value))
        return result;
    const auto* const first = static_cast<const Value*>(SPA_POD_BODY_CONST(pod));
    result.isRange = choice == SPA_CHOICE_Range || choice == SPA_CHOICE_Step;
    // Of a choice the first value is the default, told once more among the others.
    const uint32_t begin = choice == SPA_CHOICE_None || count == 1 ? 0 : 1;
    for (uint32_t i = begin; i < count; ++i)
        result.all.push_back(first[i]);
    result.isRange = result.isRange && result.all.size() >= 2;
    return result;
}

Size sizeOf(const spa_rectangle& rectangle) {
    const uint32_t most = LARGEST_SIDE;
    return Size(static_cast<int>(std::min(rectangle.width, most)),
                static_cast<int>(std::min(rectangle.height, most)));
}

// A rate the other way round.
Interval intervalOf(const spa_fraction& rate) {
    Interval interval;
    interval.numerator = rate.denom;
    interval.denominator = rate.num;
    return interval;
}

// PipeWire itself tells of a V4L2 driver's steps the largest size in their place, which leads nowhere. What
// has to be guessed is even, as most pictures with shared chroma are.
int stepOf(int told, int least, int most) {
    return told > 0 && told <= most - least ? told : 2;
}

std::vector<SizeRange> sizesOf(const spa_pod* format) {
    const auto told = values<spa_rectangle>(format, SPA_FORMAT_VIDEO_size, SPA_TYPE_Rectangle);
    std::vector<SizeRange> sizes;
    if (told.isRange) {
        SizeRange range;
        range.least = sizeOf(told.all[0]);
        range.most = sizeOf(told.all[1]);
        if (told.all.size() > 2) {
            const Size step = sizeOf(told.all[2]);
            range.step = Size(stepOf(step.width, range.least.width, range.most.width),
                              stepOf(step.height, range.least.height, range.most.height));
        }
        sizes.push_back(range);
        return sizes;
    }
    for (const spa_rectangle& one : told.all) {
        SizeRange range;
        range.least = range.most = sizeOf(one);
        sizes.push_back(range);
    }
    return sizes;
}

std::vector<IntervalRange> intervalsOf(const spa_pod* format) {
    const auto told = values<spa_fraction>(format, SPA_FORMAT_VIDEO_framerate, SPA_TYPE_Fraction);
    if (told.isRange) // the fastest rate is the shortest interval
        return {{intervalOf(told.all[1]), intervalOf(told.all[0])}};
    std::vector<IntervalRange> intervals;
    for (const spa_fraction& rate : told.all)
        intervals.push_back({intervalOf(rate), intervalOf(rate)});
    return intervals;
}

pixels::YuvMatrix matrixOf(const spa_video_info_raw& info) {
    const bool full = info.color_range == SPA_VIDEO_COLOR_RANGE_0_255;
    switch (info.color_matrix) {
    case SPA_VIDEO_COLOR_MATRIX_BT709:
        return full ? pixels::YuvMatrix::Bt709Full : pixels::YuvMatrix::Bt709;
    case SPA_VIDEO_COLOR_MATRIX_BT2020:
        return full ? pixels::YuvMatrix::Bt2020Full : pixels::YuvMatrix::Bt2020;
    default:
        return full ? pixels::YuvMatrix::Bt601Full : pixels::YuvMatrix::Bt601;
    }
}

// The side that is wished for, or any.
uint32_t leastOf(int wished) {
    return wished != 0 ? static_cast<uint32_t>(wished) : 1;
}
uint32_t mostOf(int wished) {
    return wished != 0 ? static_cast<uint32_t>(wished) : LARGEST_SIDE;
}

spa_fraction rateOf(const Interval& interval) {
    return {interval.denominator, interval.numerator};
}

void beginFormat(spa_pod_builder& builder, spa_pod_frame& object, uint32_t subtype) {
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(subtype), 0);
}

void addAllPictures(spa_pod_builder& builder) {
    spa_pod_frame choice;
    spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
    spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
    spa_pod_builder_id(&builder, RAW_FORMATS[0].spa); // the default comes first, and once more
    for (const Entry& entry : RAW_FORMATS)
        if (hasPicture(entry.fourcc))
            spa_pod_builder_id(&builder, entry.spa);
    spa_pod_builder_pop(&builder, &choice);
}

const spa_pod* exactly(spa_pod_builder& builder, const Candidate& picture) {
    const uint32_t compressed = spaOf(picture.fourcc, COMPRESSED_FORMATS);
    const spa_rectangle size = {static_cast<uint32_t>(picture.size.width),
                                static_cast<uint32_t>(picture.size.height)};
    const spa_fraction rate = rateOf(picture.interval);
    spa_pod_frame object;
    beginFormat(builder, object, compressed ? compressed : uint32_t(SPA_MEDIA_SUBTYPE_raw));
    if (!compressed)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(spaOf(picture.fourcc, RAW_FORMATS)),
                            0);
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), 0);
    if (picture.interval.known())
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&rate), 0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

// In any size and rate that is not wished away. `raw`: this format alone, or, where 0, any with a picture.
const spa_pod* anything(spa_pod_builder& builder, uint32_t subtype, uint32_t raw, const Candidate& picture,
                        const ModeWish& wish) {
    const spa_rectangle size = {static_cast<uint32_t>(picture.size.width),
                                static_cast<uint32_t>(picture.size.height)};
    const spa_rectangle least = {leastOf(wish.size.width), leastOf(wish.size.height)};
    const spa_rectangle most = {mostOf(wish.size.width), mostOf(wish.size.height)};
    const bool fixed = wish.interval.known();
    const spa_fraction rate = fixed ? rateOf(picture.interval) : spa_fraction{30, 1};
    const spa_fraction slowest = fixed ? rate : spa_fraction{0, 1};
    const spa_fraction fastest = fixed ? rate : spa_fraction{1000, 1};
    spa_pod_frame object;
    beginFormat(builder, object, subtype);
    if (raw != 0)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(raw), 0);
    else if (subtype == SPA_MEDIA_SUBTYPE_raw)
        addAllPictures(builder);
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&size, &least, &most),
                        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&rate, &slowest, &fastest),
                        0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

} // namespace

void addOffers(const spa_pod* format, std::vector<Offer>& offers) {
    uint32_t type = 0;
    uint32_t subtype = 0;
    if (!format || spa_format_parse(format, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video)
        return;
    std::vector<uint32_t> fourccs = {fourccOf(subtype, COMPRESSED_FORMATS)};
    if (subtype == SPA_MEDIA_SUBTYPE_raw)
        for (const uint32_t raw : values<uint32_t>(format, SPA_FORMAT_VIDEO_format, SPA_TYPE_Id).all)
            fourccs.push_back(fourccOf(raw, RAW_FORMATS));
    Offer offer;
    offer.sizes = sizesOf(format);
    offer.intervals = intervalsOf(format);
    for (const uint32_t fourcc : fourccs) {
        offer.fourcc = fourcc;
        if (fourcc != 0 && offers.size() < MOST_OFFERS)
            offers.push_back(offer);
    }
}

std::vector<uint32_t> formatsOf(const std::vector<Offer>& offers) {
    std::vector<uint32_t> all;
    for (const Offer& offer : offers)
        if (std::find(all.begin(), all.end(), offer.fourcc) == all.end())
            all.push_back(offer.fourcc);
    return all;
}

void addModes(const std::vector<Offer>& offers, NativeModes& modes) {
    for (const Offer& offer : offers) {
        NativeMode mode;
        mode.format = pixels::fourccText(offer.fourcc);
        mode.hasPicture = hasPicture(offer.fourcc);
        // One that says nothing is a mode as well, with nothing known.
        for (const SizeRange& range : offer.sizes.empty() ? std::vector<SizeRange>(1) : offer.sizes)
            for (const IntervalRange& one :
                 offer.intervals.empty() ? std::vector<IntervalRange>(1) : offer.intervals) {
                mode.sizes = range;
                mode.intervals = one;
                if (modes.size() < MOST_MODES)
                    modes.push_back(mode);
            }
    }
}

std::vector<Candidate> candidates(const std::vector<Offer>& offers, const Request& request, bool nativeOnly) {
    const std::vector<uint32_t> usable = formatsFor(formatsOf(offers), hasPicture, request.wish, nativeOnly);
    SizeRange any;
    any.least = Size(1, 1);
    any.most = Size(LARGEST_SIDE, LARGEST_SIDE);
    std::vector<Candidate> result;
    for (const Offer& offer : offers)
        if (std::find(usable.begin(), usable.end(), offer.fourcc) != usable.end())
            addCandidates(
                offer.fourcc, offer.sizes.empty() ? std::vector<SizeRange>{any} : offer.sizes,
                [&](const Size&) { return offer.intervals; }, request.size, request.wish, result);
    return result;
}

bool readGranted(const spa_pod* format, Granted& granted) {
    uint32_t type = 0;
    uint32_t subtype = 0;
    if (spa_format_parse(format, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video)
        return false;
    spa_rectangle size = {0, 0};
    spa_fraction rate = {0, 0};
    if (subtype == SPA_MEDIA_SUBTYPE_raw) {
        spa_video_info_raw info = {};
        if (spa_format_video_raw_parse(format, &info) < 0)
            return false;
        granted.fourcc = fourccOf(info.format, RAW_FORMATS);
        granted.matrix = matrixOf(info);
        size = info.size;
        rate = info.framerate;
    } else {
        granted.fourcc = fourccOf(subtype, COMPRESSED_FORMATS);
        if (spa_pod_parse_object(format, SPA_TYPE_OBJECT_Format, nullptr, SPA_FORMAT_VIDEO_size,
                                 SPA_POD_OPT_Rectangle(&size), SPA_FORMAT_VIDEO_framerate,
                                 SPA_POD_OPT_Fraction(&rate)) < 0)
            return false;
    }
    if (granted.fourcc == 0 || size.width > LARGEST_SIDE || size.height > LARGEST_SIDE)
        return false;
    pixels::PixelFormat known;
    known.layout = pixels::Layout::Opaque;
    pixels::formatOf(granted.fourcc, known);
    granted.layout = known.layout;
    granted.size = sizeOf(size);
    granted.interval = intervalOf(rate);
    return pixels::sizeIsSane(granted.size.width, granted.size.height);
}

std::vector<const spa_pod*> wordsFor(spa_pod_builder& builder, const Candidate& picture,
                                     const ModeWish& wish) {
    std::vector<const spa_pod*> words = {exactly(builder, picture)};
    const uint32_t compressed = spaOf(picture.fourcc, COMPRESSED_FORMATS);
    const uint32_t raw = spaOf(picture.fourcc, RAW_FORMATS);
    if (wish.format.empty() && hasPicture(picture.fourcc)) {
        words.push_back(anything(builder, SPA_MEDIA_SUBTYPE_raw, 0, picture, wish));
        words.push_back(anything(builder, SPA_MEDIA_SUBTYPE_mjpg, 0, picture, wish));
    } else {
        words.push_back(
            anything(builder, compressed ? compressed : uint32_t(SPA_MEDIA_SUBTYPE_raw), raw, picture, wish));
    }
    return words;
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
