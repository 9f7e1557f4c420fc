// The cameras without hardware that a command line asks for.
#ifndef OSTREL_APPS_COMMON_ADDED_CAMERAS_H
#define OSTREL_APPS_COMMON_ADDED_CAMERAS_H

#include "apps/common/size.h"

#include <QtCore/QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace ostrel {
class OVideoVirtualCamera;
}

namespace ostrel::apps {

// They stay attached while the object lives. Bound to one thread.
class AddedCameras {
public:
    // size: what will be captured, so that the test picture need not be scaled. play: a file; empty for none.
    // Throws a Failure with EXIT_FILE when it cannot be played.
    AddedCameras(bool testCamera, const QString& play, bool once, const Size& size);
    ~AddedCameras();

    // Identifiers, the test camera's first.
    const QStringList& identifiers() const { return identifiers_; }
    // Seconds without a frame after which a file that is played once has ended; nothing when none is.
    std::optional<double> endOfFile() const { return endOfFile_; }

private:
    void add(std::unique_ptr<OVideoVirtualCamera> camera);

    std::vector<std::unique_ptr<OVideoVirtualCamera>> cameras_;
    QStringList identifiers_;
    std::optional<double> endOfFile_;
};

} // namespace ostrel::apps

#endif
