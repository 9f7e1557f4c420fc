// The facts of the machine itself, by questions that change nothing.
#include "apps/camera/doctor/analog_input.h"
#include "apps/camera/doctor/machine.h"
#include "apps/camera/video_nodes.h"

#include <ostrel/device_details.h>
#include <ostrel/pipewire.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace ostrel::apps::cli::doctor {

namespace {

const int MOST_GROUPS = 256;

bool runsInContainer() {
    for (const char* mark : {"/.dockerenv", "/run/.containerenv", "/run/systemd/container"})
        if (access(mark, F_OK) == 0)
            return true;
    return false;
}

bool isMemberAfterLogin(gid_t group) {
    gid_t now[MOST_GROUPS];
    const int nowCount = getgroups(MOST_GROUPS, now);
    if (nowCount < 0 || group == getegid() || std::find(now, now + nowCount, group) != now + nowCount)
        return false;
    // cppcheck-suppress getpwuidCalled // by the only thread that asks for users
    const passwd* const user = getpwuid(getuid());
    gid_t then[MOST_GROUPS];
    int thenCount = MOST_GROUPS;
    return user && getgrouplist(user->pw_name, user->pw_gid, then, &thenCount) >= 0 &&
           std::find(then, then + thenCount, group) != then + thenCount;
}

// "usb1" of ".../0000:00:14.0/usb1/1-3/1-3:1.0/video4linux/video0"
std::string busOf(const struct stat& status) {
    const QString link = QString("/sys/dev/char/%1:%2").arg(major(status.st_rdev)).arg(minor(status.st_rdev));
    const QStringList parts = QFileInfo(link).canonicalFilePath().split('/');
    for (const QString& part : parts)
        if (part.startsWith("usb") && part.size() > 3 && part[3].isDigit())
            return part.toStdString();
    return std::string();
}

// Those of other users show only to root.
std::vector<Holder> holdersOf(dev_t device) {
    std::vector<Holder> holders;
    const QStringList processes = QDir("/proc").entryList({"[0-9]*"}, QDir::Dirs, QDir::Name);
    for (const QString& process : processes) {
        if (process.toInt() == getpid())
            continue;
        const QString folder = "/proc/" + process;
        const QStringList open =
            QDir(folder + "/fd").entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
        const bool holds = std::any_of(open.begin(), open.end(), [&](const QString& descriptor) {
            struct stat status = {};
            return stat((folder + "/fd/" + descriptor).toUtf8().constData(), &status) == 0 &&
                   S_ISCHR(status.st_mode) && status.st_rdev == device;
        });
        QFile name(folder + "/comm");
        if (holds && name.open(QIODevice::ReadOnly))
            holders.push_back({process.toInt(), name.readAll().trimmed().toStdString()});
    }
    return holders;
}

Node::Access accessFor(int error) {
    switch (error) {
    case EACCES:
        return Node::Access::NotPermitted;
    case EPERM:
        return Node::Access::Denied;
    default:
        return Node::Access::Other;
    }
}

Node examine(const OVideoNode& listed) {
    Node node;
    node.path = listed.path().toStdString();
    node.name = listed.name().toStdString();
    node.camera = listed.uniqueID().toStdString();
    node.reason = listed.reason().toStdString();
    node.group = groupOf(node.path);
    struct stat status = {};
    if (stat(node.path.c_str(), &status) == 0) {
        node.memberAfterLogin = isMemberAfterLogin(status.st_gid);
        node.bus = busOf(status);
        node.holders = holdersOf(status.st_rdev);
    }
    const int descriptor = open(node.path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        node.access = accessFor(errno);
        return node;
    }
    node.input = analogInputOf(descriptor);
    close(descriptor);
    return node;
}

PipeWire::State stateOf(OVideoPipeWire::State state) {
    switch (state) {
    case OVideoPipeWire::NOT_BUILT:
        break;
    case OVideoPipeWire::NO_DAEMON:
        return PipeWire::State::NoDaemon;
    case OVideoPipeWire::NO_LIBRARY:
        return PipeWire::State::NoLibrary;
    case OVideoPipeWire::SILENT:
        return PipeWire::State::Silent;
    case OVideoPipeWire::CONNECTED:
        return PipeWire::State::Connected;
    }
    return PipeWire::State::NotBuilt;
}

PipeWire pipeWireNow() {
    const OVideoPipeWire seen;
    PipeWire result;
    result.state = stateOf(seen.state());
    result.where = seen.where().toStdString();
    result.version = seen.version().toStdString();
    result.sessionManager = seen.hasSessionManager();
    result.cameras = seen.cameras();
    result.otherSources = seen.otherSources();
    result.added = seen.addedCameras();
    return result;
}

} // namespace

Machine thisMachine() {
    Machine machine;
    machine.container = runsInContainer();
    machine.usb = usbVideoDevices(std::string());
    const QList<OVideoNode> nodes = videoNodes();
    for (const OVideoNode& node : nodes)
        if (node.path().startsWith('/')) // the others are PipeWire's alone
            machine.nodes.push_back(examine(node));
    machine.pipeWire = pipeWireNow();
    return machine;
}

} // namespace ostrel::apps::cli::doctor
