// Memory that is kept by design, for the leak sanitizer.
#ifndef OSTREL_TESTS_SUPPORT_LEAKS_H
#define OSTREL_TESTS_SUPPORT_LEAKS_H

// Only there in sanitizer builds.
extern "C" {
__attribute__((weak)) void __lsan_disable();
__attribute__((weak)) void __lsan_enable();
}

namespace ostrel::support {

// What this thread allocates during its life may stay. Say why wherever it is used.
class KeptByDesign {
public:
    KeptByDesign() {
        if (__lsan_disable)
            __lsan_disable();
    }
    ~KeptByDesign() {
        if (__lsan_enable)
            __lsan_enable();
    }
    KeptByDesign(const KeptByDesign&) = delete;
    KeptByDesign& operator=(const KeptByDesign&) = delete;
};

} // namespace ostrel::support

#endif
