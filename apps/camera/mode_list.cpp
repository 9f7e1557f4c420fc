#include "apps/camera/mode_list.h"

#include "apps/camera/table.h"
#include "apps/common/size.h"
#include "apps/common/text.h"

#include <QtCore/QJsonObject>

#include <cstdint>

namespace ostrel::apps::cli {

namespace {

bool isRange(const OVideoMode& mode) {
    return mode.leastWidth() != mode.width() || mode.leastHeight() != mode.height();
}

// "640x480", "16x16 to 640x480 in steps of 8x8"
std::string sizeText(const OVideoMode& mode) {
    if (mode.width() == 0)
        return "any size";
    const std::string most = toString(Size{mode.width(), mode.height()});
    if (!isRange(mode))
        return most;
    return toString(Size{mode.leastWidth(), mode.leastHeight()}) + " to " + most + " in steps of " +
           toString(Size{mode.stepWidth(), mode.stepHeight()});
}

std::string rateText(uint32_t numerator, uint32_t denominator) {
    return QString::number(static_cast<double>(denominator) / numerator, 'g', 4).toStdString();
}

bool hasLongest(const OVideoMode& mode) {
    return mode.longestNumerator() != mode.intervalNumerator() ||
           mode.longestDenominator() != mode.intervalDenominator();
}

// "30", "5 to 120"; empty where the driver does not say.
std::string ratesText(const OVideoMode& mode) {
    if (mode.intervalNumerator() == 0)
        return std::string();
    const std::string rate = rateText(mode.intervalNumerator(), mode.intervalDenominator());
    return hasLongest(mode) && mode.longestNumerator() != 0
               ? rateText(mode.longestNumerator(), mode.longestDenominator()) + " to " + rate
               : rate;
}

QJsonArray fraction(uint32_t numerator, uint32_t denominator) {
    return {static_cast<double>(numerator), static_cast<double>(denominator)};
}

} // namespace

std::string modeTable(const QList<OVideoMode>& modes) {
    std::vector<Row> rows;
    for (const OVideoMode& mode : modes) {
        const std::string format = printable(mode.format().toStdString());
        const std::string rates = ratesText(mode);
        const Row row = {mode.hasPicture() ? "  " + format : "  " + format + " (no picture)", sizeText(mode),
                         rates.empty() ? "" : rates + "/s"};
        const bool another = rows.empty() || row[0] != rows.back()[0] || row[1] != rows.back()[1];
        if (another)
            rows.push_back(row);
        else if (!rates.empty())
            rows.back()[2] += " " + row[2];
    }
    return rows.empty() ? std::string() : aligned(rows);
}

QJsonArray modeJson(const QList<OVideoMode>& modes) {
    QJsonArray list;
    for (const OVideoMode& mode : modes) {
        QJsonObject one{{"format", mode.format()}, {"picture", mode.hasPicture()}};
        if (mode.width() != 0) {
            one.insert("width", mode.width());
            one.insert("height", mode.height());
        }
        if (isRange(mode)) {
            one.insert("least", QJsonObject{{"width", mode.leastWidth()}, {"height", mode.leastHeight()}});
            one.insert("step", QJsonObject{{"width", mode.stepWidth()}, {"height", mode.stepHeight()}});
        }
        if (mode.intervalNumerator() != 0) {
            one.insert("interval", fraction(mode.intervalNumerator(), mode.intervalDenominator()));
            one.insert("rate", mode.framesPerSecond());
        }
        if (hasLongest(mode))
            one.insert("longestInterval", fraction(mode.longestNumerator(), mode.longestDenominator()));
        list.append(one);
    }
    return list;
}

} // namespace ostrel::apps::cli
