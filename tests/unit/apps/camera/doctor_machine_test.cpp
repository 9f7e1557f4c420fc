// Each diagnosis of a machine.
#include "doctor.h"

#include "platform/cameras/unusable_formats.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

namespace ostrel::tests {

TEST(DoctorOfMachines, SaysNothingOfAMachineWhereCamerasAreNoFiles) {
    Machine mac;
    EXPECT_EQ(checkMachine(mac).at(0).verdict, Verdict::Problem) << "no camera is attached";
    mac.tellsOfNodes = false;
    EXPECT_TRUE(checkMachine(mac).empty());
}

TEST(DoctorOfMachines, NoCameraAtAllIsAProblem) {
    EXPECT_EQ(text(checkNodes(Machine())),
              "problem nodes: no camera is attached: there is no /dev/video*, and no USB device says that it "
              "is one | plug one in; 'ostrel-camera snapshot --test-camera' works without");
}

TEST(DoctorOfMachines, AUsbCameraWithoutNodesLacksItsDriverOrItsNodesOrIsOutsideTheContainer) {
    Machine machine = machineWith({});
    machine.usb[0].driver.clear();
    EXPECT_EQ(text(checkNodes(machine)),
              "problem nodes: Webcam (USB port 1-3) is attached, but no driver has taken it | sudo modprobe "
              "uvcvideo");
    machine.container = true;
    EXPECT_EQ(text(checkNodes(machine)),
              "problem nodes: Webcam (USB port 1-3) is attached, but this container has no /dev/video* | "
              "start the container with --device /dev/video0");
    machine = machineWith({});
    EXPECT_EQ(text(checkNodes(machine)),
              "problem nodes: Webcam (USB port 1-3) has a driver, but there is no /dev/video* | sudo udevadm "
              "trigger --subsystem-match=video4linux");
}

TEST(DoctorOfMachines, NodesOfWhichNoneIsACameraAreAProblem) {
    Node node = webcam();
    node.camera.clear();
    EXPECT_EQ(text(checkNodes(machineWith({node}))),
              "problem nodes: no camera: none of 1 video node is one | ostrel-camera list --all");
}

TEST(DoctorOfMachines, PermissionsNameTheGroupTheLoginOrTheContainer) {
    Node node = webcam();
    node.access = Node::Access::NotPermitted;
    Machine machine = machineWith({node});
    EXPECT_EQ(
        text(checkPermissions(machine).front()),
        "problem permission: you may not open /dev/video0; the group video may | sudo usermod -aG video "
        "\"$USER\", then log out and in again");
    machine.nodes[0].memberAfterLogin = true;
    EXPECT_EQ(text(checkPermissions(machine).front()),
              "problem permission: you may not open /dev/video0: you are in the group video, but not since "
              "before you logged in | log out and in again");
    machine.container = true;
    EXPECT_EQ(text(checkPermissions(machine).front()),
              "problem permission: you may not open /dev/video0; the group video may | start the container "
              "with --group-add video");
    machine.nodes[0].group.clear();
    EXPECT_EQ(text(checkPermissions(machine).front()),
              "problem permission: you may not open /dev/video0, and neither may any group | ask the "
              "administrator of this machine for access");
    machine.nodes[0].access = Node::Access::Denied;
    EXPECT_EQ(text(checkPermissions(machine).front()),
              "problem permission: the container or service that this runs in may not use /dev/video0 | give "
              "it the device: --device /dev/video0 for a container, DeviceAllow=/dev/video0 for a service");
    EXPECT_EQ(checkStart(machine, refused("No permission")).next, "") << "said once";
}

TEST(DoctorOfMachines, FormatsWithoutAPictureAreNamed) {
    Node node = webcam();
    node.camera.clear();
    node.reason = cameras::unusableFormats({0x31384142}); // BA81
    EXPECT_EQ(text(only(checkFormats(machineWith({node})), Verdict::Warning)),
              "warning formats: Webcam (/dev/video0) offers only BA81 (raw Bayer): needs libcamera, for "
              "example through PipeWire | v4l2-ctl -d /dev/video0 --list-formats-ext");
    node.reason = cameras::unusableFormats({});
    EXPECT_EQ(checkFormats(machineWith({node})).size(), 1U);
    node.reason = "delivers data about pictures, not pictures (metadata)";
    EXPECT_EQ(checkFormats(machineWith({node})).size(), 0U);
}

TEST(DoctorOfMachines, PipeWireIsWellOrTheStepThatMendsItIsNamed) {
    Machine machine = machineWith({webcam()});
    EXPECT_EQ(checkPipeWire(machine).size(), 0U) << "the library was built without it";
    PipeWire& pipeWire = machine.pipeWire;
    pipeWire.where = "/run/user/1000/pipewire-0";
    pipeWire.state = PipeWire::State::NoDaemon;
    EXPECT_EQ(text(only(checkPipeWire(machine), Verdict::Ok)),
              "ok pipewire: no daemon at /run/user/1000/pipewire-0: cameras with a video node only");
    pipeWire.state = PipeWire::State::NoLibrary;
    EXPECT_EQ(text(only(checkPipeWire(machine), Verdict::Warning)),
              "warning pipewire: a daemon runs, but its library is not installed | sudo apt-get install "
              "libpipewire-0.3-0");
    pipeWire.state = PipeWire::State::Silent;
    EXPECT_EQ(text(only(checkPipeWire(machine), Verdict::Warning)),
              "warning pipewire: the daemon at /run/user/1000/pipewire-0 does not answer | systemctl --user "
              "restart pipewire");
    pipeWire.state = PipeWire::State::Connected;
    pipeWire.version = "1.4.2";
    EXPECT_EQ(text(only(checkPipeWire(machine), Verdict::Warning)),
              "warning pipewire: PipeWire 1.4.2 runs without a session manager: no camera of it starts | "
              "systemctl --user start wireplumber");
    pipeWire.sessionManager = true;
    pipeWire.otherSources = 1;
    EXPECT_EQ(text(only(checkPipeWire(machine), Verdict::Ok)),
              "ok pipewire: PipeWire 1.4.2 offers 0 cameras, and 1 source of other pictures");
    pipeWire.cameras = 2;
    pipeWire.added = 1;
    EXPECT_EQ(text(only(checkPipeWire(machine), Verdict::Ok)),
              "ok pipewire: PipeWire 1.4.2 offers 2 cameras, 1 of them without a video node");
    EXPECT_EQ(text(checkNodes(machine)), "ok nodes: 1 video node, 1 camera, 1 more through PipeWire");
    machine.nodes.clear();
    EXPECT_EQ(text(checkNodes(machine)), "ok nodes: no video node; 1 camera through PipeWire");
}

TEST(DoctorOfMachines, PartsOfACameraThatPipeWireOffersAreNoWarning) {
    Node node = webcam();
    node.camera.clear();
    node.reason = "is a part of a camera that other programs must set up (media controller): needs libcamera";
    Machine machine = machineWith({node});
    machine.pipeWire.state = PipeWire::State::Connected;
    EXPECT_EQ(
        text(only(checkControllers(machine), Verdict::Warning)),
        "warning libcamera: /dev/video0 is a part of a camera that needs libcamera, and PipeWire shows none "
        "(media controller, 1 node) | sudo apt-get install libspa-0.2-libcamera, then systemctl --user "
        "restart wireplumber");
    machine.pipeWire.added = 1;
    EXPECT_EQ(
        text(only(checkControllers(machine), Verdict::Ok)),
        "ok libcamera: /dev/video0 is a part of a camera that needs libcamera, as PipeWire offers it (media "
        "controller, 1 node)");
}

TEST(DoctorOfMachines, TheManyNodesOfAMediaControllerAreOneWarning) {
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
        text(only(checkControllers(machineWith(nodes)), Verdict::Warning)),
        "warning libcamera: /dev/video0 to /dev/video47 are parts of a camera that needs libcamera, for "
        "example through PipeWire (media controller, 48 nodes) | cam --list (in the package "
        "libcamera-tools) shows whether libcamera knows it");
    EXPECT_EQ(checkControllers(machineWith({webcam()})).size(), 0U);
}

