#include "platform/cameras/pipewire/camera_node.h"

#include "platform/cameras/device_texts.h"

#include <cctype>
#include <cstdlib>
#include <pipewire/keys.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

// "0x046d". Old versions have no room for the last digit, and a number that is cut off is another one.
int hardwareNumber(const std::string& text) {
    if (text.size() != 6 || text.compare(0, 2, "0x") != 0)
        return 0;
    char* end = nullptr;
    const long number = std::strtol(text.c_str() + 2, &end, 16);
    return *end == '\0' && std::isxdigit(static_cast<unsigned char>(text[2])) ? static_cast<int>(number) : 0;
}

} // namespace

std::string text(const spa_dict* properties, const char* key) {
    const char* const value = properties ? spa_dict_lookup(properties, key) : nullptr;
    return value ? value : "";
}

// Not PW_KEY_DEVICE_SERIAL: that is udev's, made of the maker's name, the model's and the number.
CameraDetails readDetails(const spa_dict* properties) {
    CameraDetails details;
    details.driver = validUtf8(text(properties, "api.v4l2.cap.driver"));
    details.bus = validUtf8(text(properties, "api.v4l2.cap.bus_info"));
    if (details.bus.empty())
        details.bus = validUtf8(text(properties, PW_KEY_DEVICE_BUS_PATH));
    details.vendor = hardwareNumber(text(properties, PW_KEY_DEVICE_VENDOR_ID));
    details.product = hardwareNumber(text(properties, PW_KEY_DEVICE_PRODUCT_ID));
    return details;
}

void complete(CameraDetails& details, const CameraDetails& more) {
    if (details.driver.empty())
        details.driver = more.driver;
    if (details.bus.empty())
        details.bus = more.bus;
    if (details.vendor == 0 && details.product == 0) {
        details.vendor = more.vendor;
        details.product = more.product;
    }
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
