#import "unit/platform/Foundation/counted.h"
#import "unit/platform/Foundation/loops.h"

#include <vector>

using namespace ostrel::tests;

namespace {

NSArray* letters() {
    return [NSArray arrayWithObjects:@"a", @"b", @"c", nil];
}

void collect(id object, void* objects) {
    static_cast<std::vector<std::string>*>(objects)->push_back(text([object description]));
}

std::vector<std::string> allOf(id<NSFastEnumeration> collection) {
    std::vector<std::string> objects;
    visitEach(collection, collect, &objects);
    return objects;
}

Counted* counted() {
    return [[[Counted alloc] init] autorelease];
}

} // namespace

class FoundationArray : public FoundationTest {};
class FoundationDictionary : public FoundationTest {};

TEST_F(FoundationArray, HoldsWhatItIsGivenInOrder) {
    EXPECT_EQ([[NSArray array] count], 0u);
    EXPECT_EQ([[NSArray array] lastObject], nil);
    EXPECT_EQ(allOf(letters()), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ([letters() count], 3u);
    EXPECT_EQ(text([letters() objectAtIndex:1]), "b");
    EXPECT_EQ(text([letters() lastObject]), "c");
    EXPECT_EQ(allOf([NSArray arrayWithObject:@"a"]), std::vector<std::string>{"a"});
    const id two[] = {@"x", @"y"};
    EXPECT_EQ(allOf([NSArray arrayWithObjects:two count:2]), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(allOf([NSMutableArray arrayWithArray:letters()]), allOf(letters()));
    EXPECT_EQ([[[[NSArray alloc] init] autorelease] count], 0u);
}

TEST_F(FoundationArray, FindsByEquality) {
    EXPECT_EQ([letters() indexOfObject:[NSString stringWithUTF8String:"b"]], 1u);
    EXPECT_EQ([letters() indexOfObject:@"d"], static_cast<NSUInteger>(NSNotFound));
    EXPECT_TRUE([letters() containsObject:@"c"]);
    EXPECT_FALSE([letters() containsObject:@"d"]);
}

TEST_F(FoundationArray, EqualsByObjects) {
    EXPECT_TRUE([letters() isEqual:letters()]);
    EXPECT_TRUE([letters() isEqualToArray:[NSMutableArray arrayWithArray:letters()]]);
    EXPECT_EQ([letters() hash], [[NSMutableArray arrayWithArray:letters()] hash]);
    EXPECT_FALSE(([letters() isEqual:[NSArray arrayWithObjects:@"a", @"b", nil]]));
    EXPECT_FALSE(([letters() isEqual:[NSArray arrayWithObjects:@"a", @"b", @"d", nil]]));
    EXPECT_FALSE([letters() isEqual:@"a"]);
    EXPECT_FALSE([letters() isEqual:nil]);
}

TEST_F(FoundationArray, DescribesWhatItHolds) {
    EXPECT_EQ(text([[NSArray array] description]), "()");
    NSArray* const mixed = [NSArray
        arrayWithObjects:@"word", @"two words", @"a\"b\\c", [NSNumber numberWithInt:3], letters(), nil];
    EXPECT_EQ(text([mixed description]), "(word, \"two words\", \"a\\\"b\\\\c\", 3, (a, b, c))");
}

TEST_F(FoundationArray, OwnsItsObjects) {
    NSMutableArray* array = nil;
    {
        NSAutoreleasePool* const inner = [[NSAutoreleasePool alloc] init];
        array = [[NSMutableArray alloc] initWithObjects:nullptr count:0];
        for (int i = 0; i < 100; ++i)
            [array addObject:counted()];
        [inner release];
    }
    EXPECT_EQ(g_living, 100);
    [array removeLastObject];
    EXPECT_EQ(g_living, 99);
    [array removeObjectAtIndex:0];
    EXPECT_EQ(g_living, 98);
    [array replaceObjectAtIndex:0 withObject:@"other"];
    EXPECT_EQ(g_living, 97);
    [array replaceObjectAtIndex:1 withObject:[array objectAtIndex:1]];
    EXPECT_EQ(g_living, 97);
    [array removeAllObjects];
    EXPECT_EQ(g_living, 0);
    EXPECT_EQ([array count], 0u);
    [array addObject:[[Counted new] autorelease]];
    [array release];
    EXPECT_EQ(g_living, 1); // the pool's
}

TEST_F(FoundationArray, ChangesWhereItIsTold) {
    NSMutableArray* const array = [NSMutableArray arrayWithCapacity:2];
    [array addObject:@"b"];
    [array insertObject:@"a" atIndex:0];
    [array insertObject:@"d" atIndex:2];
    [array insertObject:@"c" atIndex:2];
    EXPECT_EQ(allOf(array), (std::vector<std::string>{"a", "b", "c", "d"}));
    [array removeObjectAtIndex:1];
    [array replaceObjectAtIndex:1 withObject:@"C"];
    EXPECT_EQ(allOf(array), (std::vector<std::string>{"a", "C", "d"}));
}

TEST_F(FoundationArray, CopyStaysAsItWas) {
    NSMutableArray* const array = [NSMutableArray arrayWithArray:letters()];
    NSArray* const copy = [array copy];
    [array removeAllObjects];
    EXPECT_EQ(allOf(copy), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_FALSE([copy isKindOfClass:[NSMutableArray class]]);
    [copy release];
}

TEST_F(FoundationArray, IsWalkedInBatchesOfAnySize) {
    NSMutableArray* const array = [NSMutableArray array];
    for (int i = 0; i < 100; ++i)
        [array addObject:[NSNumber numberWithInt:i]];
    for (const NSUInteger size : {1u, 7u, 16u, 200u}) {
        NSFastEnumerationState state = {};
        std::vector<id> batch(size);
        int next = 0;
        while (const NSUInteger count = [array countByEnumeratingWithState:&state
                                                                   objects:batch.data()
                                                                     count:size])
            for (NSUInteger i = 0; i < count; ++i)
                EXPECT_EQ([state.itemsPtr[i] intValue], next++);
        EXPECT_EQ(next, 100);
    }
    EXPECT_EQ(allOf(array).size(), 100u);
    EXPECT_EQ(allOf([NSArray array]).size(), 0u);
}

TEST_F(FoundationArray, ThreadsWalkOverOneArray) {
    NSArray* const array = letters();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([array] {
            NSAutoreleasePool* const inner = [[NSAutoreleasePool alloc] init];
            for (int turn = 0; turn < 1000; ++turn)
                EXPECT_EQ(allOf(array).size(), 3u);
            [inner release];
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST_F(FoundationArray, ChangeDuringALoopEndsTheProcess) {
    for (Visitor change : {
             +[](id, void* array) { [static_cast<NSMutableArray*>(array) addObject:@"d"]; },
             +[](id, void* array) { [static_cast<NSMutableArray*>(array) removeLastObject]; },
             +[](id, void* array) { [static_cast<NSMutableArray*>(array) insertObject:@"d" atIndex:0]; },
             +[](id, void* array) { [static_cast<NSMutableArray*>(array) removeAllObjects]; },
         })
        EXPECT_DEATH(doWrong([=] {
                         NSMutableArray* const array = [NSMutableArray arrayWithArray:letters()];
                         visitEach(array, change, array);
                     }),
                     "mutated");
}

TEST_F(FoundationArray, IndexBeyondTheEndEndsTheProcess) {
    EXPECT_DEATH(doWrong([] { [letters() objectAtIndex:3]; }), "objectAtIndex:.*range|range.*objectAtIndex:");
    EXPECT_DEATH(doWrong([] { [[NSArray array] objectAtIndex:0]; }), "range");
    EXPECT_DEATH(doWrong([] { [[NSMutableArray array] removeLastObject]; }), "range|[Ee]mpty");
    EXPECT_DEATH(doWrong([] { [[NSMutableArray array] removeObjectAtIndex:0]; }), "range");
    EXPECT_DEATH(doWrong([] { [[NSMutableArray array] insertObject:@"a" atIndex:1]; }), "range");
    EXPECT_DEATH(doWrong([] { [[NSMutableArray array] replaceObjectAtIndex:0 withObject:@"a"]; }), "range");
}

TEST_F(FoundationArray, NilEndsTheProcess) {
    EXPECT_DEATH(doWrong([] { [[NSMutableArray array] addObject:nil]; }), "nil");
    EXPECT_DEATH(doWrong([] { [[NSMutableArray array] insertObject:nil atIndex:0]; }), "nil");
    EXPECT_DEATH(
        doWrong([] { [[NSMutableArray arrayWithArray:letters()] replaceObjectAtIndex:0 withObject:nil]; }),
        "nil");
    EXPECT_DEATH(doWrong([] { [NSArray arrayWithObject:nil]; }), "nil");
}

TEST_F(FoundationDictionary, FindsByEqualKeys) {
    NSDictionary* const dictionary =
        [NSDictionary dictionaryWithObjectsAndKeys:@"one", @"1", @"two", [NSNumber numberWithInt:2], nil];
    EXPECT_EQ([dictionary count], 2u);
    EXPECT_EQ(text([dictionary objectForKey:[NSString stringWithFormat:@"%d", 1]]), "one");
    EXPECT_EQ(text([dictionary objectForKey:[NSNumber numberWithDouble:2]]), "two");
    EXPECT_EQ([dictionary objectForKey:@"2"], nil);
    EXPECT_EQ([dictionary objectForKey:nil], nil);
    EXPECT_EQ([[NSDictionary dictionary] count], 0u);
    EXPECT_EQ(text([[NSDictionary dictionaryWithObject:@"value" forKey:@"key"] objectForKey:@"key"]),
              "value");
}

TEST_F(FoundationDictionary, HoldsMany) {
    std::vector<id> keys, objects;
    for (int i = 0; i < 1000; ++i) {
        keys.push_back([NSString stringWithFormat:@"key %d", i]);
        objects.push_back([NSNumber numberWithInt:i]);
    }
    NSDictionary* const dictionary = [NSDictionary dictionaryWithObjects:objects.data()
                                                                 forKeys:keys.data()
                                                                   count:keys.size()];
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ([[dictionary objectForKey:keys[static_cast<std::size_t>(i)]] intValue], i);
    EXPECT_EQ([[dictionary allKeys] count], 1000u);
    EXPECT_EQ(allOf(dictionary).size(), 1000u);
}

TEST_F(FoundationDictionary, OwnsItsObjectsAndCopiesItsKeys) {
    NSMutableArray* const key = [NSMutableArray arrayWithArray:letters()];
    NSAutoreleasePool* const inner = [[NSAutoreleasePool alloc] init];
    const id object = counted(), keys[] = {key};
    NSDictionary* const dictionary = [[NSDictionary alloc] initWithObjects:&object forKeys:keys count:1];
    [inner release];
    EXPECT_EQ(g_living, 1);
    [key removeAllObjects];
    EXPECT_EQ([dictionary objectForKey:key], nil);
    EXPECT_TRUE([[dictionary objectForKey:letters()] isKindOfClass:[Counted class]]);
    NSDictionary* const copy = [dictionary copy];
    [dictionary release];
    EXPECT_EQ(g_living, 1);
    [copy release];
    EXPECT_EQ(g_living, 0);
}

TEST_F(FoundationDictionary, KeyThatComesTwiceHasOneObject) {
    NSAutoreleasePool* const inner = [[NSAutoreleasePool alloc] init];
    NSDictionary* const dictionary =
        [[NSDictionary dictionaryWithObjectsAndKeys:counted(), @"key", counted(),
                                                    [NSString stringWithUTF8String:"key"], nil] retain];
    [inner release];
    EXPECT_EQ([dictionary count], 1u);
    EXPECT_EQ(allOf(dictionary), std::vector<std::string>{"key"});
    EXPECT_EQ(g_living, 1);
    [dictionary release];
    EXPECT_EQ(g_living, 0);
}

TEST_F(FoundationDictionary, EqualsByKeysAndObjects) {
    NSDictionary* const one = [NSDictionary dictionaryWithObjectsAndKeys:@"1", @"a", @"2", @"b", nil];
    NSDictionary* const same = [NSDictionary dictionaryWithObjectsAndKeys:@"2", @"b", @"1", @"a", nil];
    EXPECT_TRUE([one isEqual:same]);
    EXPECT_EQ([one hash], [same hash]);
    EXPECT_FALSE([one isEqualToDictionary:[NSDictionary dictionaryWithObject:@"1" forKey:@"a"]]);
    EXPECT_FALSE(([one isEqual:[NSDictionary dictionaryWithObjectsAndKeys:@"1", @"a", @"3", @"b", nil]]));
    EXPECT_FALSE(([one isEqual:[NSDictionary dictionaryWithObjectsAndKeys:@"1", @"a", @"2", @"c", nil]]));
    EXPECT_FALSE([one isEqual:letters()]);
}

TEST_F(FoundationDictionary, DescribesWhatItHolds) {
    EXPECT_EQ(text([[NSDictionary dictionary] description]), "{}");
    EXPECT_EQ(text([[NSDictionary dictionaryWithObject:@"two words" forKey:@"key"] description]),
              "{key = \"two words\"; }");
}

TEST_F(FoundationDictionary, NilEndsTheProcess) {
    EXPECT_DEATH(doWrong([] { [NSDictionary dictionaryWithObject:nil forKey:@"key"]; }), "nil");
    EXPECT_DEATH(doWrong([] { [NSDictionary dictionaryWithObject:@"value" forKey:nil]; }), "nil");
}
