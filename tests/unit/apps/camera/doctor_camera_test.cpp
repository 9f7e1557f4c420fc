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
    EXPECT_EQ(Verdict::Ok, worst(all)) << findingsText(all);
    EXPECT_EQ("ok       nodes        1 video node, 1 camera\n"
              "ok       permission   you may open every video node\n"
              "usb-1-at-x:\n"
              "ok       start        it starts at 640x480\n"
              "ok       frames       frames come\n"
              "ok       broken       0 lost, 0 dropped of 61 frames\n"
              "ok       rate         30.0 frames/s, 30.0 granted\n"
              "ok       picture      the picture is not black\n",
              findingsText(all));
}

// The library's own words lead to the diagnosis.
TEST(DoctorOfCameras, ABusyCameraNamesItsHolderWhereItShows) {
    const std::string why = cameras::openFailed("Webcam (/dev/video0)", EBUSY).text;
    Machine machine = machineWith({webcam()});
    EXPECT_EQ("problem busy: it is in use by another user's program | sudo fuser -v /dev/video0",
              text(checkStart(machine, refused(why))));
    machine.nodes[0].holders = {{4711, "meeting"}, {4712, "mirror"}};
    EXPECT_EQ("problem busy: it is in use by meeting (process 4711), mirror (process 4712) | close meeting, "
              "then run this again",
              text(checkStart(machine, refused(why))));
    const std::string late =
        cameras::startFailed("Webcam (/dev/video0)", {{"YUYV", {640, 480}, "VIDIOC_S_FMT", EBUSY}}).text;
    EXPECT_EQ("busy", checkStart(machine, refused(late)).check);
    EXPECT_EQ("ok", text(checkStart(machine, healthy())).substr(0, 2)) << "a holder alone harms nobody";
}

TEST(DoctorOfCameras, AFullBusNamesTheOtherCamerasOnIt) {
    const std::string why =
        cameras::startFailed("Webcam (/dev/video0)", {{"YUYV", {640, 480}, "VIDIOC_STREAMON", ENOSPC}}).text;
    Machine machine = machineWith({webcam()});
    const Finding alone = checkStart(machine, refused(why));
    EXPECT_EQ("problem bandwidth: " + why +
                  "; no other camera is on its bus | ostrel-camera watch --size ld -c 'usb-1-at-x'",
              text(alone));
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
    EXPECT_EQ(why + "; on its bus: Second (/dev/video2)", checkStart(machine, refused(why)).fact);
}

TEST(DoctorOfCameras, OtherRefusalsKeepTheirWords) {
    EXPECT_EQ("problem start: it does not start: its maker knows why | ostrel-camera snapshot --verbose -o "
              "/dev/null -c 'usb-1-at-x'",
              text(checkStart(machineWith({webcam()}), refused("its maker knows why"))));
}

TEST(DoctorOfCameras, ACameraThatStartsAndSendsNothingIsTriedByAnotherProgram) {
    EXPECT_EQ("problem frames: it starts, but sends no frame within 5.0 s: its privacy switch may be on | "
              "v4l2-ctl -d /dev/video0 --stream-mmap --stream-count=30",
              text(only(checkStream(silent()), Verdict::Problem)));
    Trial stalled = silent();
    stalled.why = cameras::stalled("Webcam");
    EXPECT_EQ("problem frames: it starts, but no frame comes: Webcam sends no frames and was started again | "
              "plug it into another port with another cable, then run this again",
              text(only(checkStream(stalled), Verdict::Problem)));
    Trial later = healthy();
    later.waited = 5;
    EXPECT_EQ("it has stopped sending frames within 5.0 s: its privacy switch may be on",
              only(checkStream(later), Verdict::Problem).fact);
}

TEST(DoctorOfCameras, NothingButBrokenFramesAreCountedByReason) {
    Trial trial = silent();
    trial.statistics.dropped["truncated"] = 12;
    EXPECT_EQ("problem frames: all that it sends is broken, dropped 12 (truncated 12) | ostrel-camera watch "
              "-c 'usb-1-at-x' --size ld",
              text(only(checkStream(trial), Verdict::Problem)));
}

TEST(DoctorOfCameras, SharesOfLostAndDroppedFramesAreJudged) {
    Trial trial = healthy();
    trial.wasted = 2;
    trial.statistics.dropped["damaged"] = 2;
    EXPECT_EQ(Verdict::Ok, worst(checkStream(trial))) << "cameras may spoil a frame while they start";
    trial.wasted = 6;
    trial.arrived = 59;
    trial.statistics.lost = 4;
    EXPECT_EQ("warning broken: 10 % of the frames do not arrive whole: 4 lost, 2 (damaged 2) dropped of 60 "
              "frames | ostrel-camera watch -c 'usb-1-at-x' --duration 60, with another cable or port",
              text(only(checkStream(trial), Verdict::Warning)));
    trial.wasted = 30;
    EXPECT_EQ("broken", only(checkStream(trial), Verdict::Problem).check);
}

