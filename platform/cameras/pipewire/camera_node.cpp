#include "platform/cameras/pipewire/camera_node.h"

#include "base/limits.h"
#include "platform/cameras/pixels/pixel_format.h"

#include <algorithm>
#include <linux/videodev2.h>
#include <spa/pod/builder.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

struct Entry {
    uint32_t raw; // SPA_VIDEO_FORMAT_*
    uint32_t fourcc;
};

// Kernel headers older than 6.0 lack it.
const uint32_t kP010 = v4l2_fourcc('P', '0', '1', '0');

const Entry kRawFormats[] = {
    {SPA_VIDEO_FORMAT_YUY2, V4L2_PIX_FMT_YUYV},
    {SPA_VIDEO_FORMAT_UYVY, V4L2_PIX_FMT_UYVY},
    {SPA_VIDEO_FORMAT_YVYU, V4L2_PIX_FMT_YVYU},
    {SPA_VIDEO_FORMAT_VYUY, V4L2_PIX_FMT_VYUY},
    {SPA_VIDEO_FORMAT_NV12, V4L2_PIX_FMT_NV12},
    {SPA_VIDEO_FORMAT_NV21, V4L2_PIX_FMT_NV21},
    {SPA_VIDEO_FORMAT_NV16, V4L2_PIX_FMT_NV16},
    {SPA_VIDEO_FORMAT_NV24, V4L2_PIX_FMT_NV24},
    {SPA_VIDEO_FORMAT_P010_10LE, kP010},
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
};

// A node that never says "no more" must not fill the memory.
const size_t kMostOffers = 4096;

uint32_t fourccOfRaw(uint32_t raw) {
    for (const Entry& entry : kRawFormats)
        if (entry.raw == raw)
            return entry.fourcc;
    return 0;
}

