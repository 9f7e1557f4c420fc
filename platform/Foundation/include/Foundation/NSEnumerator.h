// Fast enumeration, by which for (id object in collection) walks.
#ifndef OSTREL_FOUNDATION_NSENUMERATOR_H
#define OSTREL_FOUNDATION_NSENUMERATOR_H

#import <Foundation/NSObject.h>

typedef struct {
    unsigned long state;         // 0 at the start
    id* itemsPtr;                // the objects of this batch
    unsigned long* mutationsPtr; // its target differs once the collection was changed
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id*)buffer
                                    count:(NSUInteger)length;
@end

#endif
