#import "unit/platform/Foundation/counted.h"

std::atomic<int> ostrel::tests::g_living{0};

@implementation Counted

- (id)init {
    if ((self = [super init]))
        ++ostrel::tests::g_living;
    return self;
}

- (void)dealloc {
    --ostrel::tests::g_living;
    [super dealloc];
}

@end
