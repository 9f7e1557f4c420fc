#include "platform/Foundation/collection.h"

#include "platform/Foundation/failure.h"

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <algorithm>
#include <cctype>

namespace ostrel::foundation {

std::vector<id> argumentsUpToNil(id first, va_list rest) {
    std::vector<id> result;
    for (id each = first; each; each = va_arg(rest, id))
        result.push_back(each);
    return result;
}

void refuseNil(id object, id collection, SEL method) {
    if (!object)
        misuse(@"-[%s %s]: an object is nil", object_getClassName(collection), sel_getName(method));
}

std::string descriptionWithin(id object) {
    const std::string text = [[object description] UTF8String];
    const bool isWord = !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char byte) {
        return std::isalnum(byte) || byte == '_';
    });
    if (isWord || [object isKindOfClass:[NSArray class]] || [object isKindOfClass:[NSDictionary class]])
        return text;
    std::string quoted = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\')
            quoted += '\\';
        quoted += byte;
    }
    return quoted + '"';
}

NSUInteger enumerateAll(NSFastEnumerationState* state, std::vector<id>& objects, unsigned long& mutations) {
    state->mutationsPtr = &mutations;
    state->itemsPtr = objects.data();
    return state->state++ == 0 ? objects.size() : 0;
}

} // namespace ostrel::foundation
