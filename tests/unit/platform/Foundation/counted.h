// An object that tells how many of its kind live, and what the tests of Foundation share.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_FOUNDATION_COUNTED_H
#define OSTREL_TESTS_UNIT_PLATFORM_FOUNDATION_COUNTED_H

#import <Foundation/Foundation.h>

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace ostrel::tests {

extern std::atomic<int> g_living;

// A pool for the length of a test.
class FoundationTest : public ::testing::Test {
protected:
    FoundationTest() : pool([[NSAutoreleasePool alloc] init]) { g_living = 0; }
    ~FoundationTest() override { [pool drain]; }

    NSAutoreleasePool* const pool;
};

// Misuse on a thread of its own, where nobody catches what a Foundation throws.
template <typename Misuse>
void doWrong(Misuse misuse) {
    std::thread([&] {
        [[NSAutoreleasePool alloc] init];
        misuse();
    }).join();
}

inline std::string text(NSString* string) {
    return string ? [string UTF8String] : "(nil)";
}

} // namespace ostrel::tests

@interface Counted : NSObject
@end

#endif
