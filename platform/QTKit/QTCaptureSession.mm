#import <QTKit/QTCaptureSession.h>

#include "platform/QTKit/delivery.h"
#include "platform/QTKit/device_access.h"
#include "platform/QTKit/framework_error.h"
#import <QTKit/QTCaptureInput.h>

#include <algorithm>
#include <mutex>
#include <vector>

using ostrel::Delivery;
using ostrel::OpenCamera;
using ostrel::Refused;
using ostrel::cameras::Error;

// The lock guards the members and is never held during a call of a camera: a delegate may call back into its
// session. Deliveries exist while the cameras run and hold them open; a stopped session holds nothing.
struct QTCaptureSessionState {
    struct Link {
        QTCaptureInput* input;
        QTCaptureOutput* output;
        std::shared_ptr<Delivery> delivery;

        bool joins(QTCaptureInput* one) const { return input == one; }
        bool joins(QTCaptureOutput* one) const { return output == one; }
    };

    std::mutex mutex;
    std::vector<QTCaptureInput*> inputs;   // retained
    std::vector<QTCaptureOutput*> outputs; // retained
    std::vector<Link> links;
    std::atomic<bool> running{false};

    Error add(QTCaptureInput* input);
    Error add(QTCaptureOutput* output);
    void start();
    void stop();

private:
    template <typename Element, typename Partner>
    Error admit(Element element, std::vector<Element>& elements, const std::vector<Partner>& partners);
    Error link(QTCaptureInput* input, QTCaptureOutput* output);
    Error link(QTCaptureOutput* output, QTCaptureInput* input) { return link(input, output); }
    template <typename Chosen>
    void unlink(Chosen chosen);
};

namespace {

QTCaptureDeviceState* deviceOf(QTCaptureInput* input) {
    if (![input isKindOfClass:[QTCaptureDeviceInput class]])
        return nullptr;
    QTCaptureDevice* device = [(QTCaptureDeviceInput*)input device];
    return device ? ostrel::stateOf(device) : nullptr;
}

std::shared_ptr<OpenCamera> cameraOf(QTCaptureInput* input) {
    QTCaptureDeviceState* device = deviceOf(input);
    return device ? device->opened() : nullptr;
}

template <typename Element>
std::vector<Element> copyOf(const std::vector<Element>& elements, std::mutex& mutex) {
    std::lock_guard<std::mutex> lock(mutex);
    return elements;
}

template <typename Element>
void append(std::vector<Element>& elements, Element element, std::mutex& mutex) {
    std::lock_guard<std::mutex> lock(mutex);
    elements.push_back(element);
    [element retain];
}

template <typename Element>
void remove(std::vector<Element>& elements, Element element, std::mutex& mutex) {
    std::lock_guard<std::mutex> lock(mutex);
    elements.erase(std::find(elements.begin(), elements.end(), element));
    [element release];
}

} // namespace

Error QTCaptureSessionState::add(QTCaptureInput* input) {
    const std::shared_ptr<OpenCamera> camera = cameraOf(input);
    if (!camera)
        return Error("the camera is not open");
    if (const Error refused = (*camera)->admitInput()) {
        deviceOf(input)->setRefused(Refused::Input, refused);
        return refused;
    }
    return admit(input, inputs, outputs);
}

Error QTCaptureSessionState::add(QTCaptureOutput* output) {
    if (![output isKindOfClass:[QTCaptureDecompressedVideoOutput class]])
        return Error("the session has no such kind of output");
    return admit(output, outputs, inputs);
}

// Links an input to all outputs, or an output to all inputs. Refused for one, it is not taken in at all.
template <typename Element, typename Partner>
Error QTCaptureSessionState::admit(Element element, std::vector<Element>& elements,
                                   const std::vector<Partner>& partners) {
    Error refused;
    append(elements, element, mutex);
    for (Partner partner : copyOf(partners, mutex))
        if (!refused)
            refused = link(element, partner);
    if (refused) {
        unlink([element](const Link& each) { return each.joins(element); });
        remove(elements, element, mutex);
    }
    return refused;
}

// Starts the camera for one input and one output, unless it runs for them already.
Error QTCaptureSessionState::link(QTCaptureInput* input, QTCaptureOutput* output) {
    const std::shared_ptr<OpenCamera> camera = cameraOf(input);
    if (!camera)
        return Error("the camera is not open");
    const auto delivery =
        std::make_shared<Delivery>(camera, static_cast<QTCaptureDecompressedVideoOutput*>(output));
    {
        std::lock_guard<std::mutex> lock(mutex);
        for (const Link& each : links)
            if (each.input == input && each.output == output)
                return Error();
        links.push_back({input, output, delivery});
    }
    if (running.load(std::memory_order_acquire))
        delivery->letThrough();
    const Error refused = delivery->start();
    if (refused) {
        deviceOf(input)->setRefused(Refused::Output, refused);
        unlink([&](const Link& each) { return each.delivery == delivery; });
    }
    return refused;
}

// Stops the deliveries that are chosen. They stay in the list until they have stopped, so that of two threads
// that stop at the same time both wait.
template <typename Chosen>
void QTCaptureSessionState::unlink(Chosen chosen) {
    for (const Link& each : copyOf(links, mutex)) {
        if (!chosen(each))
            continue;
        each.delivery->stop();
        std::lock_guard<std::mutex> lock(mutex);
        links.erase(std::remove_if(links.begin(), links.end(),
                                   [&](const Link& other) { return other.delivery == each.delivery; }),
                    links.end());
    }
}

void QTCaptureSessionState::start() {
    running.store(true, std::memory_order_release);
    for (const Link& each : copyOf(links, mutex))
        each.delivery->letThrough();
    for (QTCaptureInput* input : copyOf(inputs, mutex))
        for (QTCaptureOutput* output : copyOf(outputs, mutex)) {
            const Error refused = link(input, output);
            if (refused)
                NSLog(@"Error starting capture session: %@", ostrel::toNSString(refused.text));
        }
}

void QTCaptureSessionState::stop() {
    running.store(false, std::memory_order_release);
    unlink([](const Link&) { return true; });
}

@implementation QTCaptureSession

- (id)init {
    if ((self = [super init]))
        state = new QTCaptureSessionState;
    return self;
}

- (void)dealloc {
    state->stop();
    for (QTCaptureInput* input : state->inputs)
        [input release];
    for (QTCaptureOutput* output : state->outputs)
        [output release];
    delete state;
    [super dealloc];
}

- (BOOL)addInput:(QTCaptureInput*)input error:(NSError**)errorPtr {
    return ostrel::report(state->add(input), errorPtr);
}

- (BOOL)addOutput:(QTCaptureOutput*)output error:(NSError**)errorPtr {
    return ostrel::report(state->add(output), errorPtr);
}

- (void)startRunning {
    state->start();
}

- (void)stopRunning {
    state->stop();
}

- (BOOL)isRunning {
    return state->running.load(std::memory_order_acquire) ? YES : NO;
}

@end
