#include "apps/camera/video_nodes.h"

#include "apps/common/text.h"

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <algorithm>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel::apps::cli {

std::string groupOf(const std::string& path) {
    struct stat status = {};
    const mode_t groupAccess = S_IRGRP | S_IWGRP;
    if (stat(path.c_str(), &status) != 0 || (status.st_mode & groupAccess) != groupAccess)
        return std::string();
    // A container may know the number without a name.
    const group* entry = getgrgid(status.st_gid);
    return entry ? std::string(entry->gr_name) : std::to_string(status.st_gid);
}

std::vector<ClosedNode> closedVideoNodes(const std::string& directory, const MayOpen& mayOpen) {
    QStringList names =
        QDir(QString::fromStdString(directory)).entryList(QStringList("video*"), QDir::System | QDir::Files);
    names = names.filter(QRegularExpression("^video[0-9]+$"));
    std::sort(names.begin(), names.end(),
              [](const QString& a, const QString& b) { return a.mid(5).toInt() < b.mid(5).toInt(); });
    std::vector<ClosedNode> nodes;
    for (const QString& name : names) {
        const std::string path = directory + "/" + name.toStdString();
        if (!mayOpen(path))
            nodes.push_back({path, groupOf(path)});
    }
    return nodes;
}

std::vector<ClosedNode> closedVideoNodes() {
    return closedVideoNodes("/dev",
                            [](const std::string& path) { return access(path.c_str(), R_OK | W_OK) == 0; });
}

std::string permissionAdvice(const std::vector<ClosedNode>& nodes) {
    std::vector<std::string> paths;
    std::vector<std::string> groups;
    for (const ClosedNode& node : nodes) {
        paths.push_back(node.path);
        if (!node.group.empty() && std::find(groups.begin(), groups.end(), node.group) == groups.end())
            groups.push_back(node.group);
    }
    const std::string what = "no permission to use " + join(paths, ", ");
    if (groups.empty())
        return what + ": ask the administrator of this machine for access";
    return what + ": join the group " + join(groups, ", ") + " (sudo usermod -aG " + join(groups, ",") +
           " \"$USER\") and log in again";
}

} // namespace ostrel::apps::cli
