// The language's own loop over a collection, which g++ does not know.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_FOUNDATION_LOOPS_H
#define OSTREL_TESTS_UNIT_PLATFORM_FOUNDATION_LOOPS_H

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*Visitor)(id object, void* context);
void visitEach(id<NSFastEnumeration> collection, Visitor visitor, void* context);

#ifdef __cplusplus
}
#endif

#endif
