// What the program tells its user on standard error.
#ifndef OSTREL_APPS_CAMERA_MESSAGES_H
#define OSTREL_APPS_CAMERA_MESSAGES_H

#include <string>

namespace ostrel::apps::cli {

// Holds the standard error stream that the program was started with, also while HiddenLibraryLog has put
// something else in its place. Bound to one thread.
class Messages {
public:
    Messages();
    ~Messages();
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    void setQuiet(bool quiet) { quiet_ = quiet; }
    bool quiet() const { return quiet_; }

    void error(const std::string& line); // "ostrel-camera: line"
    void say(const std::string& line);   // the line alone; nothing when quiet

    void write(const std::string& bytes); // as they are
    int descriptor() const { return descriptor_; }
    bool isTerminal() const;
    int columns() const; // of the terminal; 80 when they are not known

private:
    int descriptor_;
    bool quiet_ = false;
};

} // namespace ostrel::apps::cli

#endif
