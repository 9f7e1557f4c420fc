// Options and suppressions of the sanitizers, compiled into each test program so that it behaves the same by
// hand, in a debugger and under ctest.

#define SANITIZER_HOOK extern "C" __attribute__((visibility("default"), used))

#if defined(__SANITIZE_ADDRESS__)
#define OSTREL_ADDRESS_SANITIZER 1
#elif defined(__SANITIZE_THREAD__)
#define OSTREL_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OSTREL_ADDRESS_SANITIZER 1
#elif __has_feature(thread_sanitizer)
#define OSTREL_THREAD_SANITIZER 1
#endif
#endif

#ifdef OSTREL_ADDRESS_SANITIZER

// fast_unwind_on_malloc=0:allocator_may_return_null=1: the frameworks are built without frame pointers; with
// the fast unwinder the stacks of their allocations end before the name that a suppression looks for.
// allocator_may_return_null=1: malloc answers null when there is not enough memory, as it does elsewhere.
SANITIZER_HOOK const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0:allocator_may_return_null=1:detect_stack_use_after_return=1";
}

SANITIZER_HOOK const char* __lsan_default_suppressions() {
    return
        // The Objective-C runtime loses small pieces while it makes the classes of a program known.
        "leak:__objc_exec_class\n"
        // A capture session keeps its framework objects when it is freed, and a driver that was never started
        // keeps its session: both are how these classes work, small, and bounded in a test of their own.
        "leak:_i_VideoCaptureThreadObj__startObjCapture\n"
        "leak:ostrel::session::create\n";
}

SANITIZER_HOOK const char* __lsan_default_options() {
    return "print_suppressions=0";
}

SANITIZER_HOOK const char* __ubsan_default_options() {
    return "print_stacktrace=1";
}

#endif

#ifdef OSTREL_THREAD_SANITIZER

// ignore_noninstrumented_modules=1: Qt and libobjc are not instrumented, so the order that their own
// locks and atomics give to their own memory is not seen and would be reported as races. detect_deadlocks=0:
// libobjc takes its runtime lock and the locks of objects in either order while it sets up a class; nothing
// of that is ours to order.
SANITIZER_HOOK const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1:detect_deadlocks=0:allocator_may_return_null=1";
}

#endif
