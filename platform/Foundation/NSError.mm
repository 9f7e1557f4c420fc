#import <Foundation/Foundation.h>

NSString* const NSLocalizedDescriptionKey = @"NSLocalizedDescription";

@implementation NSError

+ (id)errorWithDomain:(NSString*)aDomain code:(NSInteger)aCode userInfo:(NSDictionary*)dictionary {
    return [[[self alloc] initWithDomain:aDomain code:aCode userInfo:dictionary] autorelease];
}

- (id)initWithDomain:(NSString*)aDomain code:(NSInteger)aCode userInfo:(NSDictionary*)dictionary {
    domain = [aDomain copy];
    code = aCode;
    userInfo = [dictionary copy];
    return self;
}

- (void)dealloc {
    [domain release];
    [userInfo release];
    [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

- (NSString*)domain {
    return domain;
}

- (NSInteger)code {
    return code;
}

- (NSDictionary*)userInfo {
    return userInfo;
}

- (NSString*)localizedDescription {
    NSString* const text = [userInfo objectForKey:NSLocalizedDescriptionKey];
    return text ? text
                : [NSString stringWithFormat:@"The operation could not be completed. (%@ error %ld.)", domain,
                                             code];
}

- (NSString*)description {
    return [self localizedDescription];
}

@end
