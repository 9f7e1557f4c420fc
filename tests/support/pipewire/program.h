// Another program that runs beside a test.
#ifndef OSTREL_TESTS_SUPPORT_PIPEWIRE_PROGRAM_H
#define OSTREL_TESTS_SUPPORT_PIPEWIRE_PROGRAM_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace ostrel::support {

// Ends with the test, however that ends. Bound to one thread but for the lines.
class Program {
public:
    explicit Program(const std::vector<std::string>& words);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void tell(const std::string& line); // on its standard input
    void kill(int signal);
    void end(int signal); // and waits for its end
    bool runs();

    // Waits for a line on its standard output that begins so; those before are passed over by the next wait.
    bool waitForLine(const std::string& begin);
    // The newest line, and how many there were so far of one text.
    std::string newest();
    long linesOf(const std::string& text);

private:
    void read(int descriptor);

    pid_t process_ = -1;
    int input_ = -1;
    std::mutex mutex_; // of the rest
    std::condition_variable changed_;
    std::vector<std::string> lines_;
    size_t passed_ = 0;
    std::thread reader_;
};

// Whether a program is installed.
bool isInstalled(const std::string& name);

} // namespace ostrel::support

#endif
