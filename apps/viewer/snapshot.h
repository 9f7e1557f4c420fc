// Saving the picture as a file.
#ifndef OSTREL_APPS_VIEWER_SNAPSHOT_H
#define OSTREL_APPS_VIEWER_SNAPSHOT_H

#include <QtGui/QImage>

namespace ostrel::apps::viewer {

// Writes a PNG file with a new name into the folder. Returns one line for the user: where it is, or why not.
QString saveSnapshot(const QImage& picture, const QString& folder);

// The user's folder for pictures; where there is none, the current one.
QString picturesFolder();

} // namespace ostrel::apps::viewer

#endif
