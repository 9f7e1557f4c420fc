// The commands. Each returns an exit code or throws a Failure.
#ifndef OSTREL_APPS_CAMERA_COMMANDS_H
#define OSTREL_APPS_CAMERA_COMMANDS_H

#include "apps/camera/messages.h"
#include "apps/camera/options.h"
#include "apps/camera/stop_request.h"

namespace ostrel::apps::cli {

// What a command works with beside its options.
struct Surroundings {
    Messages& messages;
    const StopRequest& stop;
};

int runList(const Options& options, const Surroundings& around);
int runSnapshot(const Options& options, const Surroundings& around);
int runRecord(const Options& options, const Surroundings& around);
int runServe(const Options& options, const Surroundings& around);
int runWatch(const Options& options, const Surroundings& around);
int runControls(const Options& options, const Surroundings& around);
int runDoctor(const Options& options, const Surroundings& around);
int runConvert(const Options& options, const Surroundings& around);
int runScale(const Options& options, const Surroundings& around);

} // namespace ostrel::apps::cli

#endif
