#include "apps/camera/option_values.h"

#include "apps/camera/text.h"

#include <CLI/CLI.hpp>

#include <charconv>

namespace ostrel {
namespace cli {

namespace {

const double LONGEST_SECONDS = 1e6;

[[noreturn]] void refuse(const std::string& text, const std::string& expected) {
    throw CLI::ValidationError(quoted(text) + " is not " + expected);
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
    return required(parseSize(text), text,
                    "a frame size: ld, sd, hd or WIDTHxHEIGHT with sides of 1 to " +
                        std::to_string(MAXIMUM_EXTENT) + " pixels");
}

VIDEO_QUALITY levelValue(const std::string& text) {
    return required(parseLevel(text), text, "one of ld (320x240), sd (640x480), hd (1280x720)");
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
    return required(parseFileKind(text), text, std::string("one of ") + fileKindNames());
}

Rate rateValue(const std::string& text) {
    return required(parseRate(text), text, "a rate such as 30, 29.97 or 30000/1001");
}

double secondsValue(const std::string& text) {
    double value = 0;
    if (!parseWhole(text, value) || !(value > 0 && value <= LONGEST_SECONDS))
        refuse(text, "a number of seconds above 0");
    return value;
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

} // namespace cli
} // namespace ostrel
