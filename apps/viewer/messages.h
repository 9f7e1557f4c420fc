// What the window says in plain words when there is no live picture.
#ifndef OSTREL_APPS_VIEWER_MESSAGES_H
#define OSTREL_APPS_VIEWER_MESSAGES_H

#include "apps/viewer/capture_source.h"

#include <QtCore/QString>

namespace ostrel::apps::viewer {

struct Message {
    QString title;
    QString detail; // what to do about it

    bool isEmpty() const { return title.isEmpty(); }
    bool operator==(const Message& other) const { return title == other.title && detail == other.detail; }
};

Message noCamera();
// wanted: what was asked for on the command line; several: it fits more than one camera. why: it fits none.
Message noSuchCamera(const QString& wanted, bool several, const QString& why);
// Empty while the picture is live. camera: its name for people.
Message captureMessage(const CaptureSource& source, const QString& camera);

} // namespace ostrel::apps::viewer

#endif
