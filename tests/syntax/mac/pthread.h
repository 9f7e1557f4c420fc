// With the one call that is another on macOS: a thread names itself alone there.
#ifndef OSTREL_TESTS_SYNTAX_PTHREAD_H
#define OSTREL_TESTS_SYNTAX_PTHREAD_H

#define pthread_setname_np nameOfAnyThread
#include_next <pthread.h>
#undef pthread_setname_np

#ifdef __cplusplus
extern "C"
#endif
int pthread_setname_np(const char* name);

#endif
