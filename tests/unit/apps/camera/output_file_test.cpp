// Files that are written: when they appear, and what stays when something goes wrong.
#include "apps/camera/output_file.h"
#include "apps/common/failure.h"
#include "program.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace ostrel::apps;
using namespace ostrel::apps::cli;
using ostrel::tests::Folder;
using Mode = OutputFile::Mode;

TEST(OutputFile, AWholeFileAppearsOnlyWhenItIsComplete) {
    Folder folder;
    OutputFile file(folder.file("a").toStdString(), Mode::Whole);
    file.write("text");
    EXPECT_FALSE(folder.entries().contains("a"));
    file.commit();
    EXPECT_EQ(QStringList("a"), folder.entries());
    EXPECT_EQ("text", folder.read("a").toStdString());
}

TEST(OutputFile, AWholeFileThatIsNotFinishedLeavesNothing) {
    Folder folder;
    {
        OutputFile file(folder.file("a").toStdString(), Mode::Whole);
        file.write("text");
    }
    EXPECT_EQ(QStringList(), folder.entries());
}

TEST(OutputFile, ANewFileHasTheModeOfTheUsersMask) {
    Folder folder;
    const mode_t before = umask(027);
    OutputFile file(folder.file("a").toStdString(), Mode::Whole);
    umask(before);
    file.commit();
    struct stat status = {};
    ASSERT_EQ(0, stat(folder.file("a").toLocal8Bit().constData(), &status));
    EXPECT_EQ(0640U, status.st_mode & 07777);
}

TEST(OutputFile, AStreamChangesNothingBeforeItsFirstByte) {
    Folder folder;
    const std::string old = folder.file("old").toStdString();
    OutputFile(old, Mode::Stream).write("old text");
    { OutputFile unused(old, Mode::Stream); }
    EXPECT_EQ("old text", folder.read("old").toStdString());
    { OutputFile unused(folder.file("new").toStdString(), Mode::Stream); }
    EXPECT_EQ(QStringList("old"), folder.entries());
    OutputFile(old, Mode::Stream).write("new");
    EXPECT_EQ("new", folder.read("old").toStdString());
}

TEST(OutputFile, ARegularStreamCanBeChangedAndCutAfterwards) {
    Folder folder;
    OutputFile file(folder.file("a").toStdString(), Mode::Stream);
    file.write("0123456789");
    EXPECT_TRUE(file.rewrite(2, "xx"));
    EXPECT_TRUE(file.cutTo(6));
    file.commit();
    EXPECT_EQ("01xx45", folder.read("a").toStdString());
}

TEST(OutputFile, ADeviceIsWrittenInPlaceAndNotChangedAfterwards) {
    OutputFile file("/dev/null", Mode::Whole);
    file.write("text");
    EXPECT_FALSE(file.rewrite(0, "x"));
    EXPECT_FALSE(file.cutTo(0));
    file.commit();
    struct stat status = {};
    ASSERT_EQ(0, stat("/dev/null", &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST(OutputFile, FailuresNameTheFileAndTheReason) {
    try {
        OutputFile("/no/such/folder/a", Mode::Whole);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(EXIT_FILE, failure.code());
        EXPECT_STREQ("cannot write '/no/such/folder/a': No such file or directory", failure.what());
    }
}

} // namespace
