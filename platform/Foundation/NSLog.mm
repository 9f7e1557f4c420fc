#import <Foundation/Foundation.h>

#include "platform/Foundation/failure.h"
#include "platform/Foundation/text.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// "2026-01-02 03:04:05.678 program[process:thread] "
std::string head() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local = {};
    localtime_r(&now.tv_sec, &local);
    char date[32];
    strftime(date, sizeof date, "%F %T", &local);
    char text[512];
    const int length = snprintf(text, sizeof text, "%s.%03ld %.255s[%d:%ld] ", date, now.tv_nsec / 1000000,
                                program_invocation_short_name, getpid(), syscall(SYS_gettid));
    return std::string(text, static_cast<std::size_t>(length));
}

} // namespace

void NSLogv(NSString* format, va_list arguments) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init]; // for the descriptions
    std::string line = head() + ostrel::foundation::formatted(format, arguments);
    [pool release];
    if (line.back() != '\n')
        line += '\n';
    while (write(STDERR_FILENO, line.data(), line.size()) < 0 && errno == EINTR) {
    }
}

void NSLog(NSString* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    NSLogv(format, arguments);
    va_end(arguments);
}

void ostrel::foundation::misuse(NSString* what, ...) {
    va_list arguments;
    va_start(arguments, what);
    NSLogv(what, arguments);
    std::abort();
}
