#include "viewer/virtual_screen.h"

#include <QtCore/QFile>
#include <QtCore/QtEndian>

#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrel::tests {

VirtualScreen::VirtualScreen(int width, int height) {
    start(width, height);
}

VirtualScreen::~VirtualScreen() {
    if (server_ <= 0)
        return;
    kill(server_, SIGTERM);
    waitpid(server_, nullptr, 0);
}

void VirtualScreen::start(int width, int height) {
    int ends[2];
    if (pipe(ends) != 0)
        return;
    const std::string size = std::to_string(width) + "x" + std::to_string(height) + "x24";
    const std::string folder = memory_.path().toStdString();
    const std::string number = std::to_string(ends[1]);
    server_ = fork();
    if (server_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM); // a test that crashes leaves no server behind
        close(ends[0]);
        const int silence = open("/dev/null", O_WRONLY);
        dup2(silence, STDERR_FILENO);
        execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", size.c_str(), "-fbdir",
               folder.c_str(), "-noreset", "-nolisten", "tcp", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    // The server writes its number and a line break when it is ready; an end without it means that it failed.
    QByteArray line;
    char byte = 0;
    while (read(ends[0], &byte, 1) == 1 && byte != '\n')
        line += byte;
    close(ends[0]);
    if (byte == '\n')
        display_ = ":" + line;
}

// The file has the format of xwd: a header of 32-bit numbers, most significant byte first, a colour table of
// 12 bytes an entry, the rows.
QImage VirtualScreen::picture() const {
    QFile file(memory_.filePath("Xvfb_screen0"));
    if (!file.open(QIODevice::ReadOnly))
        return QImage();
    const QByteArray bytes = file.readAll();
    const auto field = [&bytes](int index) {
        return index * 4 + 4 <= bytes.size()
                   ? static_cast<int>(qFromBigEndian<quint32>(bytes.constData() + index * 4))
                   : 0;
    };
    const int headerSize = field(0), width = field(4), height = field(5), rowBytes = field(12),
              colours = field(19);
    const int offset = headerSize + colours * 12;
    if (field(11) != 32 || bytes.size() < offset + rowBytes * height)
        return QImage();
    const uchar* rows = reinterpret_cast<const uchar*>(bytes.constData()) + offset;
    return QImage(rows, width, height, rowBytes, QImage::Format_RGB32).copy();
}

} // namespace ostrel::tests
