// The controls of a camera as text.
#ifndef OSTREL_APPS_CAMERA_CONTROL_LIST_H
#define OSTREL_APPS_CAMERA_CONTROL_LIST_H

#include <ostrel/controls.h>

#include <string>

namespace ostrel::apps::cli {

// Aligned columns under a heading, one line a control.
std::string controlTable(const QList<OVideoControl>& controls);

// An array of objects, ending with a line break; see the manual page.
std::string controlJson(const QList<OVideoControl>& controls);

} // namespace ostrel::apps::cli

#endif
