// What arrays and dictionaries have in common.
#ifndef OSTREL_PLATFORM_FOUNDATION_COLLECTION_H
#define OSTREL_PLATFORM_FOUNDATION_COLLECTION_H

#import <Foundation/NSEnumerator.h>

#include <stdarg.h>
#include <string>
#include <vector>

namespace ostrel::foundation {

// The first argument and those behind it, up to nil.
std::vector<id> argumentsUpToNil(id first, va_list rest);

// Ends the process when the object is nil, with the name of the method that was called.
void refuseNil(id object, id collection, SEL method);

// An object's description within that of its collection: in quotes, unless it is one word or a collection
// itself.
std::string descriptionWithin(id object);

// Everything as one batch of a fast enumeration.
NSUInteger enumerateAll(NSFastEnumerationState* state, std::vector<id>& objects, unsigned long& mutations);

} // namespace ostrel::foundation

#endif
