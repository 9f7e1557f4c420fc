// What a test writes to standard error, line by line.
#ifndef OSTREL_TESTS_SUPPORT_STDERR_CAPTURE_H
#define OSTREL_TESTS_SUPPORT_STDERR_CAPTURE_H

#include <string>
#include <vector>

namespace ostrel::support {

// Redirects descriptor 2 to memory while it lives. NSLog writes there too: its date, program and process are
// replaced by "NSLog: ", so that its lines can be compared and told from the others. Sanitizers still report
// to the terminal.
class StderrCapture {
public:
    StderrCapture();
    ~StderrCapture();
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;

    // The lines written since the last call, without their ends. Text that no line break ends yet stays back.
    std::vector<std::string> takeLines();

private:
    int original_;
    int memory_;
    long taken_ = 0;
};

// text + the address as a stream prints it.
std::string withAddress(const std::string& text, const void* address);

} // namespace ostrel::support

#endif
