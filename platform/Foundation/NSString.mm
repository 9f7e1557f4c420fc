#import <Foundation/Foundation.h>

#include "platform/Foundation/failure.h"
#include "platform/Foundation/text.h"

#import <objc/runtime.h>

#include <climits>
#include <cstring>

using ostrel::foundation::misuse;

namespace {

bool isText(std::string_view text, NSStringEncoding encoding) {
    const std::size_t longest = encoding == NSASCIIStringEncoding ? 1 : 4;
    while (!text.empty()) {
        const std::size_t bytes = ostrel::foundation::bytesOfCharacter(text);
        if (bytes == 0 || bytes > longest)
            return false;
        text.remove_prefix(bytes);
    }
    return true;
}

} // namespace

@implementation NSString

+ (id)string {
    return @"";
}

+ (id)stringWithString:(NSString*)string {
    return [[[self alloc] initWithBytes:string->bytes length:string->size
                               encoding:NSUTF8StringEncoding] autorelease];
}

+ (id)stringWithUTF8String:(const char*)text {
    return [[[self alloc] initWithUTF8String:text] autorelease];
}

+ (id)stringWithFormat:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    NSString* const string = [[self alloc] initWithFormat:format arguments:arguments];
    va_end(arguments);
    return [string autorelease];
}

- (id)init {
    return [self initWithBytes:"" length:0 encoding:NSUTF8StringEncoding];
}

- (id)initWithUTF8String:(const char*)text {
    if (!text)
        misuse(@"-[NSString initWithUTF8String:]: the text is NULL");
    return [self initWithBytes:text length:std::strlen(text) encoding:NSUTF8StringEncoding];
}

- (id)initWithBytes:(const void*)text length:(NSUInteger)length encoding:(NSStringEncoding)encoding {
    const ostrel::foundation::ReleasedOnException guard{self};
    const std::string_view view(static_cast<const char*>(text), length);
    if (length > UINT_MAX || (encoding != NSUTF8StringEncoding && encoding != NSASCIIStringEncoding))
        misuse(@"-[NSString %s]: %lu bytes in encoding %lu", sel_getName(_cmd), length, encoding);
    if (!isText(view, encoding)) {
        [self release];
        return nil;
    }
    char* const memory = new char[length + 1];
    memory[view.copy(memory, length)] = '\0';
    bytes = memory;
    size = static_cast<unsigned int>(length);
    return self;
}

- (id)initWithFormat:(NSString*)format, ... {
    va_list arguments;
    va_start(arguments, format);
    self = [self initWithFormat:format arguments:arguments];
    va_end(arguments);
    return self;
}

- (id)initWithFormat:(NSString*)format arguments:(va_list)arguments {
    const std::string text = [&] {
        const ostrel::foundation::ReleasedOnException guard{self};
        return ostrel::foundation::formatted(format, arguments);
    }();
    return [self initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
}

- (void)dealloc {
    delete[] bytes;
    [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

- (NSUInteger)length {
    NSUInteger units = 0;
    for (const char* byte = bytes; byte != bytes + size; ++byte)
        units += (*byte & 0xC0) == 0x80 ? 0 : (*byte & 0xF8) == 0xF0 ? 2 : 1;
    return units;
}

- (const char*)UTF8String {
    return bytes;
}

- (BOOL)isEqualToString:(NSString*)string {
    return string && size == string->size && std::memcmp(bytes, string->bytes, size) == 0;
}

- (BOOL)isEqual:(id)object {
    return [object isKindOfClass:[NSString class]] && [self isEqualToString:object];
}

- (NSUInteger)hash {
    return std::hash<std::string_view>()(std::string_view(bytes, size));
}

- (NSString*)description {
    return self;
}

@end

@implementation NSConstantString

- (id)retain {
    return self;
}

- (oneway void)release {
}

- (id)autorelease {
    return self;
}

- (NSUInteger)retainCount {
    return NSUIntegerMax;
}

@end
