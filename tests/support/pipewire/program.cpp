#include "support/pipewire/program.h"

#include "support/gate.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrel::support {

Program::Program(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    int in[2] = {-1, -1}, out[2] = {-1, -1};
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0)
        std::abort();
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    const bool quiet = std::getenv("OSTREL_TEST_VERBOSE") == nullptr;
    process_ = ::fork();
    if (process_ == 0) { // only what is allowed between fork and exec
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(in[0], 0);
        ::dup2(out[1], 1);
        if (quiet)
            ::dup2(nowhere, 2);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    ::close(nowhere);
    input_ = in[1];
    reader_ = std::thread([this, descriptor = out[0]] { read(descriptor); });
}

Program::~Program() {
    end(SIGKILL);
    ::close(input_);
    reader_.join();
}

void Program::read(int descriptor) {
    std::string rest;
    char buffer[4096];
    for (;;) {
        const ssize_t bytes = ::read(descriptor, buffer, sizeof buffer);
        if (bytes < 0 && errno == EINTR)
            continue;
        if (bytes <= 0)
            break;
        rest.append(buffer, static_cast<size_t>(bytes));
        const std::lock_guard<std::mutex> lock(mutex_);
        for (size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
            lines_.push_back(rest.substr(0, end));
            rest.erase(0, end + 1);
        }
        changed_.notify_all();
    }
    ::close(descriptor);
}

void Program::tell(const std::string& line) {
    const std::string text = line + '\n';
    if (::write(input_, text.data(), text.size()) < 0)
        perror("telling a program");
}

void Program::kill(int signal) {
    if (process_ > 0)
        ::kill(process_, signal);
}

void Program::end(int signal) {
    if (process_ <= 0)
        return;
    ::kill(process_, signal);
    ::kill(process_, SIGCONT);
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
}

bool Program::runs() {
    if (process_ > 0 && ::waitpid(process_, nullptr, WNOHANG) == process_)
        process_ = -1;
    return process_ > 0;
}

bool Program::waitForLine(const std::string& begin) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, HANG, [&] {
        while (passed_ < lines_.size())
            if (lines_[passed_++].compare(0, begin.size(), begin) == 0)
                return true;
        return false;
    });
}

std::string Program::newest() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_.empty() ? std::string() : lines_.back();
}

long Program::linesOf(const std::string& text) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::count(lines_.begin(), lines_.end(), text);
}

bool isInstalled(const std::string& name) {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');)
        if (::access((folder + '/' + name).c_str(), X_OK) == 0)
            return true;
    return false;
}

} // namespace ostrel::support
