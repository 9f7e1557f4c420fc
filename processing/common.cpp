#include <ostrel/processing.h>

#include "processing/clock.h"

#include <sys/time.h>

namespace ostrel {

namespace {

struct Resolution {
    int width;
    int height;
};

// Indexed by VIDEO_QUALITY.
const Resolution RESOLUTIONS[] = {{320, 240}, {640, 480}, {1280, 720}};
const int LEVELS = sizeof(RESOLUTIONS) / sizeof(RESOLUTIONS[0]);

bool isLevel(int quality) {
    return quality >= 0 && quality < LEVELS;
}

} // namespace

int OVideoCommon::resolutionToQuality(int width, int height) {
    for (int quality = 0; quality < LEVELS; ++quality)
        if (RESOLUTIONS[quality].width == width)
            return RESOLUTIONS[quality].height == height ? quality : -1;
    return -1;
}

void OVideoCommon::qualityToResolution(int quality, int& width, int& height) {
    height = 0;
    width = 0;
    if (isLevel(quality)) {
        width = RESOLUTIONS[quality].width;
        height = RESOLUTIONS[quality].height;
    }
}

QString OVideoCommon::qualityToString(int quality) {
    if (!isLevel(quality))
        return QString();
    return QString::fromLatin1("%1 x %2")
        .arg(static_cast<qlonglong>(RESOLUTIONS[quality].width), 0, 10, QLatin1Char(' '))
        .arg(static_cast<qlonglong>(RESOLUTIONS[quality].height), 0, 10, QLatin1Char(' '));
}

uint32_t OVideoCommon::get_time() {
    timeval now = timeval();
    gettimeofday(&now, 0);
    return millisecondsOf(now);
}

} // namespace ostrel
