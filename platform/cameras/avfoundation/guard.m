#import "platform/cameras/avfoundation/guard.h"

NSString* ostrelGuarded(void (*work)(void* context), void* context) {
    @try {
        work(context);
    } @catch (id exception) {
        NSString* const text = [exception description];
        return text ? text : @"";
    }
    return nil;
}
