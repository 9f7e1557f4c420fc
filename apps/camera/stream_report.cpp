#include "apps/camera/stream_report.h"

#include "apps/common/text.h"

namespace ostrel::apps::cli {

namespace {

std::string grantedText(const OVideoStatistics& statistics) {
    std::vector<std::string> parts;
    if (!statistics.grantedFormat.isEmpty())
        parts.push_back(printable(statistics.grantedFormat.toStdString()));
    if (statistics.grantedWidth > 0)
        parts.push_back(toString(Size{statistics.grantedWidth, statistics.grantedHeight}));
    if (statistics.grantedRate > 0)
        parts.push_back("at " + QString::number(statistics.grantedRate, 'g', 4).toStdString() + "/s");
    return parts.empty() ? std::string("unknown") : join(parts, " ");
}

} // namespace

std::string droppedText(const OVideoStatistics& statistics) {
    uint64_t sum = 0;
    std::vector<std::string> reasons;
    const QList<QString> keys = statistics.dropped.keys();
    for (const QString& reason : keys) {
        sum += statistics.dropped.value(reason);
        reasons.push_back(printable(reason.toStdString()) + " " +
                          std::to_string(statistics.dropped.value(reason)));
    }
    return std::to_string(sum) + (reasons.empty() ? "" : " (" + join(reasons, ", ") + ")");
}

std::string streamReport(const StreamFigures& figures, const OVideoStatistics& statistics,
                         const Size& asked) {
    return fixed(figures.seconds, 1) + " s  " + fixed(figures.rate(), 1) + "/s  taken " +
           std::to_string(figures.taken) + "  skipped " +
           std::to_string(statistics.skipped + figures.missed) + "  dropped " + droppedText(statistics) +
           "  lost " + std::to_string(statistics.lost) + "  asked " + toString(asked) + ", granted " +
           grantedText(statistics);
}

} // namespace ostrel::apps::cli
