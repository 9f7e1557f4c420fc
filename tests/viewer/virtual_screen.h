// An X server without a monitor, whose screen the tests can read as a whole.
#ifndef OSTREL_TESTS_VIEWER_VIRTUAL_SCREEN_H
#define OSTREL_TESTS_VIEWER_VIRTUAL_SCREEN_H

#include <QtCore/QByteArray>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <sys/types.h>

namespace ostrel::tests {

// Runs Xvfb while it lives, on a display number that the server picks itself.
class VirtualScreen {
public:
    VirtualScreen(int width, int height);
    ~VirtualScreen();
    VirtualScreen(const VirtualScreen&) = delete;
    VirtualScreen& operator=(const VirtualScreen&) = delete;

    bool runs() const { return !display_.isEmpty(); }
    QByteArray display() const { return display_; } // ":1"
    // What a monitor would show now; null when the server's memory cannot be read.
    QImage picture() const;

private:
    void start(int width, int height);

    QTemporaryDir memory_; // the server keeps its screen in a file there
    pid_t server_ = -1;
    QByteArray display_;
};

} // namespace ostrel::tests

#endif
