// Prints the counter of the test pattern in each picture that is named; 0 where there is none.
#include <ostrel/virtual_camera.h>

#include <QtGui/QImage>

#include <cstdio>

int main(int argc, char** argv) {
    for (int at = 1; at < argc; ++at) {
        const QImage image = QImage(argv[at]).convertToFormat(QImage::Format_ARGB32);
        uint32_t counter = 0;
        uint32_t clock = 0;
        ostrel::OVideoTestPatternCamera::decode(image.constBits(), image.width(), image.height(),
                                                static_cast<int>(image.bytesPerLine()), counter, clock);
        std::printf("%u\n", counter);
    }
    return 0;
}
