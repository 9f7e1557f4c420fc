#import "unit/platform/Foundation/counted.h"

using namespace ostrel::tests;

class FoundationError : public FoundationTest {};

TEST_F(FoundationError, KeepsWhatItIsMadeOf) {
    NSDictionary* const info = [NSDictionary dictionaryWithObject:@"The lens is closed."
                                                           forKey:NSLocalizedDescriptionKey];
    NSError* const error = [NSError errorWithDomain:@"Cameras" code:-7 userInfo:info];
    EXPECT_EQ(text([error domain]), "Cameras");
    EXPECT_EQ([error code], -7);
    EXPECT_TRUE([[error userInfo] isEqual:info]);
    EXPECT_EQ(text([error localizedDescription]), "The lens is closed.");
    EXPECT_EQ(text([NSString stringWithFormat:@"%@", error]), "The lens is closed.");
}

TEST_F(FoundationError, DescribesItselfByDomainAndCodeOtherwise) {
    NSError* const error = [[NSError alloc] initWithDomain:@"Cameras" code:42 userInfo:nil];
    const std::string description = text([error localizedDescription]);
    EXPECT_NE(description.find("Cameras"), std::string::npos) << description;
    EXPECT_NE(description.find("42"), std::string::npos) << description;
    EXPECT_EQ([[error userInfo] count], 0u);
    [error release];
}

TEST_F(FoundationError, OwnsItsParts) {
    NSError* error = nil;
    {
        NSAutoreleasePool* const inner = [[NSAutoreleasePool alloc] init];
        Counted* const object = [[[Counted alloc] init] autorelease];
        error = [[NSError alloc] initWithDomain:@"Cameras"
                                           code:1
                                       userInfo:[NSDictionary dictionaryWithObject:object forKey:@"who"]];
        [inner release];
    }
    EXPECT_EQ(g_living, 1);
    [error release];
    EXPECT_EQ(g_living, 0);
}
