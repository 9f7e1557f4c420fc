#include "apps/camera/camera_list.h"

#include "apps/camera/mode_list.h"
#include "apps/camera/table.h"
#include "apps/common/text.h"

#include <ostrel/device_details.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <utility>

namespace ostrel::apps::cli {

namespace {

std::string sizesOf(const Camera& camera) {
    std::vector<std::string> sizes;
    for (const Size& size : camera.sizes)
        sizes.push_back(toString(size));
    return join(sizes, " ");
}

} // namespace

std::string cameraTable(const std::vector<Camera>& cameras) {
    std::vector<Row> rows = {{"NAME", "IDENTIFIER", "SIZES"}};
    for (const Camera& camera : cameras)
        rows.push_back({camera.name, printable(camera.identifier), sizesOf(camera)});
    return aligned(rows);
}

namespace {

// "046d"
QString hexadecimal(int number) {
    return QString("%1").arg(number, 4, 16, QLatin1Char('0'));
}

// What is not known is left out.
QJsonObject deviceJson(const QString& identifier) {
    const OVideoDeviceDetails device = videoDeviceDetails(identifier);
    const std::pair<const char*, QString> texts[] = {{"kind", device.kind()},
                                                     {"node", device.node()},
                                                     {"driver", device.driver()},
                                                     {"bus", device.bus()},
                                                     {"serial", device.serialNumber()}};
    QJsonObject json;
    for (const auto& [name, text] : texts)
        if (!text.isEmpty())
            json.insert(name, text);
    if (device.vendorID() != 0) {
        json.insert("vendor", hexadecimal(device.vendorID()));
        json.insert("product", hexadecimal(device.productID()));
    }
    return json;
}

QJsonArray arrayOf(const std::vector<Camera>& cameras) {
    QJsonArray list;
    for (const Camera& camera : cameras) {
        QJsonArray formats;
        for (const Size& size : camera.sizes)
            formats.append(QJsonObject{{"width", size.width}, {"height", size.height}});
        const QString identifier = QString::fromStdString(camera.identifier);
        list.append(QJsonObject{{"id", identifier},
                                {"name", QString::fromStdString(camera.name)},
                                {"formats", formats},
                                {"device", deviceJson(identifier)},
                                {"modes", modeJson(videoModes(identifier))}});
    }
    return list;
}

} // namespace

std::string cameraModes(const std::vector<Camera>& cameras) {
    std::string text;
    for (const Camera& camera : cameras) {
        QString why;
        const std::string table = modeTable(videoModes(QString::fromStdString(camera.identifier), &why));
        text +=
            (text.empty() ? "" : "\n") + camera.name + " (" + printable(camera.identifier) + ")\n" + table;
        if (!why.isEmpty())
            text += "  " + printable(why.toStdString()) + "\n";
        else if (table.empty())
            text += "  in whatever size its pictures have\n";
    }
    return text;
}

std::string cameraJson(const std::vector<Camera>& cameras) {
    return QJsonDocument(arrayOf(cameras)).toJson().toStdString();
}

std::vector<OtherNode> otherNodes() {
    std::vector<OtherNode> others;
    for (const OVideoNode& node : videoNodes())
        if (!node.reason().isEmpty())
            others.push_back({node.path().toStdString(), printable(node.name().toStdString()),
                              printable(node.reason().toStdString())});
    return others;
}

std::string nodeTable(const std::vector<OtherNode>& nodes) {
    if (nodes.empty())
        return std::string();
    std::vector<Row> rows = {{"NODE", "NAME", "WHY IT IS NO CAMERA, OR CANNOT BE USED"}};
    for (const OtherNode& node : nodes)
        rows.push_back({printable(node.path), node.name, node.reason});
    return aligned(rows);
}

std::string allJson(const std::vector<Camera>& cameras, const std::vector<OtherNode>& nodes) {
    QJsonArray others;
    for (const OtherNode& node : nodes)
        others.append(QJsonObject{{"path", QString::fromStdString(node.path)},
                                  {"name", QString::fromStdString(node.name)},
                                  {"reason", QString::fromStdString(node.reason)}});
    return QJsonDocument(QJsonObject{{"cameras", arrayOf(cameras)}, {"others", others}})
        .toJson()
        .toStdString();
}

} // namespace ostrel::apps::cli
