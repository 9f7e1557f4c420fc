#include "support/stderr_capture.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <regex>
#include <sstream>
#include <sys/mman.h>
#include <unistd.h>

// Only there in sanitizer builds.
extern "C" __attribute__((weak)) void __sanitizer_set_report_fd(void* fd);

namespace ostrel::support {

namespace {

void reportTo(int descriptor) {
    if (__sanitizer_set_report_fd)
        __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<intptr_t>(descriptor)));
}

std::string withoutLogPrefix(const std::string& line) {
    static const std::regex prefix(
        "^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}\\.[0-9]+ [^ ]+\\[[0-9]+:[0-9a-fx]+\\] ");
    std::smatch found;
    return std::regex_search(line, found, prefix) ? "NSLog: " + found.suffix().str() : line;
}

} // namespace

StderrCapture::StderrCapture() : original_(::dup(2)), memory_(::memfd_create("stderr", MFD_CLOEXEC)) {
    if (original_ < 0 || memory_ < 0 || ::dup2(memory_, 2) < 0) {
        std::perror("redirecting standard error");
        std::abort();
    }
    reportTo(original_);
}

StderrCapture::~StderrCapture() {
    ::dup2(original_, 2);
    reportTo(2);
    ::close(original_);
    ::close(memory_);
}

std::vector<std::string> StderrCapture::takeLines() {
    std::string text;
    char block[4096];
    for (ssize_t got;
         (got = ::pread(memory_, block, sizeof block, taken_ + static_cast<long>(text.size()))) > 0;)
        text.append(block, static_cast<std::size_t>(got));
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(withoutLogPrefix(text.substr(start, end - start)));
    taken_ += static_cast<long>(start);
    return lines;
}

std::string withAddress(const std::string& text, const void* address) {
    std::ostringstream line;
    line << text << address;
    return line.str();
}

} // namespace ostrel::support
