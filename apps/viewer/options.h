// The command line of ostrel-viewer.
#ifndef OSTREL_APPS_VIEWER_OPTIONS_H
#define OSTREL_APPS_VIEWER_OPTIONS_H

#include "apps/common/size.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace ostrel::apps::viewer {

struct Options {
    bool testCamera = false;
    QString play;   // a file; empty: none
    QString camera; // identifier, name or a part of it; empty: the first
    Size size = sizeOf(VIDEO_QUALITY_SD);
    bool fullScreen = false;
};

// What the command line asks for: a window with options, or a text and an end.
struct Request {
    std::optional<Options> options;
    QString answer; // for standard output, or for standard error when the exit code is not 0
    int exitCode = 0;
};

// Needs a QCoreApplication, but no display. arguments: the program's name comes first.
Request parseCommandLine(const QStringList& arguments);

} // namespace ostrel::apps::viewer

#endif
