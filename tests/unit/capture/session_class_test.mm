#import <ostrel/capture_session.h>

#import <objc/runtime.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace {

struct Variable {
    std::string name, type;
    ptrdiff_t offset;
};

std::vector<Variable> variablesOf(Class cls) {
    unsigned int count = 0;
    Ivar* const list = class_copyIvarList(cls, &count);
    std::vector<Variable> result;
    for (unsigned int i = 0; i < count; ++i)
        result.push_back({ivar_getName(list[i]), ivar_getTypeEncoding(list[i]), ivar_getOffset(list[i])});
    std::free(list);
    return result;
}

std::multiset<std::string> methodsOf(Class cls) {
    unsigned int count = 0;
    Method* const list = class_copyMethodList(cls, &count);
    std::multiset<std::string> result;
    for (unsigned int i = 0; i < count; ++i)
        result.insert(sel_getName(method_getName(list[i])));
    std::free(list);
    return result;
}

// The encoding of a type without the place on the stack that gcc's runtime writes behind it.
std::string typeAlone(const char* type) {
    std::string result = type;
    result.erase(std::remove_if(result.begin(), result.end(), [](char c) { return c >= '0' && c <= '9'; }),
                 result.end());
    return result;
}

// The type encodings of the result and of the arguments behind self and _cmd.
std::string typesOf(SEL selector) {
    Method method = class_getInstanceMethod([VideoCaptureThreadObj class], selector);
    char type[256];
    method_getReturnType(method, type, sizeof type);
    std::string result = typeAlone(type);
    for (unsigned int i = 2; i < method_getNumberOfArguments(method); ++i) {
        method_getArgumentType(method, i, type, sizeof type);
        result += " " + typeAlone(type);
    }
    return result;
}

const std::string INT64 = @encode(int64_t);

} // namespace

TEST(SessionClass, DerivesFromNSObject) {
    EXPECT_EQ(class_getSuperclass([VideoCaptureThreadObj class]), [NSObject class]);
    EXPECT_STREQ(class_getName([VideoCaptureThreadObj class]), "VideoCaptureThreadObj");
}

TEST(SessionClass, HasExactlyItsMethods) {
    const std::multiset<std::string> expected = {
        "init",
        "setCamera:withWidth:withHeigth:",
        "startObjCapture",
        "stopObjCapture",
        "captureOutput:didOutputVideoFrame:withSampleBuffer:fromConnection:",
        "videoFrame:withSize:",
        "dealloc",
        ".cxx_construct", // of the string among its variables
        ".cxx_destruct",
    };
    EXPECT_EQ(methodsOf([VideoCaptureThreadObj class]), expected);
    EXPECT_EQ(methodsOf(object_getClass((id)[VideoCaptureThreadObj class])), std::multiset<std::string>());
}

TEST(SessionClass, MethodsTakeAndReturnTheirTypes) {
    EXPECT_EQ(typesOf(@selector(init)), "@");
    EXPECT_EQ(typesOf(@selector(setCamera:withWidth:withHeigth:)), "v r* " + INT64 + " " + INT64);
    EXPECT_EQ(typesOf(@selector(startObjCapture)), "v");
    EXPECT_EQ(typesOf(@selector(stopObjCapture)), "v");
    EXPECT_EQ(typesOf(@selector(videoFrame:withSize:)), "v * ^" + INT64);
    EXPECT_EQ(typesOf(@selector(captureOutput:didOutputVideoFrame:withSampleBuffer:fromConnection:)),
              std::string("v @ ") + @encode(CVImageBufferRef) + " @ @");
    EXPECT_EQ(typesOf(@selector(dealloc)), "v");
}

TEST(SessionClass, HasItsVariablesInOrder) {
    const std::vector<Variable> variables = variablesOf([VideoCaptureThreadObj class]);
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"m_capturedFrameCounter", @encode(uint32_t)},
        {"m_cameraId", "{basic_string<char>="},
        {"m_width", INT64},
        {"m_height", INT64},
        {"m_lastCapturedFrame", @encode(CVBufferRef)},
        {"pool", "@\"NSAutoreleasePool\""},
        {"session", "@\"QTCaptureSession\""},
        {"input", "@\"QTCaptureDeviceInput\""},
        {"output", "@\"QTCaptureDecompressedVideoOutput\""},
        {"cam", "@\"QTCaptureDevice\""},
    };
    ASSERT_EQ(variables.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(variables[i].name, expected[i].first);
        EXPECT_EQ(variables[i].type.substr(0, expected[i].second.size()), expected[i].second)
            << expected[i].first;
        EXPECT_TRUE(i == 0 || variables[i].offset > variables[i - 1].offset) << expected[i].first;
    }
}

TEST(SessionClass, NewObjectHasNothing) {
    VideoCaptureThreadObj* const object = [[VideoCaptureThreadObj alloc] init];
    EXPECT_EQ(object->m_capturedFrameCounter, 0u);
    for (const char* name : {"pool", "session", "input", "output", "cam"})
        EXPECT_EQ(object_getIvar(object, class_getInstanceVariable([object class], name)), nil) << name;
    const Ivar identifier = class_getInstanceVariable([object class], "m_cameraId");
    EXPECT_TRUE(reinterpret_cast<std::string*>(reinterpret_cast<char*>(object) + ivar_getOffset(identifier))
                    ->empty());
    [object release];
}
