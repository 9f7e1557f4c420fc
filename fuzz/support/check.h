// What must hold for every input. A failure ends the process, which is how a fuzzer learns of it.
#ifndef OSTREL_FUZZ_CHECK_H
#define OSTREL_FUZZ_CHECK_H

#include <stdio.h>
#include <stdlib.h>

#define CHECK(condition)                                                                                     \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);                          \
            abort();                                                                                         \
        }                                                                                                    \
    } while (false)

#endif
