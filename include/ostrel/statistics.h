// What a running camera does behind the frames that it hands out (Linux).
#ifndef OSTREL_STATISTICS_H
#define OSTREL_STATISTICS_H

#include <ostrel/export.h>

#include <QtCore/QMap>
#include <QtCore/QString>

#include <stdint.h>

namespace ostrel {

// Figures since the camera was started; of a camera that several captures share, those of all together.
struct OVideoStatistics {
    OVideoStatistics()
        : delivered(0), taken(0), skipped(0), lost(0), grantedWidth(0), grantedHeight(0), grantedRate(0) {}

    uint64_t delivered;              // frames that reached a capture
    uint64_t taken;                  // pictures converted because somebody asked for them
    uint64_t skipped;                // passed over, since a newer frame was already there
    uint64_t lost;                   // missing in the driver's numbering
    QMap<QString, uint64_t> dropped; // broken frames by reason, in words
    QString grantedFormat;           // the camera's own pixel format, four characters; empty if not known
    int grantedWidth;                // the camera's own frame size in pixels; 0 if not known
    int grantedHeight;
    double grantedRate; // frames a second; 0 if not known
    QString ended;      // why the camera stopped by itself, in words; empty while it runs
};

// Fills statistics with the figures of the camera with this identifier while a capture of this process has it
// open; otherwise answers false and leaves it untouched. Any thread may call.
OSTREL_EXPORT bool videoStatistics(const QString& uniqueID, OVideoStatistics& statistics);

} // namespace ostrel

#endif
