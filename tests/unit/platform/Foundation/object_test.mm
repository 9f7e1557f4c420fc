#import "unit/platform/Foundation/counted.h"

#import <objc/runtime.h>

#include <stdexcept>
#include <vector>

using namespace ostrel::tests;

namespace {

std::vector<std::string> g_events;
bool g_refuse = false;

// A variable of C++ that tells of its life.
template <int Number>
struct Told {
    Told() : value(Number) {
        if (g_refuse && Number == 2)
            throw std::runtime_error("refused");
        g_events.push_back("made " + std::to_string(Number));
    }
    ~Told() { g_events.push_back("ended " + std::to_string(Number)); }
    int value;
};

} // namespace

@interface Base : NSObject {
@public
    Told<1> told;
    char odd; // the size is no multiple of a pointer's
}
@end
@implementation Base
@end

@interface Between : Base
@end
@implementation Between
@end

@interface Derived : Between {
@public
    Told<2> second;
    int plain;
}
- (id)answer;
- (id)answer:(id)one;
- (id)answer:(id)one with:(id)other;
@end
@implementation Derived
- (id)answer {
    return @"none";
}
- (id)answer:(id)one {
    return one;
}
- (id)answer:(id)one with:(id)other {
    return [NSString stringWithFormat:@"%@ %@", one, other];
}
@end

@protocol Unheard
- (void)unheard;
@end

class FoundationObject : public FoundationTest {
protected:
    FoundationObject() { g_events.clear(); }
};

TEST_F(FoundationObject, VariablesOfCxxAreMadeFromTheRootDownAndEndedFromTheLeafUp) {
    Derived* const object = [[Derived alloc] init];
    EXPECT_EQ(g_events, (std::vector<std::string>{"made 1", "made 2"}));
    EXPECT_EQ(object->told.value, 1);
    EXPECT_EQ(object->second.value, 2);
    EXPECT_EQ(object->plain, 0);
    g_events.clear();
    [object release];
    EXPECT_EQ(g_events, (std::vector<std::string>{"ended 2", "ended 1"}));
}

TEST_F(FoundationObject, ClassWithoutVariablesOfItsOwnMakesThoseAboveItOnce) {
    [[Between new] release];
    EXPECT_EQ(g_events, (std::vector<std::string>{"made 1", "ended 1"}));
}

#ifndef GNUSTEP // which loses the object
TEST_F(FoundationObject, ConstructorThatThrowsLeavesNothingBehind) {
    g_refuse = true;
    EXPECT_THROW([Derived alloc], std::runtime_error);
    g_refuse = false;
    EXPECT_EQ(g_events, (std::vector<std::string>{"made 1", "ended 1"}));
}
#endif

TEST_F(FoundationObject, IsOwnedOnceByItsMakerAndEndsWithItsLastOwner) {
    Counted* const object = [[Counted alloc] init];
    EXPECT_EQ([object retainCount], 1u);
    EXPECT_EQ([object retain], object);
    EXPECT_EQ([object retainCount], 2u);
    [object release];
    EXPECT_EQ(g_living, 1);
    [object release];
    EXPECT_EQ(g_living, 0);
}

TEST_F(FoundationObject, OwnersOnManyThreadsAreCounted) {
    Counted* const object = [[Counted alloc] init];
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([object] {
            for (int turn = 0; turn < 10000; ++turn) {
                [object retain];
                [object release];
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ([object retainCount], 1u);
    [object release];
    EXPECT_EQ(g_living, 0);
}

TEST_F(FoundationObject, LastOfManyThreadsEndsIt) {
    for (int round = 0; round < 100; ++round) {
        Counted* const object = [[Counted alloc] init];
        [object retain];
        std::thread other([object] { [object release]; });
        [object release];
        other.join();
        EXPECT_EQ(g_living, 0);
    }
}

TEST_F(FoundationObject, KnowsItsClassAndThoseAbove) {
    Derived* const object = [Derived new];
    EXPECT_EQ([object class], [Derived class]);
    EXPECT_EQ([object superclass], [Between class]);
    EXPECT_EQ([Derived superclass], [Between class]);
    EXPECT_EQ([NSObject superclass], Nil);
    EXPECT_TRUE([object isKindOfClass:[Derived class]]);
    EXPECT_TRUE([object isKindOfClass:[NSObject class]]);
    EXPECT_FALSE([object isKindOfClass:[NSString class]]);
    EXPECT_TRUE([object isMemberOfClass:[Derived class]]);
    EXPECT_FALSE([object isMemberOfClass:[Base class]]);
    EXPECT_FALSE([[[NSObject new] autorelease] isKindOfClass:[Derived class]]);
    [object release];
}

TEST_F(FoundationObject, KnowsWhatItAnswersTo) {
    Derived* const object = [Derived new];
    EXPECT_TRUE([object respondsToSelector:@selector(answer:)]);
    EXPECT_TRUE([object respondsToSelector:@selector(retain)]);
    EXPECT_FALSE([object respondsToSelector:@selector(unheard)]);
    EXPECT_FALSE([object respondsToSelector:@selector(alloc)]);
    EXPECT_TRUE([object conformsToProtocol:@protocol(NSObject)]);
    EXPECT_FALSE([object conformsToProtocol:@protocol(Unheard)]);
    [object release];
}

TEST_F(FoundationObject, PerformsSelectors) {
    Derived* const object = [Derived new];
    EXPECT_EQ(text([object performSelector:@selector(answer)]), "none");
    EXPECT_EQ(text([object performSelector:@selector(answer:) withObject:@"one"]), "one");
    EXPECT_EQ(text([object performSelector:@selector(answer:with:) withObject:@"one" withObject:@"two"]),
              "one two");
    [object release];
}

TEST_F(FoundationObject, EqualsItselfAloneAndTellsWhereItIs) {
    NSObject* const one = [[NSObject new] autorelease];
    NSObject* const other = [[NSObject new] autorelease];
    EXPECT_TRUE([one isEqual:one]);
    EXPECT_FALSE([one isEqual:other]);
    EXPECT_FALSE([one isEqual:nil]);
    EXPECT_EQ([one hash], [one hash]);
    EXPECT_EQ([one self], one);
    char expected[64];
    std::snprintf(expected, sizeof expected, "<NSObject: %p>", static_cast<void*>(one));
    EXPECT_EQ(text([one description]), expected);
}

TEST_F(FoundationObject, ClassesAreObjectsThatNobodyOwns) {
    id const cls = [Derived class];
    for (int i = 0; i < 3; ++i)
        [cls release];
    EXPECT_EQ([cls retain], cls);
    EXPECT_EQ([cls autorelease], cls);
    EXPECT_EQ([cls class], cls);
    EXPECT_TRUE([cls isKindOfClass:[NSObject class]]);
    EXPECT_FALSE([cls isKindOfClass:[NSString class]]);
    EXPECT_TRUE([cls respondsToSelector:@selector(alloc)]);
    EXPECT_FALSE([cls respondsToSelector:@selector(answer:)]);
    EXPECT_EQ(text([cls description]), "Derived");
    EXPECT_EQ([[NSArray arrayWithObject:cls] objectAtIndex:0], cls);
}

TEST_F(FoundationObject, MethodThatThereIsNoneOfEndsTheProcess) {
    EXPECT_DEATH(doWrong([] { [(id)[NSObject new] unheard]; }), "unheard");
}
