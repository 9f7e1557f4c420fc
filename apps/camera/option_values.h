// Values of options that the parser library does not know, with messages that say what would be right.
#ifndef OSTREL_APPS_CAMERA_OPTION_VALUES_H
#define OSTREL_APPS_CAMERA_OPTION_VALUES_H

#include "apps/camera/mode_choice.h"
#include "apps/camera/record/recording_kind.h"
#include "apps/camera/y4m.h"

#include <cstdint>
#include <string>

namespace ostrel::apps::cli {

// Each throws std::invalid_argument for a text that does not fit.
Size sizeValue(const std::string& text);
VIDEO_QUALITY levelValue(const std::string& text);
ScaleMethod filterValue(const std::string& text);
FileKind kindValue(const std::string& text);
RecordingKind recordingKindValue(const std::string& text);
WantedMode modeValue(const std::string& text);
Rate rateValue(const std::string& text);
double secondsValue(const std::string& text); // "2", "2s", "500ms", "5m", "1h"; above 0
uint64_t numberValue(const std::string& text);
uint64_t countValue(const std::string& text); // above 0
int qualityValue(const std::string& text);    // 1 to 100
uint16_t portValue(const std::string& text);  // 0 to 65535

} // namespace ostrel::apps::cli

#endif