uint32_t rawOf(uint32_t fourcc) {
    for (const Entry& entry : kRawFormats)
        if (entry.fourcc == fourcc)
            return entry.raw;
    return SPA_VIDEO_FORMAT_UNKNOWN;
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

std::vector<SizeRange> sizesOf(const spa_pod* format) {
    const auto told = values<spa_rectangle>(format, SPA_FORMAT_VIDEO_size, SPA_TYPE_Rectangle);
    std::vector<SizeRange> sizes;
    if (told.isRange) {
        SizeRange range;
        range.least = sizeOf(told.all[0]);
        range.most = sizeOf(told.all[1]);
        if (told.all.size() > 2)
            range.step = sizeOf(told.all[2]);
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

void readIntervals(const spa_pod* format, Offer& offer) {
    const auto told = values<spa_fraction>(format, SPA_FORMAT_VIDEO_framerate, SPA_TYPE_Fraction);
    for (const spa_fraction& rate : told.all)
        offer.intervals.push_back(intervalOf(rate));
    offer.anyInterval = told.isRange;
    if (told.isRange) // the fastest rate is the shortest interval
        std::swap(offer.intervals[0], offer.intervals[1]);
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

const spa_pod* anything(spa_pod_builder& builder, uint32_t subtype, const Size& wanted) {
    const spa_rectangle size = {static_cast<uint32_t>(wanted.width), static_cast<uint32_t>(wanted.height)};
    const spa_rectangle least = {1, 1};
    const spa_rectangle most = {LARGEST_SIDE, LARGEST_SIDE};
    const spa_fraction rate = {30, 1};
    const spa_fraction slowest = {0, 1};
    const spa_fraction fastest = {1000, 1};
    spa_pod_frame object;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(subtype), 0);
    if (subtype == SPA_MEDIA_SUBTYPE_raw) {
        spa_pod_frame choice;
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
        spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
        spa_pod_builder_id(&builder, kRawFormats[0].raw); // the default comes first, and once more
        for (const Entry& entry : kRawFormats)
            spa_pod_builder_id(&builder, entry.raw);
        spa_pod_builder_pop(&builder, &choice);
    }
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_CHOICE_RANGE_Rectangle(&size, &least, &most),
                        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&rate, &slowest, &fastest),
                        0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

} // namespace

void addOffers(const spa_pod* format, std::vector<Offer>& offers, std::vector<uint32_t>& all) {
    uint32_t type = 0;
    uint32_t subtype = 0;
    if (!format || spa_format_parse(format, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video ||
        all.size() > kMostOffers)
        return;
    std::vector<uint32_t> fourccs;
    if (subtype == SPA_MEDIA_SUBTYPE_raw)
        for (const uint32_t raw : values<uint32_t>(format, SPA_FORMAT_VIDEO_format, SPA_TYPE_Id).all)
            fourccs.push_back(fourccOfRaw(raw));
    else if (subtype == SPA_MEDIA_SUBTYPE_mjpg)
        fourccs.push_back(V4L2_PIX_FMT_MJPEG);
    else if (subtype == SPA_MEDIA_SUBTYPE_h264)
        fourccs.push_back(V4L2_PIX_FMT_H264);
    Offer offer;
    offer.sizes = sizesOf(format);
    readIntervals(format, offer);
    for (const uint32_t fourcc : fourccs) {
        if (fourcc != 0 && std::find(all.begin(), all.end(), fourcc) == all.end())
            all.push_back(fourcc);
        pixels::PixelFormat known;
        offer.fourcc = fourcc;
        if (pixels::formatOf(fourcc, known) && offers.size() < kMostOffers)
            offers.push_back(offer);
    }
}

std::vector<Candidate> candidates(const std::vector<Offer>& offers, const Size& wanted) {
    std::vector<Candidate> result;
    for (const Offer& offer : offers) {
        pixels::PixelFormat format;
        pixels::formatOf(offer.fourcc, format);
        Candidate candidate;
        candidate.fourcc = offer.fourcc;
        candidate.cost = pixels::decodeCost(format.layout);
        candidate.interval = offer.anyInterval ? bestInterval(offer.intervals[0], offer.intervals[1])
                                               : bestInterval(offer.intervals);
        candidate.size = wanted;
        if (offer.sizes.empty())
            result.push_back(candidate);
        for (const SizeRange& range : offer.sizes) {
            candidate.size = fit(range, wanted);
            result.push_back(candidate);
        }
    }
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
        granted.fourcc = fourccOfRaw(info.format);
        granted.matrix = matrixOf(info);
        size = info.size;
        rate = info.framerate;
    } else if (subtype == SPA_MEDIA_SUBTYPE_mjpg) {
        spa_video_info_mjpg info = {};
        if (spa_format_video_mjpg_parse(format, &info) < 0)
            return false;
        granted.fourcc = V4L2_PIX_FMT_MJPEG;
        size = info.size;
        rate = info.framerate;
    }
    pixels::PixelFormat known;
    if (!pixels::formatOf(granted.fourcc, known) || size.width > LARGEST_SIDE || size.height > LARGEST_SIDE)
        return false;
    granted.layout = known.layout;
    granted.size = sizeOf(size);
    granted.interval = intervalOf(rate);
    return pixels::sizeIsSane(granted.size.width, granted.size.height);
}

const spa_pod* exactly(spa_pod_builder& builder, const Candidate& picture) {
    const bool jpeg = rawOf(picture.fourcc) == SPA_VIDEO_FORMAT_UNKNOWN;
    const spa_rectangle size = {static_cast<uint32_t>(picture.size.width),
                                static_cast<uint32_t>(picture.size.height)};
    const spa_fraction rate = {picture.interval.denominator, picture.interval.numerator};
    spa_pod_frame object;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype,
                        SPA_POD_Id(jpeg ? SPA_MEDIA_SUBTYPE_mjpg : SPA_MEDIA_SUBTYPE_raw), 0);
    if (!jpeg)
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_format, SPA_POD_Id(rawOf(picture.fourcc)), 0);
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size), 0);
    if (picture.interval.known())
        spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&rate), 0);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

const spa_pod* anyRaw(spa_pod_builder& builder, const Size& wanted) {
    return anything(builder, SPA_MEDIA_SUBTYPE_raw, wanted);
}

const spa_pod* anyJpeg(spa_pod_builder& builder, const Size& wanted) {
    return anything(builder, SPA_MEDIA_SUBTYPE_mjpg, wanted);
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
