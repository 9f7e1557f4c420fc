#include "apps/camera/mode_choice.h"

#include "apps/common/failure.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli {

std::optional<WantedMode> parseMode(const std::string& text) {
    WantedMode wanted;
    const std::size_t at = text.find('@');
    if (at != std::string::npos) {
        wanted.rate = parseRate(text.substr(at + 1));
        if (!wanted.rate)
            return std::nullopt;
    }
    const std::string mode = text.substr(0, at);
    const std::size_t colon = mode.find(':');
    const std::string last = colon == std::string::npos ? mode : mode.substr(colon + 1);
    if (const std::optional<Size> size = parseSize(last))
        wanted.size = *size;
    else if (colon != std::string::npos)
        return std::nullopt;
    wanted.format = wanted.size.empty() ? mode : mode.substr(0, colon == std::string::npos ? 0 : colon);
    const bool noFormat = colon != std::string::npos && wanted.format.empty();
    const bool nothing = wanted.format.empty() && wanted.size.empty() && !wanted.rate;
    return noFormat || nothing ? std::nullopt : std::optional<WantedMode>(wanted);
}

OVideoMode wishOf(const WantedMode& wanted, const QList<OVideoMode>& offered) {
    const QString format = QString::fromStdString(wanted.format);
    QString meant = format;
    for (const OVideoMode& mode : offered) {
        if (mode.format() == format) {
            meant = format;
            break;
        }
        if (mode.format().compare(format, Qt::CaseInsensitive) == 0)
            meant = mode.format();
    }
    OVideoMode wish;
    wish.setFormat(meant);
    wish.setSize(wanted.size.width, wanted.size.height);
    if (wanted.rate)
        wish.setInterval(wanted.rate->denominator, wanted.rate->numerator);
    return wish;
}

void requestMode(const std::string& identifier, const WantedMode& wanted) {
    const QString id = QString::fromStdString(identifier);
    QString why;
    if (!requestVideoMode(id, wishOf(wanted, videoModes(id)), &why))
        throw Failure(EXIT_USAGE,
                      printable(why.toStdString()) + ": 'ostrel-camera list --modes' shows what it offers");
}

} // namespace ostrel::apps::cli
