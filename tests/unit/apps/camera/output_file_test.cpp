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
    EXPECT_EQ(folder.entries(), QStringList("a"));
    EXPECT_EQ(folder.read("a").toStdString(), "text");
}

TEST(OutputFile, AWholeFileThatIsNotFinishedLeavesNothing) {
    Folder folder;
    {
        OutputFile file(folder.file("a").toStdString(), Mode::Whole);
        file.write("text");
    }
    EXPECT_EQ(folder.entries(), QStringList());
}

TEST(OutputFile, ANewFileHasTheModeOfTheUsersMask) {
    Folder folder;
    const mode_t before = umask(027);
    OutputFile file(folder.file("a").toStdString(), Mode::Whole);
    umask(before);
    file.commit();
    struct stat status = {};
    ASSERT_EQ(stat(folder.file("a").toLocal8Bit().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST(OutputFile, AStreamChangesNothingBeforeItsFirstByte) {
    Folder folder;
    const std::string old = folder.file("old").toStdString();
    OutputFile(old, Mode::Stream).write("old text");
    { OutputFile unused(old, Mode::Stream); }
    EXPECT_EQ(folder.read("old").toStdString(), "old text");
    { OutputFile unused(folder.file("new").toStdString(), Mode::Stream); }
    EXPECT_EQ(folder.entries(), QStringList("old"));
    OutputFile(old, Mode::Stream).write("new");
    EXPECT_EQ(folder.read("old").toStdString(), "new");
}

TEST(OutputFile, ARegularStreamCanBeChangedAndCutAfterwards) {
    Folder folder;
    OutputFile file(folder.file("a").toStdString(), Mode::Stream);
    file.write("0123456789");
    EXPECT_TRUE(file.rewrite(2, "xx"));
    EXPECT_TRUE(file.cutTo(6));
    file.commit();
    EXPECT_EQ(folder.read("a").toStdString(), "01xx45");
}

TEST(OutputFile, ADeviceIsWrittenInPlaceAndNotChangedAfterwards) {
    OutputFile file("/dev/null", Mode::Whole);
    file.write("text");
    EXPECT_FALSE(file.rewrite(0, "x"));
    EXPECT_FALSE(file.cutTo(0));
    file.commit();
    struct stat status = {};
    ASSERT_EQ(stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST(OutputFile, FailuresNameTheFileAndTheReason) {
    try {
        OutputFile("/no/such/folder/a", Mode::Whole);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), EXIT_FILE);
        EXPECT_STREQ(failure.what(), "cannot write '/no/such/folder/a': No such file or directory");
    }
}

} // namespace
