// Ends at once, like startup.cpp, with Foundation.
#import <Foundation/Foundation.h>

int main(int argc, char** argv) {
    (void)argv;
    return argc > 100 ? (int)[[NSString string] length] : 0;
}
