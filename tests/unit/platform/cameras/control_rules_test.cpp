#include "platform/cameras/control_rules.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <linux/videodev2.h>

namespace ostrel::tests {

using cameras::Control;

// Of automatic exposure 1 is manual, 2 leaves the exposure time to the user, 3 the iris.
TEST(ControlRules, AControlIsItsAutomaticOnesUntilThatLetsGo) {
    const struct {
        uint32_t held, automatic;
        std::vector<int64_t> released; // values of the automatic one
    } pairs[] = {
        {V4L2_CID_EXPOSURE_ABSOLUTE, V4L2_CID_EXPOSURE_AUTO, {1, 2}},
        {V4L2_CID_EXPOSURE, V4L2_CID_EXPOSURE_AUTO, {1, 2}},
        {V4L2_CID_IRIS_ABSOLUTE, V4L2_CID_EXPOSURE_AUTO, {1, 3}},
        {V4L2_CID_GAIN, V4L2_CID_EXPOSURE_AUTO, {1}},
        {V4L2_CID_GAIN, V4L2_CID_AUTOGAIN, {0}},
        {V4L2_CID_WHITE_BALANCE_TEMPERATURE, V4L2_CID_AUTO_WHITE_BALANCE, {0}},
        {V4L2_CID_FOCUS_ABSOLUTE, V4L2_CID_FOCUS_AUTO, {0}},
        {V4L2_CID_HUE, V4L2_CID_HUE_AUTO, {0}},
        {V4L2_CID_ISO_SENSITIVITY, V4L2_CID_ISO_SENSITIVITY_AUTO, {0}},
    };
    for (const auto& pair : pairs)
        for (int64_t value = 0; value <= 3; ++value) {
            Control held, automatic;
            held.id = pair.held;
            held.inactive = true;
            automatic.id = pair.automatic;
            automatic.maximum = 3;
            automatic.value = pair.released.front() == 0 ? 1 : 0;
            cameras::ControlPlan steps;
            const bool free =
                !plan("Camera", {held, automatic}, {{held.id, 0, ""}, {automatic.id, value, ""}}, steps);
            EXPECT_EQ(free, std::count(pair.released.begin(), pair.released.end(), value) == 1)
                << std::hex << pair.held << " with " << pair.automatic << " at " << value;
            EXPECT_EQ(steps.releasing.size(), free ? 1u : 0u);
        }
}

} // namespace ostrel::tests
