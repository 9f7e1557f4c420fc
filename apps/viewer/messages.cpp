#include "apps/viewer/messages.h"

namespace ostrel::apps::viewer {

namespace {

const char DOCTOR[] = "\n\nThe command “ostrel-camera doctor” examines the camera.";

} // namespace

Message noCamera() {
    return {
        "No camera is attached",
        "Plug one in, and it shows up here by itself. If one is plugged in already, your account may not be "
        "allowed to use it: the command “ostrel-camera doctor” finds out.\n\n"
        "Without a camera, ostrel-viewer --test-camera shows a test picture."};
}

Message noSuchCamera(const QString& wanted, bool several, const QString& why) {
    if (several)
        return {QString("“%1” fits several cameras").arg(wanted), "Choose one from the list."};
    return {QString("No camera is called “%1”").arg(wanted),
            why + "\n\nChoose one from the list, or plug it in, and it is shown."};
}

Message captureMessage(const CaptureSource& source, const QString& camera) {
    switch (source.state()) {
    case CaptureSource::State::Idle:
    case CaptureSource::State::Live:
        break;
    case CaptureSource::State::Starting:
        return {QString("Starting “%1” …").arg(camera), QString()};
    case CaptureSource::State::Silent:
        return {QString("No picture from “%1” yet").arg(camera),
                (source.why().isEmpty() ? "Its privacy switch may be on, or its cable may be loose."
                                        : source.why()) +
                    "\n\nStill waiting." + DOCTOR};
    case CaptureSource::State::Stalled:
        return {QString("“%1” has stopped sending pictures").arg(camera),
                (source.why().isEmpty() ? "Check its cable and its privacy switch." : source.why()) +
                    "\n\nStill waiting. Choose it in the list to start it again." + DOCTOR};
    case CaptureSource::State::Failed:
        return {QString("“%1” cannot be used").arg(camera),
                source.why() + "\n\nChoose it in the list to try again." + DOCTOR};
    case CaptureSource::State::Gone:
        return {
            QString("“%1” is gone").arg(camera),
            "It was unplugged or switched off. Plug it in again and the picture returns, or choose another "
            "camera."};
    }
    return {};
}

} // namespace ostrel::apps::viewer
