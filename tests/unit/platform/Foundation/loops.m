#import "unit/platform/Foundation/loops.h"

void visitEach(id<NSFastEnumeration> collection, Visitor visitor, void* context) {
    id object;
    for (object in (id)collection)
        visitor(object, context);
}
