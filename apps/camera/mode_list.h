// The modes of a camera as text.
#ifndef OSTREL_APPS_CAMERA_MODE_LIST_H
#define OSTREL_APPS_CAMERA_MODE_LIST_H

#include <ostrel/modes.h>

#include <QtCore/QJsonArray>

#include <string>

namespace ostrel::apps::cli {

// Aligned columns without a heading, one line for each format and size; empty without modes.
std::string modeTable(const QList<OVideoMode>& modes);

// [{"format": "MJPG", "picture": true, "width": ..., "height": ..., "interval": [1, 30], "rate": 30}]; of
// ranges with "least" and "step", each with width and height, and with "longestInterval". What the driver
// does not say is left out.
QJsonArray modeJson(const QList<OVideoMode>& modes);

} // namespace ostrel::apps::cli

#endif
