// Reading Y4M: what is understood, and that nothing malformed does harm.
#include "y4m_text.h"

#include "platform/cameras/virtual/y4m_clip.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace ostrel::cameras;
using namespace ostrel::tests;

namespace {

// What open() says of a header that is followed by enough bytes for a frame.
std::string complaint(const std::string& header) {
    const Memory memory(header + "\nFRAME\n" + std::string(4096, 'x'));
    Y4mReader reader;
    return reader.open(memory);
}

Y4mFormat formatOf(const std::string& header) {
    const Memory memory(header + "\nFRAME\n" + std::string(4096, 'x'));
    Y4mReader reader;
    EXPECT_EQ(reader.open(memory), "") << header;
    return reader.format();
}

TEST(Y4mHeader, GivesSizeAndRate) {
    const Y4mFormat format = formatOf("YUV4MPEG2 W32 H16 F30000:1001 Ip A1:1 C420jpeg");
    EXPECT_EQ(format.layout.width, 32);
    EXPECT_EQ(format.layout.height, 16);
    EXPECT_DOUBLE_EQ(format.framesPerSecond, 30000.0 / 1001);
    EXPECT_EQ(format.layout.bytes(), 32u * 16 * 3 / 2);
}

TEST(Y4mHeader, TakesEveryLayoutOfEightBits) {
    for (const char* layout : {"C420", "C420jpeg", "C420mpeg2", "C420paldv"})
        EXPECT_EQ(formatOf(std::string("YUV4MPEG2 W4 H4 F30:1 ") + layout).layout.chroma, Chroma::Halved)
            << layout;
    EXPECT_EQ(formatOf("YUV4MPEG2 W4 H4 F30:1 C422").layout.chroma, Chroma::HalvedColumns);
    EXPECT_EQ(formatOf("YUV4MPEG2 W4 H4 F30:1 C444").layout.chroma, Chroma::Full);
    EXPECT_EQ(formatOf("YUV4MPEG2 W4 H4 F30:1 Cmono").layout.chroma, Chroma::None);
    EXPECT_EQ(formatOf("YUV4MPEG2 W4 H4 F30:1").layout.chroma, Chroma::Halved) << "C420 when it is not said";
}

TEST(Y4mHeader, RoundsTheChromaOfOddSizesUp) {
    EXPECT_EQ(formatOf("YUV4MPEG2 W5 H3 F30:1 C420").layout.bytes(), 5u * 3 + 2 * 3 * 2);
    EXPECT_EQ(formatOf("YUV4MPEG2 W5 H3 F30:1 C422").layout.bytes(), 5u * 3 + 2 * 3 * 3);
    EXPECT_EQ(formatOf("YUV4MPEG2 W5 H3 F30:1 C444").layout.bytes(), 5u * 3 * 3);
    EXPECT_EQ(formatOf("YUV4MPEG2 W5 H3 F30:1 Cmono").layout.bytes(), 5u * 3);
    EXPECT_EQ(formatOf("YUV4MPEG2 W1 H1 F30:1 C420").layout.bytes(), 3u);
}

TEST(Y4mHeader, TagsComeInAnyOrderAndUnknownOnesAreNoHarm) {
    const Y4mFormat format =
        formatOf("YUV4MPEG2 It XYSCSS=420JPEG A128:117 C444 XCOLORRANGE=LIMITED H6 Qnew F50:1  W8 ");
    EXPECT_EQ(format.layout.width, 8);
    EXPECT_EQ(format.layout.height, 6);
    EXPECT_EQ(format.framesPerSecond, 50);
    EXPECT_FALSE(format.layout.fullRange);
    EXPECT_TRUE(formatOf("YUV4MPEG2 W8 H6 F50:1 XCOLORRANGE=FULL").layout.fullRange);
    for (const char* interlacing : {"Ip", "It", "Ib", "Im", "I?"})
        EXPECT_EQ(complaint(std::string("YUV4MPEG2 W8 H6 F50:1 ") + interlacing), "");
}

TEST(Y4mHeader, AnUnknownRateIs25) {
    EXPECT_EQ(formatOf("YUV4MPEG2 W8 H6").framesPerSecond, 25);
    EXPECT_EQ(formatOf("YUV4MPEG2 W8 H6 F0:0").framesPerSecond, 25);
}

TEST(Y4mHeader, SaysInOneLineWhatIsWrong) {
    const struct {
        const char* header;
        const char* says;
    } CASES[] = {
        {"YUV4MPEG W8 H6 F30:1", "not a Y4M file: it does not begin with YUV4MPEG2"},
        {"YUV4MPEG22 W8 H6 F30:1", "not a Y4M file: it does not begin with YUV4MPEG2"},
        {"\x89PNG", "not a Y4M file: it does not begin with YUV4MPEG2"},
        {"YUV4MPEG2", "the header has no width (W)"},
        {"YUV4MPEG2 H6 F30:1", "the header has no width (W)"},
        {"YUV4MPEG2 W8 F30:1", "the header has no height (H)"},
        {"YUV4MPEG2 W0 H6", "the width \"0\" is not from 1 to 16384"},
        {"YUV4MPEG2 W-8 H6", "the width \"-8\" is not from 1 to 16384"},
        {"YUV4MPEG2 W8 H16385", "the height \"16385\" is not from 1 to 16384"},
        {"YUV4MPEG2 W4294967304 H6", "the width \"4294967304\" is not from 1 to 16384"},
        {"YUV4MPEG2 W18446744073709551624 H6", "the width \"18446744073709551624\" is not from 1 to 16384"},
        {"YUV4MPEG2 W8x H6", "the width \"8x\" is not from 1 to 16384"},
        {"YUV4MPEG2 W H6", "the width \"\" is not from 1 to 16384"},
        {"YUV4MPEG2 W8 H6 F30", "the frame rate \"30\" is not written as 30:1"},
        {"YUV4MPEG2 W8 H6 F:", "the frame rate \":\" is not written as 30:1"},
        {"YUV4MPEG2 W8 H6 F-30:1", "the frame rate \"-30:1\" is not written as 30:1"},
        {"YUV4MPEG2 W8 H6 F30:0", "the frame rate \"30:0\" is not from 0.001 to 1000 a second"},
        {"YUV4MPEG2 W8 H6 F0:1", "the frame rate \"0:1\" is not from 0.001 to 1000 a second"},
        {"YUV4MPEG2 W8 H6 F1001:1", "the frame rate \"1001:1\" is not from 0.001 to 1000 a second"},
        {"YUV4MPEG2 W8 H6 C420p10",
         "the pixel layout \"C420p10\" is not one of C420, C422, C444 and Cmono with 8 bits"},
        {"YUV4MPEG2 W8 H6 C\x1b[2J",
         "the pixel layout \"C?[2J\" is not one of C420, C422, C444 and Cmono with 8 bits"},
    };
    for (const auto& test : CASES) {
        EXPECT_EQ(complaint(test.header), test.says) << test.header;
    }
}

TEST(Y4mHeader, TellsCutFilesApart) {
    const auto says = [](const std::string& bytes) {
        const Memory memory(bytes);
        Y4mReader reader;
        const std::string result = reader.open(memory);
        EXPECT_EQ(reader.format().layout.width, 0);
        EXPECT_EQ(reader.format().framesPerSecond, 0);
        return result;
    };
    const std::string header = "YUV4MPEG2 W4 H4 F30:1\n";
    EXPECT_EQ(says(""), "it is empty");
    EXPECT_EQ(says("YUV4"), "it ends within its header");
    EXPECT_EQ(says("YUV4MPEG2 W4 H4 F30:1"), "it ends within its header");
    EXPECT_EQ(says("YUV4MPEG2 X" + std::string(5000, 'x')), "the header has more than 4096 bytes");
    EXPECT_EQ(says(header), "it has no whole frame");
    EXPECT_EQ(says(header + "FRA"), "it has no whole frame");
    EXPECT_EQ(says(header + "FRAME"), "it has no whole frame");
    EXPECT_EQ(says(header + "FRAME\n" + std::string(23, 'x')), "it has no whole frame");
    EXPECT_EQ(says(header + "GRAME\n" + std::string(24, 'x')), "no FRAME line behind the header");
    EXPECT_EQ(says(header + "FRAMES\n" + std::string(24, 'x')), "no FRAME line behind the header");
    EXPECT_EQ(says(header + "FRAME " + std::string(300, 'x') + "\n"), "no FRAME line behind the header");
}

TEST(Y4mHeader, AFailingDiskIsAnErrorAsWell) {
    Memory memory("YUV4MPEG2 W4 H4 F30:1\n" + frame(24, 'a'));
    Y4mReader reader;
    ASSERT_EQ(reader.open(memory), "");
    memory.failing = true;
    uint64_t position = reader.firstFrame(), planes = 0;
    EXPECT_EQ(reader.next(position, planes), Y4mReader::Found::Broken);
    uint8_t bytes[24];
    EXPECT_FALSE(reader.readPlanes(22, bytes));
    EXPECT_EQ(reader.open(memory), "it cannot be read");
}

// The first byte of each frame in the order in which they are played, '.' for the end, '!' for a broken one.
std::string played(const std::string& bytes, bool loop, size_t steps) {
    const Memory memory(bytes);
    Y4mReader reader;
    EXPECT_EQ(reader.open(memory), "");
    Y4mPlayer player(reader, loop);
    std::string result;
    while (result.size() < steps) {
        const Y4mPlayer::Step step = player.step();
        if (step != Y4mPlayer::Step::Frame)
            return result + (step == Y4mPlayer::Step::Finished ? "." : "!");
        std::vector<uint8_t> planes(reader.format().layout.bytes());
        EXPECT_TRUE(reader.readPlanes(player.at(), planes.data()));
        EXPECT_EQ(planes.back(), planes.front());
        result += static_cast<char>(planes.front());
    }
    return result;
}

const std::string HEADER = "YUV4MPEG2 W4 H4 F30:1\n";
const std::string ABC = HEADER + frame(24, 'a') + frame(24, 'b', " Ip XNOTE=1") + frame(24, 'c', " ");

TEST(Y4mFrames, ComeInOrderAndStopAtTheEnd) {
    EXPECT_EQ(played(ABC, false, 10), "abc.");
}

TEST(Y4mFrames, LoopToTheFirst) {
    EXPECT_EQ(played(ABC, true, 10), "abcabcabca");
    EXPECT_EQ(played(HEADER + frame(24, 'a'), true, 3), "aaa");
}

TEST(Y4mFrames, ACutLastFrameIsLeftOut) {
    for (size_t cut = 1; cut < 24 + 7; ++cut) {
        const std::string bytes = ABC.substr(0, ABC.size() - cut);
        EXPECT_EQ(played(bytes, false, 10), "ab.") << cut;
        EXPECT_EQ(played(bytes, true, 6), "ababab") << cut;
    }
}

TEST(Y4mFrames, RubbishBetweenFramesIsBroken) {
    EXPECT_EQ(played(HEADER + frame(24, 'a') + "rubbish" + frame(24, 'b'), false, 10), "a!");
    EXPECT_EQ(played(HEADER + frame(25, 'a') + frame(24, 'b'), true, 10), "a!");
}

TEST(Y4mFrames, AFileThatIsCutWhileItPlaysEndsOrBreaks) {
    Memory memory(ABC);
    Y4mReader reader;
    ASSERT_EQ(reader.open(memory), "");
    Y4mPlayer looping(reader, true), once(reader, false);
    ASSERT_EQ(looping.step(), Y4mPlayer::Step::Frame);
    ASSERT_EQ(once.step(), Y4mPlayer::Step::Frame);
    memory.bytes.resize(HEADER.size() + 10);
    std::vector<uint8_t> planes(24);
    EXPECT_FALSE(reader.readPlanes(once.at(), planes.data()));
    EXPECT_EQ(once.step(), Y4mPlayer::Step::Finished);
    EXPECT_EQ(looping.step(), Y4mPlayer::Step::Broken) << "no endless search for a first frame";
}

TEST(Y4mFrames, NoMutationOfAFileDoesHarm) {
    std::mt19937 random(3);
    int opened = 0;
    for (int round = 0; round < 20000; ++round) {
        Memory memory(ABC);
        for (unsigned changes = random() % 4 + 1; changes > 0; --changes)
            memory.bytes[random() % memory.bytes.size()] = static_cast<char>(random());
        memory.bytes.resize(memory.bytes.size() - random() % 3 * (random() % memory.bytes.size()) / 2);
        Y4mReader reader;
        const std::string wrong = reader.open(memory);
        EXPECT_EQ(wrong.find('\n'), std::string::npos);
        if (!wrong.empty())
            continue;
        ++opened;
        ASSERT_LE(reader.format().layout.bytes(), memory.bytes.size());
        Y4mPlayer player(reader, true);
        std::vector<uint8_t> planes(reader.format().layout.bytes());
        for (int i = 0; i < 10 && player.step() == Y4mPlayer::Step::Frame; ++i)
            ASSERT_TRUE(reader.readPlanes(player.at(), planes.data()));
    }
    EXPECT_GT(opened, 1000);
}

} // namespace
