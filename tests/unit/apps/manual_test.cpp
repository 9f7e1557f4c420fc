// Manual page and completion from help texts.
#include "apps/manual/tool.h"
#include "program.h"

#include <gtest/gtest.h>

namespace {

using namespace ostrel::manual;

const char HELP[] = "Does things.\n"
                    "\n"
                    "Usage: /somewhere/tool COMMAND [OPTIONS]\n"
                    "\n"
                    "Commands:\n"
                    "  go    Goes.\n"
                    "\n"
                    "A note of\n"
                    "two lines.\n"
                    "\n"
                    "Options:\n"
                    "  -o, --output FILE\n"
                    "                    Where to, with\n"
                    "                    more words.\n"
                    "  --flag            A flag.\n"
                    "  --size <SIZE>     A size.\n"
                    "\n"
                    "Examples:\n"
                    "  tool go  twice\n";

TEST(HelpText, IsTakenApart) {
    const HelpText help = parseHelp(HELP);
    EXPECT_EQ("Does things.", help.summary);
    EXPECT_EQ(std::vector<std::string>{"tool COMMAND [OPTIONS]"}, help.usage);
    EXPECT_EQ(std::vector<std::string>{"A note of two lines."}, help.notes);
    ASSERT_TRUE(help.section("Options"));
    const std::vector<Entry>& options = help.section("Options")->entries;
    ASSERT_EQ(3U, options.size());
    EXPECT_EQ("-o, --output FILE", options[0].term);
    EXPECT_EQ("Where to, with more words.", options[0].text);
    EXPECT_EQ((std::vector<std::string>{"-o", "--output"}), optionNames(options[0].term));
    EXPECT_EQ("FILE", optionArgument(options[0].term));
    EXPECT_EQ("", optionArgument(options[1].term));
    EXPECT_EQ("SIZE", optionArgument(options[2].term));
    EXPECT_EQ(std::vector<std::string>{"tool go  twice"}, help.section("Examples")->lines);
    EXPECT_FALSE(help.section("Nothing"));
}

TEST(ManualPage, HoldsWhatTheHelpAndTheProseSay) {
    Tool tool;
    tool.name = "tool";
    tool.version = "1.2";
    tool.help = parseHelp(HELP);
    const std::string page = manualPage(tool, "# DESCRIPTION\nIt's\n.good.\n\n    kept  so\n# FILES\nnone\n");
    EXPECT_EQ(0U,
              page.find(".TH TOOL 1 \"\" \"tool 1.2\" \"User Commands\"\n.SH NAME\ntool \\- does things\n"));
    EXPECT_NE(std::string::npos, page.find(".SH DESCRIPTION\nIt\\(aqs\n\\&.good.\n")) << page;
    EXPECT_NE(std::string::npos, page.find("\nkept  so\n"));
    EXPECT_NE(std::string::npos, page.find(".TP\n\\fB\\-o\\fR, \\fB\\-\\-output\\fR \\fIFILE\\fR\nWhere to"));
    EXPECT_LT(page.find(".SH DESCRIPTION"), page.find(".SH OPTIONS"));
    EXPECT_LT(page.find(".SH OPTIONS"), page.find(".SH FILES"));
}

// What bash offers for the words of a command line, the last of which is being typed.
std::string offered(const QString& words) {
    const QString script =
        QString("exec bash -c 'source \"%1\"; COMP_WORDS=(%2); "
                "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _ostrel_camera; echo \"${COMPREPLY[*]}\"'")
            .arg(OSTREL_CAMERA_COMPLETION, words);
    return apptests::runShell("/", script).output.trimmed().toStdString();
}

TEST(Completion, OffersCommandsOptionsAndValues) {
    EXPECT_EQ("snapshot", offered("ostrel-camera sn"));
    EXPECT_EQ("--frames --format --filter", offered("ostrel-camera record --f"));
    EXPECT_EQ("ld sd hd", offered("ostrel-camera record --scale \"\""));
    EXPECT_EQ("--test-camera", offered("ostrel-camera --te"));
    EXPECT_EQ("", offered("ostrel-camera record --frames \"\""));
}

} // namespace
