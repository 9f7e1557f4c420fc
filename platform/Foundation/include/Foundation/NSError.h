// What went wrong. Errors never change, and any thread may use them.
#ifndef OSTREL_FOUNDATION_NSERROR_H
#define OSTREL_FOUNDATION_NSERROR_H

#import <Foundation/NSObject.h>

@class NSDictionary;

#ifdef __cplusplus
extern "C" {
#endif
OSTREL_EXPORT extern NSString* const NSLocalizedDescriptionKey;
#ifdef __cplusplus
}
#endif

@interface NSError : NSObject <NSCopying> {
@private
    NSString* domain;
    NSInteger code;
    NSDictionary* userInfo;
}
+ (id)errorWithDomain:(NSString*)aDomain code:(NSInteger)aCode userInfo:(NSDictionary*)dictionary;
- (id)initWithDomain:(NSString*)aDomain code:(NSInteger)aCode userInfo:(NSDictionary*)dictionary;

- (NSString*)domain;
- (NSInteger)code;
- (NSDictionary*)userInfo;
- (NSString*)localizedDescription; // from userInfo, or made of domain and code
@end

#endif
