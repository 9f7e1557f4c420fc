// The platform's object runtime, cut down to what capture/ and devices/ use.
#ifndef OSTREL_TESTS_SYNTAX_OBJC_RUNTIME_H
#define OSTREL_TESTS_SYNTAX_OBJC_RUNTIME_H

#ifdef __cplusplus
extern "C"
#else
extern
#endif
    void
    objc_enumerationMutation(id object);

#endif
