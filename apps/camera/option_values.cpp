#include "apps/camera/option_values.h"

#include "apps/common/text.h"

#include <charconv>
#include <stdexcept>

namespace ostrel::apps::cli {

namespace {

const double LONGEST_SECONDS = 1e6;

[[noreturn]] void refuse(const std::string& text, const std::string& expected) {
    throw std::invalid_argument(quoted(text) + " is not " + expected);
}

template <typename Value>
Value required(const std::optional<Value>& value, const std::string& text, const std::string& expected) {
    if (!value)
        refuse(text, expected);
    return *value;
}

template <typename Number>
bool parseWhole(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

} // namespace

Size sizeValue(const std::string& text) {
    return required(parseSize(text), text, std::string("a frame size: ") + SIZE_NAMES);
}

VIDEO_QUALITY levelValue(const std::string& text) {
    const std::optional<Size> size = parseSize(text);
    return required(size ? levelOf(*size) : std::nullopt, text,
                    "one of ld (320x240), sd (640x480), hd (1280x720)");
}

ScaleMethod filterValue(const std::string& text) {
    const std::string name = toLower(text);
    if (name == "none")
        return SCALE_METHOD_NONE;
    if (name == "bilinear")
        return SCALE_METHOD_BILINEAR;
    if (name == "box")
        return SCALE_METHOD_BOX;
    refuse(text, "one of none, bilinear, box");
}

FileKind kindValue(const std::string& text) {
    return required(parseFileKind(text), text, std::string("one of ") + FILE_KINDS);
}

// PNG is a kind of file that record refuses for what it is, not for its name.
RecordingKind recordingKindValue(const std::string& text) {
    return required(parseRecordingKind(text), text, std::string("one of ") + RECORDING_KINDS);
}

WantedMode modeValue(const std::string& text) {
    return required(parseMode(text), text, std::string("a mode: ") + MODE_NAMES);
}

Rate rateValue(const std::string& text) {
    return required(parseRate(text), text, "a rate from 0.001 to 1000 such as 30, 29.97 or 30000/1001");
}

double secondsValue(const std::string& text) {
    static const struct {
        const char* unit;
        double seconds;
    } UNITS[] = {{"", 1}, {"s", 1}, {"ms", 0.001}, {"m", 60}, {"min", 60}, {"h", 3600}};
    const std::size_t letters = text.find_first_not_of("0123456789.");
    const std::string unit = letters == std::string::npos ? "" : text.substr(letters);
    double value = 0;
    if (parseDecimal(text.substr(0, letters), value))
        for (const auto& known : UNITS)
            if (unit == known.unit && value > 0 && value * known.seconds <= LONGEST_SECONDS)
                return value * known.seconds;
    refuse(text, "a time above 0 in seconds, or such as 500ms, 2s, 5m or 1h");
}

uint64_t numberValue(const std::string& text) {
    uint64_t value = 0;
    if (!parseWhole(text, value))
        refuse(text, "a whole number");
    return value;
}

uint64_t countValue(const std::string& text) {
    uint64_t value = 0;
    if (!parseWhole(text, value) || value == 0)
        refuse(text, "a whole number above 0");
    return value;
}

int qualityValue(const std::string& text) {
    int value = 0;
    if (!parseWhole(text, value) || value < 1 || value > 100)
        refuse(text, "a quality from 1 to 100");
    return value;
}

uint16_t portValue(const std::string& text) {
    uint16_t value = 0;
    if (!parseWhole(text, value))
        refuse(text, "a port from 0 to 65535");
    return value;
}

} // namespace ostrel::apps::cli
