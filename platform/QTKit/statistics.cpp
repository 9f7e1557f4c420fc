#include <ostrel/statistics.h>

#include "platform/QTKit/open_camera.h"

namespace ostrel {

bool videoStatistics(const QString& uniqueID, OVideoStatistics& statistics) {
    const std::shared_ptr<OpenCamera> camera = openedCamera(uniqueID.toStdString());
    if (!camera)
        return false;
    const cameras::StreamStatistics figures = (*camera)->statistics();
    OVideoStatistics result;
    result.delivered = figures.delivered;
    result.taken = figures.taken;
    result.skipped = figures.skipped;
    result.lost = figures.lost;
    for (const auto& reason : figures.dropped)
        result.dropped.insert(QString::fromStdString(reason.first), reason.second);
    result.grantedFormat = QString::fromStdString(figures.grantedFormat);
    result.grantedWidth = figures.grantedWidth;
    result.grantedHeight = figures.grantedHeight;
    result.grantedRate = figures.grantedRate;
    result.ended = QString::fromStdString(figures.ended);
    statistics = result;
    return true;
}

} // namespace ostrel
