// How far a long command is, on a terminal.
#ifndef OSTREL_APPS_CAMERA_PROGRESS_H
#define OSTREL_APPS_CAMERA_PROGRESS_H

#include "apps/camera/messages.h"

#include <chrono>
#include <string>

namespace ostrel::apps::cli {

// "[#####     ] 50%  text", at most columns - 1 wide; without a known fraction (below 0) the text alone.
std::string progressLine(double fraction, const std::string& text, int columns);

// A line that rewrites itself a few times a second. Silent where standard error is no terminal, and when
// quiet.
class Progress {
public:
    explicit Progress(Messages& messages);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Whether update() would draw now: text that costs time to make is made only then.
    bool due() const;
    void update(double fraction, const std::string& text);
    // Takes the line away, so that something else can be said.
    void clear();

private:
    Messages& messages_;
    bool active_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point next_;
};

} // namespace ostrel::apps::cli

#endif
