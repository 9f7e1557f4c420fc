// The whole program: from arguments to exit code.
#ifndef OSTREL_APPS_CAMERA_APPLICATION_H
#define OSTREL_APPS_CAMERA_APPLICATION_H

namespace ostrel::apps::cli {

int runApplication(int argc, const char* const* argv);

} // namespace ostrel::apps::cli

#endif
