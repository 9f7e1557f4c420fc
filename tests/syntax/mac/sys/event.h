// Kernel queues by their published names, as far as the library uses them.
#ifndef OSTREL_TESTS_SYNTAX_SYS_EVENT_H
#define OSTREL_TESTS_SYNTAX_SYS_EVENT_H

#include <stdint.h>
#include <time.h>

#define EVFILT_READ (-1)
#define EVFILT_TIMER (-7)
#define EV_ADD 0x0001
#define EV_DELETE 0x0002

struct kevent {
    uintptr_t ident;
    int16_t filter;
    uint16_t flags;
    uint32_t fflags;
    intptr_t data;
    void* udata;
};

#ifdef __cplusplus
extern "C" {
#endif

int kqueue(void);
int kevent(int queue, const struct kevent* changes, int changeCount, struct kevent* events, int eventCount,
           const struct timespec* timeout);

#ifdef __cplusplus
}
#endif

#endif
