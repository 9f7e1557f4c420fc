// The commands. Each returns an exit code or throws a Failure.
#ifndef OSTREL_APPS_CAMERA_COMMANDS_H
#define OSTREL_APPS_CAMERA_COMMANDS_H

#include "apps/camera/messages.h"
#include "apps/camera/options.h"
#include "apps/camera/stop_request.h"

namespace ostrel::apps::cli {

// What a command works with beside its options.
struct Context {
    Messages& messages;
    const StopRequest& stop;
};

int runList(const Options& options, const Context& context);
int runSnapshot(const Options& options, const Context& context);
int runRecord(const Options& options, const Context& context);
int runServe(const Options& options, const Context& context);
int runWatch(const Options& options, const Context& context);
int runControls(const Options& options, const Context& context);
int runDoctor(const Options& options, const Context& context);
int runConvert(const Options& options, const Context& context);
int runScale(const Options& options, const Context& context);

} // namespace ostrel::apps::cli

#endif
