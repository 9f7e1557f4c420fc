// The page with the live picture.
#ifndef OSTREL_APPS_CAMERA_SERVE_PAGE_H
#define OSTREL_APPS_CAMERA_SERVE_PAGE_H

#include "apps/camera/serve/audience.h"

#include <string>

namespace ostrel::apps::cli {

// name: of the camera, UTF-8, any characters.
std::string pageHtml(const std::string& name);
extern const char PAGE_STYLE[];
extern const char PAGE_SCRIPT[];
// now: nanoseconds of CLOCK_MONOTONIC.
std::string statusJson(const LiveFacts& facts, const Size& size, int64_t now);

// Characters that mean something in HTML become references, those that cannot be shown '?'.
std::string htmlText(const std::string& utf8);

} // namespace ostrel::apps::cli

#endif
