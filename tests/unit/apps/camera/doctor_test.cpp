// Each diagnosis of ostrel-camera doctor, on machines and captures that are made up.
#include "apps/camera/doctor/checks.h"
#include "apps/camera/doctor/finding.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/unusable_formats.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include <cerrno>

namespace {

using namespace ostrel;
using namespace ostrel::apps::cli::doctor;

const char ID[] = "usb-1-at-x";

Node webcam() {
    Node node;
    node.path = "/dev/video0";
    node.name = "Webcam";
    node.camera = ID;
    node.group = "video";
    node.bus = "usb1";
    return node;
}

Machine machineWith(const std::vector<Node>& nodes) {
    Machine machine;
    machine.usb = {{"Webcam", "1-3", "uvcvideo"}};
    machine.nodes = nodes;
    return machine;
}

// Two seconds of a camera in which nothing is wrong.
Trial healthy() {
    Trial trial;
    trial.camera = ID;
    trial.path = "/dev/video0";
    trial.size = {640, 480};
    trial.taken = 61;
    trial.arrived = 60;
    trial.seconds = 2;
    trial.brightest = 250;
    trial.statistics.delivered = 61;
    trial.statistics.grantedRate = 30;
    return trial;
}

Trial refused(const std::string& why) {
    Trial trial = healthy();
    trial.refused = true;
    trial.why = why;
    return trial;
}

Trial silent() {
    Trial trial = healthy();
    trial.taken = trial.arrived = 0;
    trial.seconds = 0;
    trial.waited = 5;
    return trial;
}

const Finding& only(const Findings& findings, Verdict verdict) {
    static Finding none;
    const Finding* found = &none;
    for (const Finding& finding : findings)
        if (finding.verdict == verdict) {
            EXPECT_EQ(&none, found) << finding.fact;
            found = &finding;
        }
    EXPECT_NE(&none, found) << findingsText(findings);
    return *found;
}

// "problem check: fact | next"
std::string text(const Finding& finding) {
    const char* const words[] = {"ok", "warning", "problem"};
    return std::string(words[static_cast<int>(finding.verdict)]) + " " + finding.check + ": " + finding.fact +
           (finding.next.empty() ? "" : " | " + finding.next);
}

TEST(Doctor, SaysNothingOfAMachineWhereCamerasAreNoFiles) {
    Machine mac;
    EXPECT_EQ(checkMachine(mac).at(0).verdict, Verdict::Problem) << "no camera is attached";
    mac.tellsOfNodes = false;
    EXPECT_TRUE(checkMachine(mac).empty());
}

TEST(Doctor, AHealthyCameraHasNoWarning) {
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

TEST(Doctor, NoCameraAtAllIsAProblem) {
    EXPECT_EQ("problem nodes: no camera is attached: there is no /dev/video*, and no USB device says that it "
              "is one | plug one in; 'ostrel-camera snapshot --test-camera' works without",
              text(checkNodes(Machine())));
}

TEST(Doctor, AUsbCameraWithoutNodesLacksItsDriverOrItsNodesOrIsOutsideTheContainer) {
    Machine machine = machineWith({});
    machine.usb[0].driver.clear();
    EXPECT_EQ("problem nodes: Webcam (USB port 1-3) is attached, but no driver has taken it | sudo modprobe "
              "uvcvideo",
              text(checkNodes(machine)));
    machine.container = true;
    EXPECT_EQ("problem nodes: Webcam (USB port 1-3) is attached, but this container has no /dev/video* | "
              "start the container with --device /dev/video0",
              text(checkNodes(machine)));
    machine = machineWith({});
    EXPECT_EQ("problem nodes: Webcam (USB port 1-3) has a driver, but there is no /dev/video* | sudo udevadm "
              "trigger --subsystem-match=video4linux",
              text(checkNodes(machine)));
}

TEST(Doctor, NodesOfWhichNoneIsACameraAreAProblem) {
    Node node = webcam();
    node.camera.clear();
    EXPECT_EQ("problem nodes: no camera: none of 1 video node is one | ostrel-camera list --all",
              text(checkNodes(machineWith({node}))));
}

TEST(Doctor, PermissionsNameTheGroupTheLoginOrTheContainer) {
    Node node = webcam();
    node.access = Node::Access::NotPermitted;
    Machine machine = machineWith({node});
    EXPECT_EQ(
        "problem permission: you may not open /dev/video0; the group video may | sudo usermod -aG video "
        "\"$USER\", then log out and in again",
        text(checkPermissions(machine).front()));
    machine.nodes[0].memberAfterLogin = true;
    EXPECT_EQ("problem permission: you may not open /dev/video0: you are in the group video, but not since "
              "before you logged in | log out and in again",
              text(checkPermissions(machine).front()));
    machine.container = true;
    EXPECT_EQ("problem permission: you may not open /dev/video0; the group video may | start the container "
              "with --group-add video",
              text(checkPermissions(machine).front()));
    machine.nodes[0].group.clear();
    EXPECT_EQ("problem permission: you may not open /dev/video0, and neither may any group | ask the "
              "administrator of this machine for access",
              text(checkPermissions(machine).front()));
    machine.nodes[0].access = Node::Access::Denied;
    EXPECT_EQ("problem permission: the container or service that this runs in may not use /dev/video0 | give "
              "it the device: --device /dev/video0 for a container, DeviceAllow=/dev/video0 for a service",
              text(checkPermissions(machine).front()));
    EXPECT_EQ("", checkStart(machine, refused("No permission")).next) << "said once";
}

// The library's own words lead to the diagnosis.
TEST(Doctor, ABusyCameraNamesItsHolderWhereItShows) {
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

TEST(Doctor, AFullBusNamesTheOtherCamerasOnIt) {
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

TEST(Doctor, OtherRefusalsKeepTheirWords) {
    EXPECT_EQ("problem start: it does not start: its maker knows why | ostrel-camera snapshot --verbose -o "
              "/dev/null -c 'usb-1-at-x'",
              text(checkStart(machineWith({webcam()}), refused("its maker knows why"))));
}

TEST(Doctor, FormatsWithoutAPictureAreNamed) {
    Node node = webcam();
    node.camera.clear();
    node.reason = cameras::unusableFormats({0x31384142}); // BA81
    EXPECT_EQ("warning formats: Webcam (/dev/video0) offers only BA81 (raw Bayer): needs libcamera, for "
              "example through PipeWire | v4l2-ctl -d /dev/video0 --list-formats-ext",
              text(only(checkFormats(machineWith({node})), Verdict::Warning)));
    node.reason = cameras::unusableFormats({});
    EXPECT_EQ(1U, checkFormats(machineWith({node})).size());
    node.reason = "delivers data about pictures, not pictures (metadata)";
    EXPECT_EQ(0U, checkFormats(machineWith({node})).size());
}

TEST(Doctor, PipeWireIsWellOrTheStepThatMendsItIsNamed) {
    Machine machine = machineWith({webcam()});
    EXPECT_EQ(0U, checkPipeWire(machine).size()) << "the library was built without it";
    PipeWire& pipeWire = machine.pipeWire;
    pipeWire.where = "/run/user/1000/pipewire-0";
    pipeWire.state = PipeWire::State::NoDaemon;
    EXPECT_EQ("ok pipewire: no daemon at /run/user/1000/pipewire-0: cameras with a video node only",
              text(only(checkPipeWire(machine), Verdict::Ok)));
    pipeWire.state = PipeWire::State::NoLibrary;
    EXPECT_EQ("warning pipewire: a daemon runs, but its library is not installed | sudo apt-get install "
              "libpipewire-0.3-0",
              text(only(checkPipeWire(machine), Verdict::Warning)));
    pipeWire.state = PipeWire::State::Silent;
    EXPECT_EQ("warning pipewire: the daemon at /run/user/1000/pipewire-0 does not answer | systemctl --user "
              "restart pipewire",
              text(only(checkPipeWire(machine), Verdict::Warning)));
    pipeWire.state = PipeWire::State::Connected;
    pipeWire.version = "1.4.2";
    EXPECT_EQ("warning pipewire: PipeWire 1.4.2 runs without a session manager: no camera of it starts | "
              "systemctl --user start wireplumber",
              text(only(checkPipeWire(machine), Verdict::Warning)));
    pipeWire.sessionManager = true;
    pipeWire.otherSources = 1;
    EXPECT_EQ("ok pipewire: PipeWire 1.4.2 offers 0 cameras, and 1 source of other pictures",
              text(only(checkPipeWire(machine), Verdict::Ok)));
    pipeWire.cameras = 2;
    pipeWire.added = 1;
    EXPECT_EQ("ok pipewire: PipeWire 1.4.2 offers 2 cameras, 1 of them without a video node",
              text(only(checkPipeWire(machine), Verdict::Ok)));
    EXPECT_EQ("ok nodes: 1 video node, 1 camera, 1 more through PipeWire", text(checkNodes(machine)));
    machine.nodes.clear();
    EXPECT_EQ("ok nodes: no video node; 1 camera through PipeWire", text(checkNodes(machine)));
}

TEST(Doctor, PartsOfACameraThatPipeWireOffersAreNoWarning) {
    Node node = webcam();
    node.camera.clear();
    node.reason = "is a part of a camera that other programs must set up (media controller): needs libcamera";
    Machine machine = machineWith({node});
    machine.pipeWire.state = PipeWire::State::Connected;
    EXPECT_EQ(
        "warning libcamera: /dev/video0 is a part of a camera that needs libcamera, and PipeWire shows none "
        "(media controller, 1 node) | sudo apt-get install libspa-0.2-libcamera, then systemctl --user "
        "restart wireplumber",
        text(only(checkControllers(machine), Verdict::Warning)));
    machine.pipeWire.added = 1;
    EXPECT_EQ(
        "ok libcamera: /dev/video0 is a part of a camera that needs libcamera, as PipeWire offers it (media "
        "controller, 1 node)",
        text(only(checkControllers(machine), Verdict::Ok)));
}

TEST(Doctor, TheManyNodesOfAMediaControllerAreOneWarning) {
    std::vector<Node> nodes;
    for (int number = 0; number < 48; ++number) {
        Node node = webcam();
        node.camera.clear();
        node.path = "/dev/video" + std::to_string(number);
        node.reason =
            "is a part of a camera that other programs must set up (media controller): needs libcamera";
        nodes.push_back(node);
    }
    EXPECT_EQ(
        "warning libcamera: /dev/video0 to /dev/video47 are parts of a camera that needs libcamera, for "
        "example through PipeWire (media controller, 48 nodes) | cam --list (in the package "
        "libcamera-tools) shows whether libcamera knows it",
        text(only(checkControllers(machineWith(nodes)), Verdict::Warning)));
    EXPECT_EQ(0U, checkControllers(machineWith({webcam()})).size());
}

TEST(Doctor, ACameraThatStartsAndSendsNothingIsTriedByAnotherProgram) {
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

TEST(Doctor, NothingButBrokenFramesAreCountedByReason) {
    Trial trial = silent();
    trial.statistics.dropped["truncated"] = 12;
    EXPECT_EQ("problem frames: all that it sends is broken, dropped 12 (truncated 12) | ostrel-camera watch "
              "-c 'usb-1-at-x' --size ld",
              text(only(checkStream(trial), Verdict::Problem)));
}

TEST(Doctor, SharesOfLostAndDroppedFramesAreJudged) {
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

TEST(Doctor, ARateFarBelowTheGrantedOnePointsAtTheExposure) {
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

TEST(Doctor, ABlackPictureIsAWarning) {
    Trial trial = healthy();
    trial.brightest = 20; // noise
    EXPECT_EQ(
        "warning picture: the picture is black: its lens may be covered, its privacy switch on, or this "
        "part of the device an infrared camera | ostrel-camera snapshot --skip 30 -c 'usb-1-at-x'",
        text(only(checkStream(trial), Verdict::Warning)));
}

TEST(Doctor, APrivacySwitchThatIsOnIsAWarning) {
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

TEST(Doctor, TheControlThatLowersTheRateInTheDarkIsTold) {
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

TEST(Doctor, AnalogInputsStandWithTheCommandThatChangesThem) {
    Machine machine = machineWith({webcam()});
    EXPECT_EQ(0U, checkInput(machine, healthy()).size());
    AnalogInput& input = machine.nodes[0].input;
    input.known = true;
    input.number = 1;
    input.count = 2;
    input.name = "S-Video";
    input.standard = "PAL";
    EXPECT_EQ("ok input: input 1 (S-Video) of 2, standard PAL | v4l2-ctl -d /dev/video0 --set-input 0 "
              "--set-standard PAL changes it, also while a program captures",
              text(checkInput(machine, healthy()).front()));
    input.noSignal = true;
    EXPECT_EQ("input 1 (S-Video) of 2, standard PAL, without a signal",
              only(checkInput(machine, healthy()), Verdict::Warning).fact);
}

TEST(Doctor, UsbCamerasAreFoundByTheirClassWithOrWithoutADriver) {
    const QTemporaryDir root;
    const auto put = [&](const QString& path, const QByteArray& content) {
        const QString whole = root.filePath("sys/bus/usb/devices/" + path);
        QDir().mkpath(whole.section('/', 0, -2));
        QFile file(whole);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    put("1-3/product", "HD Webcam\n");
    put("1-3:1.0/bInterfaceClass", "0e\n");
    put("1-3:1.0/bInterfaceSubClass", "01\n");
    put("1-3:1.1/bInterfaceClass", "0e\n");
    put("1-3:1.1/bInterfaceSubClass", "02\n"); // its stream
    put("1-4/product", "Keyboard\n");
    put("1-4:1.0/bInterfaceClass", "03\n");
    put("1-4:1.0/bInterfaceSubClass", "01\n");
    put("2-1.2/idVendor", "046d\n");
    put("2-1.2/idProduct", "0825\n");
    put("2-1.2:1.0/bInterfaceClass", "0e\n");
    put("2-1.2:1.0/bInterfaceSubClass", "01\n");
    QDir().mkpath(root.filePath("drivers/uvcvideo"));
    QFile::link(root.filePath("drivers/uvcvideo"), root.filePath("sys/bus/usb/devices/1-3:1.0/driver"));

    const std::vector<UsbVideo> devices = usbVideoDevices(root.path().toStdString());
    ASSERT_EQ(2U, devices.size());
    EXPECT_EQ("HD Webcam", devices[0].name);
    EXPECT_EQ("1-3", devices[0].port);
    EXPECT_EQ("uvcvideo", devices[0].driver);
    EXPECT_EQ("046d:0825", devices[1].name);
    EXPECT_EQ("2-1.2", devices[1].port);
    EXPECT_EQ("", devices[1].driver);
}

TEST(Doctor, TheGravestVerdictIsThatOfAllWhereverItStands) {
    const Finding problem{"a", Verdict::Problem, "", "", ""}, warning{"b", Verdict::Warning, "", "", ""};
    EXPECT_EQ(Verdict::Problem, worst({problem, warning, Finding()}));
    EXPECT_EQ(Verdict::Warning, worst({Finding(), warning, Finding()}));
    EXPECT_EQ(Verdict::Ok, worst({}));
}

TEST(Doctor, JsonHoldsTheVerdictAndEveryCheck) {
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

} // namespace
