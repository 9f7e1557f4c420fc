// Walking a Foundation array. g++ has no syntax for fast enumeration, so the protocol is spelled out here.
#ifndef OSTREL_BASE_FAST_ENUMERATION_H
#define OSTREL_BASE_FAST_ENUMERATION_H

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <string.h>

namespace ostrel {

// Calls visit(id) for each object in order until it returns false. The array must not change meanwhile: a
// change is reported as the runtime reports it for the language's own loops.
template <typename Visit>
void forEachObject(NSArray* array, Visit visit) {
    const NSUInteger BATCH = 16;
    NSFastEnumerationState state;
    memset(&state, 0, sizeof state);
    id batch[BATCH];
    NSUInteger count = [array countByEnumeratingWithState:&state objects:batch count:BATCH];
    const unsigned long mutations = count ? *state.mutationsPtr : 0;
    while (count) {
        for (NSUInteger i = 0; i < count; ++i) {
            if (*state.mutationsPtr != mutations)
                objc_enumerationMutation(array);
            if (!visit(state.itemsPtr[i]))
                return;
        }
        count = [array countByEnumeratingWithState:&state objects:batch count:BATCH];
    }
}

} // namespace ostrel

#endif
