#include "apps/common/control_names.h"

#include "apps/common/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <linux/v4l2-controls.h>
#include <stdexcept>

namespace ostrel::apps {

namespace {

// Keys by the names that controls had in other kernels.
struct OtherKey {
    uint32_t id;
    const char* key;
};

const OtherKey OTHER_KEYS[] = {
    {V4L2_CID_EXPOSURE_AUTO, "exposure_auto"},
    {V4L2_CID_EXPOSURE_AUTO, "auto_exposure"},
    {V4L2_CID_EXPOSURE_ABSOLUTE, "exposure_absolute"},
    {V4L2_CID_EXPOSURE_ABSOLUTE, "exposure_time_absolute"},
    {V4L2_CID_EXPOSURE_AUTO_PRIORITY, "exposure_auto_priority"},
    {V4L2_CID_EXPOSURE_AUTO_PRIORITY, "exposure_dynamic_framerate"},
    {V4L2_CID_AUTO_WHITE_BALANCE, "white_balance_temperature_auto"},
    {V4L2_CID_AUTO_WHITE_BALANCE, "white_balance_component_auto"},
    {V4L2_CID_AUTO_WHITE_BALANCE, "white_balance_automatic"},
    {V4L2_CID_FOCUS_AUTO, "focus_auto"},
    {V4L2_CID_FOCUS_AUTO, "focus_automatic_continuous"},
    {V4L2_CID_HUE_AUTO, "hue_auto"},
    {V4L2_CID_HUE_AUTO, "hue_automatic"},
    {V4L2_CID_AUTOGAIN, "autogain"},
    {V4L2_CID_AUTOGAIN, "gain_automatic"},
    {V4L2_CID_AUTOBRIGHTNESS, "brightness_automatic"},
    {V4L2_CID_POWER_LINE_FREQUENCY, "power_line_frequency"},
};

bool isMenu(const OVideoControl& control) {
    return control.type() == OVideoControl::MENU || control.type() == OVideoControl::INTEGER_MENU;
}

// 010 is ten.
bool parseNumber(const std::string& text, int64_t& number) {
    const int base = text.find_first_of("xX") == std::string::npos ? 10 : 16;
    char* end = nullptr;
    errno = 0;
    number = std::strtoll(text.c_str(), &end, base);
    return !text.empty() && *end == '\0' && errno == 0;
}

bool isOneOf(const std::string& text, std::initializer_list<const char*> words) {
    for (const char* word : words)
        if (text == word)
            return true;
    return false;
}

// By the whole text, else by its beginning where only one begins so.
bool parseItem(const OVideoControl& control, const std::string& wanted, int64_t& number) {
    const QString text = QString::fromStdString(wanted);
    const QMap<int, QString> items = control.items();
    int found = 0;
    for (auto item = items.begin(); item != items.end(); ++item) {
        if (item.value().compare(text, Qt::CaseInsensitive) == 0) {
            number = item.key();
            return true;
        }
        if (item.value().startsWith(text, Qt::CaseInsensitive)) {
            number = item.key();
            ++found;
        }
    }
    return found == 1;
}

// The value of an item, else its name: "50" is the beginning of "50 Hz".
bool parseChoice(const OVideoControl& control, const std::string& text, int64_t& number) {
    const bool isNumber = parseNumber(text, number);
    const QList<int> values = control.items().keys();
    const auto isChoice = [&](int value) { return value == number; };
    if (isNumber && std::any_of(values.begin(), values.end(), isChoice))
        return true;
    return parseItem(control, text, number) || parseNumber(text, number);
}

bool parseValue(const OVideoControl& control, const std::string& text, int64_t& number) {
    const std::string word = toLower(text);
    const bool isDefault = word == "default";
    if (isDefault || control.type() == OVideoControl::BUTTON)
        number = isDefault ? control.defaultValue() : 1;
    else if (control.type() == OVideoControl::BOOLEAN && isOneOf(word, {"on", "true", "yes"}))
        number = 1;
    else if (control.type() == OVideoControl::BOOLEAN && isOneOf(word, {"off", "false", "no", "manual"}))
        number = 0;
    else
        return isMenu(control) ? parseChoice(control, text, number) : parseNumber(text, number);
    return true;
}

std::string numberText(int64_t value) {
    return std::to_string(static_cast<long long>(value));
}

std::string choices(const OVideoControl& control) {
    if (control.type() == OVideoControl::BOOLEAN)
        return "on, off, default";
    std::string text;
    if (isMenu(control)) {
        const QList<int> values = control.items().keys();
        for (const int value : values)
            text += (text.empty() ? "" : ", ") + valueText(control, value);
    } else {
        text = numberText(control.minimum()) + " to " + numberText(control.maximum());
    }
    return text + ", default";
}

// What lets the camera decide: of exposures the mode that leaves the aperture alone, as webcams have it.
int64_t automaticValue(const OVideoControl& automatic) {
    if (automatic.id() != V4L2_CID_EXPOSURE_AUTO)
        return 1;
    return automatic.items().contains(V4L2_EXPOSURE_APERTURE_PRIORITY) ? V4L2_EXPOSURE_APERTURE_PRIORITY
                                                                       : V4L2_EXPOSURE_AUTO;
}

OVideoControl automaticOf(const OVideoControl& control, const QList<OVideoControl>& all) {
    const int other = findControl(all, control.automaticControl());
    bool isAutomatic = false;
    for (const OVideoControl& one : all)
        isAutomatic = isAutomatic || one.automaticControl() == control.id();
    if (other < 0 && !isAutomatic)
        throw std::invalid_argument(controlKey(control) + " has no automatic mode");
    OVideoControl result = other < 0 ? control : all[other];
    result.setValue(automaticValue(result));
    return result;
}

} // namespace

std::string controlKey(const QString& name) {
    std::string key;
    for (const char letter : toLower(name.toStdString())) {
        const bool counts = (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
        if (counts)
            key += letter;
        else if (!key.empty() && key.back() != '_')
            key += '_';
    }
    if (!key.empty() && key.back() == '_')
        key.pop_back();
    return key;
}

int findControl(const QList<OVideoControl>& controls, uint32_t id) {
    for (int i = 0; i < static_cast<int>(controls.size()); ++i)
        if (id != 0 && controls[i].id() == id)
            return i;
    return -1;
}

int findControl(const QList<OVideoControl>& controls, const std::string& name) {
    const std::string key = controlKey(QString::fromStdString(name));
    for (int i = 0; i < static_cast<int>(controls.size()); ++i)
        if (controlKey(controls[i]) == key)
            return i;
    for (const OtherKey& other : OTHER_KEYS)
        if (key == other.key && findControl(controls, other.id) >= 0)
            return findControl(controls, other.id);
    int64_t number = 0;
    return parseNumber(name, number) && number > 0 && number <= UINT32_MAX
               ? findControl(controls, static_cast<uint32_t>(number))
               : -1;
}

std::string valueText(const OVideoControl& control) {
    if (!control.hasValue())
        return "-";
    if (control.type() == OVideoControl::TEXT)
        return quoted(control.text().toStdString());
    return valueText(control, control.value());
}

std::string valueText(const OVideoControl& control, int64_t value) {
    if (control.type() == OVideoControl::BOOLEAN)
        return value ? "on" : "off";
    if (isMenu(control))
        return numberText(value) + " (" +
               printable(control.items().value(static_cast<int>(value)).toStdString()) + ")";
    if (control.type() == OVideoControl::BITMASK) {
        char text[32];
        std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(value));
        return text;
    }
    return numberText(value);
}

OVideoControl withValue(const OVideoControl& control, const QList<OVideoControl>& all,
                        const std::string& text) {
    OVideoControl result = control;
    int64_t number = 0;
    if (control.type() == OVideoControl::TEXT)
        result.setText(QString::fromStdString(text));
    else if (parseValue(control, text, number))
        result.setValue(number);
    else if (toLower(text) == "auto")
        return automaticOf(control, all);
    else
        throw std::invalid_argument(quoted(text) + " is no value of " + controlKey(control) + ": " +
                                    choices(control));
    return result;
}

} // namespace ostrel::apps