TEST(DoctorOfCameras, ARateFarBelowTheGrantedOnePointsAtTheExposure) {
    Trial trial = healthy();
    trial.arrived = 50;
    EXPECT_EQ(Verdict::Ok, worst(checkStream(trial)));
    trial.arrived = 30;
    EXPECT_EQ("warning rate: 15.0 frames/s, 30.0 granted: most cameras slow down in poor light | "
              "ostrel-camera controls -c 'usb-1-at-x' (auto_exposure)",
              text(only(checkStream(trial), Verdict::Warning)));
    trial.slowsInTheDark = true;
    EXPECT_EQ(
        "warning rate: 15.0 frames/s, 30.0 granted: most cameras slow down in poor light | "
        "ostrel-camera controls -c 'usb-1-at-x' exposure_dynamic_framerate=0 keeps the rate, with darker "
        "pictures",
        text(only(checkStream(trial), Verdict::Warning)));
    trial.statistics.grantedRate = 0;
    EXPECT_EQ(Verdict::Ok, worst(checkStream(trial))) << "nothing was promised";
}

TEST(DoctorOfCameras, ABlackPictureIsAWarning) {
    Trial trial = healthy();
    trial.brightest = 20; // noise
    EXPECT_EQ(
        "warning picture: the picture is black: its lens may be covered, its privacy switch on, or this "
        "part of the device an infrared camera | ostrel-camera snapshot --skip 30 -c 'usb-1-at-x'",
        text(only(checkStream(trial), Verdict::Warning)));
}

TEST(DoctorOfCameras, APrivacySwitchThatIsOnIsAWarning) {
    Trial trial = healthy();
    EXPECT_EQ(0U, checkControls(trial).size()) << "most cameras have no control for it";
    trial.privacy = true;
    EXPECT_EQ("warning privacy: the privacy switch is on: the camera sends black pictures or none | open its "
              "shutter, or press the key that closes it, then run this again",
              text(only(checkControls(trial), Verdict::Warning)));
    EXPECT_EQ(Verdict::Warning, worst(checkCamera(machineWith({webcam()}), trial)));
    trial.privacy = false;
    EXPECT_EQ("the privacy switch is off", checkControls(trial).front().fact);
}

TEST(DoctorOfCameras, TheControlThatLowersTheRateInTheDarkIsTold) {
    Trial trial = healthy();
    trial.slowsInTheDark = true;
    ASSERT_EQ(1U, checkControls(trial).size());
    EXPECT_EQ("it may take longer exposures in the dark, and fewer frames | ostrel-camera controls -c "
              "'usb-1-at-x' exposure_dynamic_framerate=0 keeps the rate, with darker pictures",
              checkControls(trial).front().fact + " | " + checkControls(trial).front().next);
    EXPECT_EQ(Verdict::Ok, worst(checkControls(trial)));
    trial.slowsInTheDark = false;
    EXPECT_EQ("it keeps its rate in the dark", checkControls(trial).front().fact);
    EXPECT_EQ("", checkControls(trial).front().next);
}

TEST(DoctorOfCameras, TheGravestVerdictIsThatOfAllWhereverItStands) {
    const Finding problem{"a", Verdict::Problem, "", "", ""}, warning{"b", Verdict::Warning, "", "", ""};
    EXPECT_EQ(Verdict::Problem, worst({problem, warning, Finding()}));
    EXPECT_EQ(Verdict::Warning, worst({Finding(), warning, Finding()}));
    EXPECT_EQ(Verdict::Ok, worst({}));
}

TEST(DoctorOfCameras, JsonHoldsTheVerdictAndEveryCheck) {
    const Findings findings = {{"nodes", Verdict::Ok, "1 camera", "", ""},
                               {"rate", Verdict::Warning, "slow\x1b", "light", ID}};
    const QJsonObject all =
        QJsonDocument::fromJson(QByteArray::fromStdString(findingsJson(findings))).object();
    EXPECT_EQ("warning", all["verdict"].toString().toStdString());
    const QJsonArray checks = all["checks"].toArray();
    ASSERT_EQ(2, checks.size());
    EXPECT_EQ((QJsonObject{
                  {"check", "nodes"}, {"verdict", "ok"}, {"fact", "1 camera"}, {"next", ""}, {"camera", ""}}),
              checks[0].toObject());
    EXPECT_EQ(
        (QJsonObject{
            {"check", "rate"}, {"verdict", "warning"}, {"fact", "slow?"}, {"next", "light"}, {"camera", ID}}),
        checks[1].toObject());
}

} // namespace ostrel::tests
