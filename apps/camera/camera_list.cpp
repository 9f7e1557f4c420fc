#include "apps/camera/camera_list.h"

#include "apps/common/text.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

using Row = std::vector<std::string>;

const std::size_t BETWEEN_COLUMNS = 2;

std::string aligned(const std::vector<Row>& rows) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows)
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], displayWidth(row[column]));
    std::string text;
    for (const Row& row : rows) {
        for (std::size_t column = 0; column + 1 < row.size(); ++column)
            text +=
                row[column] + std::string(widths[column] - displayWidth(row[column]) + BETWEEN_COLUMNS, ' ');
        text += row.back() + "\n";
    }
    return text;
}

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

std::string cameraJson(const std::vector<Camera>& cameras) {
    QJsonArray list;
    for (const Camera& camera : cameras) {
        QJsonArray formats;
        for (const Size& size : camera.sizes)
            formats.append(QJsonObject{{"width", size.width}, {"height", size.height}});
        list.append(QJsonObject{{"id", QString::fromStdString(camera.identifier)},
                                {"name", QString::fromStdString(camera.name)},
                                {"formats", formats}});
    }
    return QJsonDocument(list).toJson().toStdString();
}

} // namespace ostrel::apps::cli
