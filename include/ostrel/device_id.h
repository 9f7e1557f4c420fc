// From what people have saved or typed to the identifier of an attached camera (Linux).
#ifndef OSTREL_DEVICE_ID_H
#define OSTREL_DEVICE_ID_H

#include <ostrel/export.h>

#include <QtCore/QString>

namespace ostrel {

// The identifier, as videoDevices() has it, of the one attached camera that the text means:
//  1. its identifier, letter case ignored where no identifier is exactly the text;
//  2. the path of its node, or of any link to it: /dev/video2, /dev/v4l/by-id/..., /dev/v4l/by-path/...;
//  3. an identifier that release 1.0.0 gave it, or that it had in another USB port (its model and serial
//  number
//     decide, and it must be the only one that has them);
//  4. its name, exactly.
// The first of these that fits any camera decides. Empty when none or several fit; the reason, in words that
// name those that do, is then in *why, which may be null. Asks no hardware that is in use. Any thread may
// call.
//
// Looking cameras up and capturing stay exact: pass them the answer.
OSTREL_EXPORT QString videoDeviceID(const QString& text, QString* why = 0);

} // namespace ostrel

#endif
