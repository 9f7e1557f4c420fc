// How people and files write down controls and their values.
#ifndef OSTREL_APPS_COMMON_CONTROL_NAMES_H
#define OSTREL_APPS_COMMON_CONTROL_NAMES_H

#include <ostrel/controls.h>

#include <string>
#include <vector>

namespace ostrel::apps {

// "white_balance_automatic": the name in lower case, everything but letters and digits as one '_'.
std::string controlKey(const QString& name);
inline std::string controlKey(const OVideoControl& control) {
    return controlKey(control.name());
}

// The control that is meant: by its key, by one that other kernels have for it ("exposure_auto" is
// "auto_exposure"), by its name, or by its number. -1: none.
int findControl(const QList<OVideoControl>& controls, const std::string& name);
// The one with this number; -1: none.
int findControl(const QList<OVideoControl>& controls, uint32_t id);

// Its value as people read it: "3 (Auto)", "on", "0x00000003"; "-" where it has none.
std::string valueText(const OVideoControl& control);
std::string valueText(const OVideoControl& control, int64_t value);

// The settings that a text stands for: a number, an item of a menu, on or off, "default", or "auto", which
// turns to the automatic control where that is another one. Throws std::invalid_argument with what would be
// right.
OVideoControl withValue(const OVideoControl& control, const QList<OVideoControl>& all,
                        const std::string& text);

} // namespace ostrel::apps

#endif
