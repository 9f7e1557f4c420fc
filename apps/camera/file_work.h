// What convert and scale have in common: frames from one file to another.
#ifndef OSTREL_APPS_CAMERA_FILE_WORK_H
#define OSTREL_APPS_CAMERA_FILE_WORK_H

#include "apps/camera/commands.h"
#include "apps/camera/frame_reader.h"

#include <functional>

namespace ostrel::apps::cli {

// The work on the frames of a file, known once its size is.
struct FileStep {
    std::unique_ptr<FrameStep> step;
    Size size; // of what comes out
};

using MakeFileStep = std::function<FileStep(const Size& from, Layout fromLayout, const FileKind& toKind)>;

int runFileWork(const Options& options, const Context& context, const MakeFileStep& makeStep);

} // namespace ostrel::apps::cli

#endif
