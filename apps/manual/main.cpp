// Writes the manual page and the bash completion of a tool from its own help texts, at build time:
//   make_manual TOOL PROSE PAGE COMPLETION
#include "apps/manual/tool.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace {

using namespace ostrel::manual;

std::string outputOf(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string output;
    char bytes[4096];
    for (std::size_t count; (count = fread(bytes, 1, sizeof bytes, pipe)) > 0;)
        output.append(bytes, count);
    if (pclose(pipe) != 0 || output.empty())
        throw std::runtime_error(command + " failed");
    return output;
}

Tool readTool(const std::string& path) {
    const std::string quotedPath = "'" + path + "'";
    Tool tool;
    tool.name = path.substr(path.rfind('/') + 1);
    std::istringstream version(outputOf(quotedPath + " --version")); // "ostrel-camera 1.0.0"
    version >> tool.version >> tool.version;
    tool.help = parseHelp(outputOf(quotedPath + " --help"));
    if (const Section* commands = tool.help.section("Commands"))
        for (const Entry& entry : commands->entries)
            tool.commands.push_back(
                {entry.term, parseHelp(outputOf(quotedPath + " " + entry.term + " --help"))});
    return tool;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file)
        throw std::runtime_error("cannot read " + path);
    return text.str();
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    file.close();
    if (!file)
        throw std::runtime_error("cannot write " + path);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: make_manual TOOL PROSE PAGE COMPLETION\n";
        return 2;
    }
    try {
        const Tool tool = readTool(argv[1]);
        writeFile(argv[3], manualPage(tool, readFile(argv[2])));
        writeFile(argv[4], bashCompletion(tool));
    } catch (const std::exception& error) {
        std::cerr << "make_manual: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
