// Keeps the library's own lines on standard error away from the user, and remembers what they say.
#ifndef OSTREL_APPS_COMMON_LIBRARY_LOG_H
#define OSTREL_APPS_COMMON_LIBRARY_LOG_H

#include <cstdint>
#include <string>

namespace ostrel::apps {

// What the library's lines have said so far; fed with whole or partial lines.
class LibraryLogReader {
public:
    void feed(const std::string& bytes);

    // The reason of the last error that keeps the camera from running; empty when there was none.
    const std::string& error() const { return error_; }
    // Bytes of the last frame that was refused for its size; 0 when none was.
    int64_t refusedFrameBytes() const { return refusedFrameBytes_; }

private:
    void readLine(const std::string& line);

    std::string partial_;
    std::string error_;
    int64_t refusedFrameBytes_ = 0;
};

// While it lives, file descriptor 2 is a file in memory. The library's diagnostics come from any of its
// threads at any time, so they are collected there and looked at by drain(). One object at a time; bound to
// one thread.
class LibraryLog {
public:
    // Passes the lines on to where standard error was.
    LibraryLog() : LibraryLog(-1, true) {}
    // visible: the descriptor to which the lines are passed on when show is set; -1: where standard error
    // was.
    LibraryLog(int visible, bool show);
    ~LibraryLog(); // gives standard error back
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;

    // Reads what has been written since the last call.
    const LibraryLogReader& drain();

private:
    int visible_;
    bool show_;
    int before_ = -1; // what descriptor 2 was
    int memory_ = -1;
    int64_t position_ = 0; // what lies before it has been read
    LibraryLogReader reader_;
};

} // namespace ostrel::apps

#endif
