// Each diagnosis of a camera.
#include "doctor.h"

#include "platform/cameras/messages.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cerrno>

namespace ostrel::tests {

namespace {

Trial silent() {
    Trial trial = healthy();
    trial.taken = trial.arrived = 0;
    trial.seconds = 0;
    trial.waited = 5;
    return trial;
}

} // namespace

TEST(DoctorOfCameras, AHealthyCameraHasNoWarning) {
    const Machine machine = machineWith({webcam()});
    Findings all = checkMachine(machine);
    for (const Finding& finding : checkCamera(machine, healthy()))
        all.push_back(finding);
    EXPECT_EQ(worst(all), Verdict::Ok) << findingsText(all);
    EXPECT_EQ(findingsText(all), "ok       nodes        1 video node, 1 camera\n"
                                 "ok       permission   you may open every video node\n"
                                 "usb-1-at-x:\n"
                                 "ok       start        it starts at 640x480\n"
                                 "ok       frames       frames come\n"
                                 "ok       broken       0 lost, 0 dropped of 61 frames\n"
                                 "ok       rate         30.0 frames/s, 30.0 granted\n"
                                 "ok       picture      the picture is not black\n");
}

// The library's own words lead to the diagnosis.
TEST(DoctorOfCameras, ABusyCameraNamesItsHolderWhereItShows) {
    const std::string why = cameras::openFailed("Webcam (/dev/video0)", EBUSY).text;
    Machine machine = machineWith({webcam()});
    EXPECT_EQ(text(checkStart(machine, refused(why))),
              "problem busy: it is in use by another user's program | sudo fuser -v /dev/video0");
    machine.nodes[0].holders = {{4711, "meeting"}, {4712, "mirror"}};
    EXPECT_EQ(text(checkStart(machine, refused(why))),
              "problem busy: it is in use by meeting (process 4711), mirror (process 4712) | close meeting, "
              "then run this again");
    const std::string late =
        cameras::startFailed("Webcam (/dev/video0)", {{"YUYV", {640, 480}, "VIDIOC_S_FMT", EBUSY}}).text;
    EXPECT_EQ(checkStart(machine, refused(late)).check, "busy");
    EXPECT_EQ(text(checkStart(machine, healthy())).substr(0, 2), "ok") << "a holder alone harms nobody";
}

TEST(DoctorOfCameras, AFullBusNamesTheOtherCamerasOnIt) {
    const std::string why =
        cameras::startFailed("Webcam (/dev/video0)", {{"YUYV", {640, 480}, "VIDIOC_STREAMON", ENOSPC}}).text;
    Machine machine = machineWith({webcam()});
    const Finding alone = checkStart(machine, refused(why));
    EXPECT_EQ(text(alone),
              "problem bandwidth: " + why +
                  "; no other camera is on its bus | ostrel-camera watch --size ld -c 'usb-1-at-x'");
    Node second = webcam();
    second.path = "/dev/video2";
    second.name = "Second";
    second.camera = "usb-2-at-x";
    Node metadata = second;
    metadata.path = "/dev/video3";
    metadata.camera.clear();
    Node elsewhere = second;
    elsewhere.path = "/dev/video4";
    elsewhere.bus = "usb2";
    machine.nodes = {webcam(), second, metadata, elsewhere};
    EXPECT_EQ(checkStart(machine, refused(why)).fact, why + "; on its bus: Second (/dev/video2)");
}

TEST(DoctorOfCameras, OtherRefusalsKeepTheirWords) {
    EXPECT_EQ(text(checkStart(machineWith({webcam()}), refused("its maker knows why"))),
              "problem start: it does not start: its maker knows why | ostrel-camera snapshot --verbose -o "
              "/dev/null -c 'usb-1-at-x'");
}

TEST(DoctorOfCameras, ACameraThatStartsAndSendsNothingIsTriedByAnotherProgram) {
    EXPECT_EQ(text(only(checkStream(silent()), Verdict::Problem)),
              "problem frames: it starts, but sends no frame within 5.0 s: its privacy switch may be on | "
              "v4l2-ctl -d /dev/video0 --stream-mmap --stream-count=30");
    Trial stalled = silent();
    stalled.why = cameras::stalled("Webcam");
    EXPECT_EQ(text(only(checkStream(stalled), Verdict::Problem)),
              "problem frames: it starts, but no frame comes: Webcam sends no frames and was started again | "
              "plug it into another port with another cable, then run this again");
    Trial later = healthy();
    later.waited = 5;
    EXPECT_EQ(only(checkStream(later), Verdict::Problem).fact,
              "it has stopped sending frames within 5.0 s: its privacy switch may be on");
}

TEST(DoctorOfCameras, NothingButBrokenFramesAreCountedByReason) {
    Trial trial = silent();
    trial.statistics.dropped["truncated"] = 12;
    EXPECT_EQ(text(only(checkStream(trial), Verdict::Problem)),
              "problem frames: all that it sends is broken, dropped 12 (truncated 12) | ostrel-camera watch "
              "-c 'usb-1-at-x' --size ld");
}

TEST(DoctorOfCameras, SharesOfLostAndDroppedFramesAreJudged) {
    Trial trial = healthy();
    trial.wasted = 2;
    trial.statistics.dropped["damaged"] = 2;
    EXPECT_EQ(worst(checkStream(trial)), Verdict::Ok) << "cameras may spoil a frame while they start";
    trial.wasted = 3;
    trial.arrived = 149;
    EXPECT_EQ(worst(checkStream(trial)), Verdict::Ok) << "a fiftieth";
    trial.arrived = 148;
    EXPECT_EQ(worst(checkStream(trial)), Verdict::Warning);
    trial.wasted = 6;
    trial.arrived = 59;
    trial.statistics.lost = 4;
    EXPECT_EQ(text(only(checkStream(trial), Verdict::Warning)),
              "warning broken: 10 % of the frames do not arrive whole: 4 lost, 2 (damaged 2) dropped of 60 "
              "frames | ostrel-camera watch -c 'usb-1-at-x' --duration 60, with another cable or port");
    trial.wasted = 12;
    EXPECT_EQ(worst(checkStream(trial)), Verdict::Warning) << "a fifth";
    trial.wasted = 13;
    EXPECT_EQ(only(checkStream(trial), Verdict::Problem).check, "broken");
}

TEST(DoctorOfCameras, ARateFarBelowTheGrantedOnePointsAtTheExposure) {
    Trial trial = healthy();
    trial.arrived = 50;
    EXPECT_EQ(worst(checkStream(trial)), Verdict::Ok);
    trial.arrived = 30;
    EXPECT_EQ(text(only(checkStream(trial), Verdict::Warning)),
              "warning rate: 15.0 frames/s, 30.0 granted: most cameras slow down in poor light | "
              "ostrel-camera controls -c 'usb-1-at-x' (auto_exposure)");
    trial.slowsInTheDark = true;
    EXPECT_EQ(
        text(only(checkStream(trial), Verdict::Warning)),
        "warning rate: 15.0 frames/s, 30.0 granted: most cameras slow down in poor light | "
        "ostrel-camera controls -c 'usb-1-at-x' exposure_dynamic_framerate=0 keeps the rate, with darker "
        "pictures");
    trial.statistics.grantedRate = 0;
    EXPECT_EQ(worst(checkStream(trial)), Verdict::Ok) << "nothing was promised";
}

TEST(DoctorOfCameras, ABlackPictureIsAWarning) {
    Trial trial = healthy();
    trial.brightest = 20; // noise
    EXPECT_EQ(
        text(only(checkStream(trial), Verdict::Warning)),
        "warning picture: the picture is black: its lens may be covered, its privacy switch on, or this "
        "part of the device an infrared camera | ostrel-camera snapshot --skip 30 -c 'usb-1-at-x'");
}

TEST(DoctorOfCameras, APrivacySwitchThatIsOnIsAWarning) {
    Trial trial = healthy();
    EXPECT_EQ(checkControls(trial).size(), 0U) << "most cameras have no control for it";
    trial.privacy = true;
    EXPECT_EQ(text(only(checkControls(trial), Verdict::Warning)),
              "warning privacy: the privacy switch is on: the camera sends black pictures or none | open its "
              "shutter, or press the key that closes it, then run this again");
    EXPECT_EQ(worst(checkCamera(machineWith({webcam()}), trial)), Verdict::Warning);
    trial.privacy = false;
    EXPECT_EQ(checkControls(trial).front().fact, "the privacy switch is off");
}

TEST(DoctorOfCameras, TheControlThatLowersTheRateInTheDarkIsTold) {
    Trial trial = healthy();
    trial.slowsInTheDark = true;
    ASSERT_EQ(checkControls(trial).size(), 1U);
    EXPECT_EQ(checkControls(trial).front().fact + " | " + checkControls(trial).front().next,
              "it may take longer exposures in the dark, and fewer frames | ostrel-camera controls -c "
              "'usb-1-at-x' exposure_dynamic_framerate=0 keeps the rate, with darker pictures");
    EXPECT_EQ(worst(checkControls(trial)), Verdict::Ok);
    trial.slowsInTheDark = false;
    EXPECT_EQ(checkControls(trial).front().fact, "it keeps its rate in the dark");
    EXPECT_EQ(checkControls(trial).front().next, "");
}

TEST(DoctorOfCameras, TheGravestVerdictIsThatOfAllWhereverItStands) {
    const Finding problem{"a", Verdict::Problem, "", "", ""}, warning{"b", Verdict::Warning, "", "", ""};
    EXPECT_EQ(worst({problem, warning, Finding()}), Verdict::Problem);
    EXPECT_EQ(worst({Finding(), warning, Finding()}), Verdict::Warning);
    EXPECT_EQ(worst({}), Verdict::Ok);
}

TEST(DoctorOfCameras, JsonHoldsTheVerdictAndEveryCheck) {
    const Findings findings = {{"nodes", Verdict::Ok, "1 camera", "", ""},
                               {"rate", Verdict::Warning, "slow\x1b", "light", ID}};
    const QJsonObject all =
        QJsonDocument::fromJson(QByteArray::fromStdString(findingsJson(findings))).object();
    EXPECT_EQ(all["verdict"].toString().toStdString(), "warning");
    const QJsonArray checks = all["checks"].toArray();
    ASSERT_EQ(checks.size(), 2);
    EXPECT_EQ(
        checks[0].toObject(),
        (QJsonObject{
            {"check", "nodes"}, {"verdict", "ok"}, {"fact", "1 camera"}, {"next", ""}, {"camera", ""}}));
    EXPECT_EQ(checks[1].toObject(), (QJsonObject{{"check", "rate"},
                                                 {"verdict", "warning"},
                                                 {"fact", "slow?"},
                                                 {"next", "light"},
                                                 {"camera", ID}}));
}

} // namespace ostrel::tests
