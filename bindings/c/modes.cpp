// What is known of a camera's device, its modes, and which of them is used.
#include "bindings/c/lists.h"

#include "base/qt_text.h"

#include <ostrel/device_details.h>
#include <ostrel/modes.h>
#include <ostrel/native_frame.h>

namespace ostrel {
namespace c {

namespace {

void describe(const OVideoMode& mode, ostrel_mode_info& info) {
    info.interval_numerator = mode.intervalNumerator();
    info.interval_denominator = mode.intervalDenominator();
    info.longest_numerator = mode.longestNumerator();
    info.longest_denominator = mode.longestDenominator();
    info.has_picture = mode.hasPicture() ? 1 : 0;
    info.width = mode.width();
    info.height = mode.height();
    info.least_width = mode.leastWidth();
    info.least_height = mode.leastHeight();
    info.step_width = mode.stepWidth();
    info.step_height = mode.stepHeight();
    copyText(mode.format(), info.format);
}

OVideoMode wishOf(const ostrel_mode_info* from) {
    OVideoMode wish;
    if (!from)
        return wish;
    checkSize(from->size, sizeof *from);
    const char* const end = from->format + sizeof from->format;
    wish.setFormat(textOf(std::string(from->format, std::find(from->format, end, '\0'))));
    wish.setSize(from->width, from->height);
    wish.setInterval(from->interval_numerator, from->interval_denominator);
    return wish;
}

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel;
using namespace ostrel::c;

extern "C" int ostrel_details(const char* id, ostrel_details_info* details, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const Answer<ostrel_details_info> answer(details);
        const OVideoDeviceDetails known = videoDeviceDetails(requiredText(id, "The identifier"));
        ostrel_details_info info = {};
        info.attached = known.isAttached() ? 1 : 0;
        info.vendor = known.vendorID();
        info.product = known.productID();
        copyText(known.kind(), info.kind);
        copyText(known.node(), info.node);
        copyText(known.driver(), info.driver);
        copyText(known.bus(), info.bus);
        copyText(known.serialNumber(), info.serial);
        answer.give(info);
        return OSTREL_OK;
    });
}

extern "C" int ostrel_modes(const char* id, ostrel_handle* list, size_t* count, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const ListAnswer answer(list, count);
        QString words;
        const QList<OVideoMode> modes = videoModes(requiredText(id, "The identifier"), &words);
        if (modes.isEmpty() && !words.isEmpty())
            throw Failure(OSTREL_REFUSED, utf8Of(words));
        giveWords(utf8Of(words).c_str(), why, why_bytes);
        return answer.give(std::vector<OVideoMode>(modes.begin(), modes.end()));
    });
}

extern "C" int ostrel_mode_at(ostrel_handle list, size_t index, ostrel_mode_info* mode, char* why,
                              size_t why_bytes) {
    return call(why, why_bytes,
                [&] { return giveItem<OVideoMode>(list, index, mode, "a list of modes", describe); });
}

extern "C" int ostrel_request_mode(const char* id, const ostrel_mode_info* wish, char* why,
                                   size_t why_bytes) {
    return call(why, why_bytes, [&] {
        QString words;
        if (!requestVideoMode(requiredText(id, "The identifier"), wishOf(wish), &words))
            throw Failure(OSTREL_REFUSED, utf8Of(words));
        return OSTREL_OK;
    });
}

extern "C" int ostrel_requested_mode(const char* id, ostrel_mode_info* wish, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        const Answer<ostrel_mode_info> answer(wish);
        ostrel_mode_info info = {};
        describe(requestedVideoMode(requiredText(id, "The identifier")), info);
        answer.give(info);
        return OSTREL_OK;
    });
}

extern "C" int ostrel_list_native_only(int32_t list, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        listNativeOnlyCameras(list != 0);
        return OSTREL_OK;
    });
}
