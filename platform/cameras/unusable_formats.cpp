#include "platform/cameras/unusable_formats.h"

#include "platform/cameras/pixels/pixel_format.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

namespace ostrel {
namespace cameras {

namespace {

// What a format is that cannot be converted; null where its four characters have to do.
const char* meaningOf(uint32_t fourcc) {
    const std::string name = pixels::fourccText(fourcc);
    const auto isOneOf = [&name](std::initializer_list<const char*> names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    if (isOneOf({"BA81", "GBRG", "GRBG", "RGGB", "BG10", "GB10", "BA10", "RG10", "BG12", "GB12", "BA12",
                 "RG12", "BG14", "GB14", "GR14", "RG14", "BYR2", "GB16", "GR16", "RG16", "pBAA", "pGAA",
                 "pgAA", "pRAA", "pBCC", "pGCC", "pgCC", "pRCC", "pBEE", "pGEE", "pgEE", "pREE", "aBA8",
                 "aGA8", "agA8", "aRA8", "bBA8", "bGA8", "BD10", "bRA8", "ip3b", "ip3g", "ip3G", "ip3r"}))
        return "raw Bayer";
    if (isOneOf({"Z16", "INZI", "CNF4", "UV8"}))
        return "depth";
    if (isOneOf({"H264", "AVC1", "M264", "S264", "H263", "HEVC", "MPEG", "MPG1", "MPG2", "MPG4", "XVID",
                 "VC1G", "VC1L", "VP80", "VP90", "FWHT"}))
        return "compressed video, which is not decoded here";
    if (isOneOf({"PJPG", "S910", "S920", "S501", "S505", "S508", "S561", "S680",
                 "SONX", "P207", "M310", "JL20", "905C", "O511", "O518", "PWC1",
                 "PWC2", "E625", "WNVA", "CPIA", "TM60", "KONI", "S401"}))
        return "its maker's own format, which is not decoded here";
    return nullptr;
}

} // namespace

std::string unusableFormats(const std::vector<uint32_t>& formats) {
    if (formats.empty())
        return "offers no pixel format";
    std::string text = "offers only ";
    bool isBayer = true;
    for (size_t i = 0; i < formats.size(); ++i) {
        const char* const meaning = meaningOf(formats[i]);
        const char* const next = i + 1 < formats.size() ? meaningOf(formats[i + 1]) : nullptr;
        text += pixels::fourccText(formats[i]);
        // Said once for a row of the same.
        if (meaning && meaning != next)
            text += std::string(" (") + meaning + ')';
        if (i + 1 < formats.size())
            text += ", ";
        isBayer = isBayer && meaning && std::strcmp(meaning, "raw Bayer") == 0;
    }
    return isBayer ? text + ": needs libcamera, for example through PipeWire" : text;
}

} // namespace cameras
} // namespace ostrel