TEST(DoctorOfMachines, AnalogInputsStandWithTheCommandThatChangesThem) {
    Machine machine = machineWith({webcam()});
    EXPECT_EQ(checkInput(machine, healthy()).size(), 0U);
    AnalogInput& input = machine.nodes[0].input;
    input.known = true;
    input.number = 1;
    input.count = 2;
    input.name = "S-Video";
    input.standard = "PAL";
    EXPECT_EQ(text(checkInput(machine, healthy()).front()),
              "ok input: input 1 (S-Video) of 2, standard PAL | v4l2-ctl -d /dev/video0 --set-input 0 "
              "--set-standard PAL changes it, also while a program captures");
    input.noSignal = true;
    EXPECT_EQ(only(checkInput(machine, healthy()), Verdict::Warning).fact,
              "input 1 (S-Video) of 2, standard PAL, without a signal");
}

TEST(DoctorOfMachines, UsbCamerasAreFoundByTheirClassWithOrWithoutADriver) {
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
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[0].name, "HD Webcam");
    EXPECT_EQ(devices[0].port, "1-3");
    EXPECT_EQ(devices[0].driver, "uvcvideo");
    EXPECT_EQ(devices[1].name, "046d:0825");
    EXPECT_EQ(devices[1].port, "2-1.2");
    EXPECT_EQ(devices[1].driver, "");
}

} // namespace ostrel::tests
