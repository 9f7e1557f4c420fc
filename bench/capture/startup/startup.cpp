// Ends at once: what it costs is the loading of the libraries that it is linked to (see CMakeLists.txt).
#ifdef WITH_LIBRARY
#include <ostrel/devices.h>
#elif defined(WITH_QT)
#include <QtCore/QString>
#endif

int main(int argc, char**) {
#ifdef WITH_LIBRARY
    // Never called, so that nothing is listed, but linked.
    return argc > 100 ? static_cast<int>(ostrel::videoDevices().size()) : 0;
#elif defined(WITH_QT)
    return argc > 100 ? static_cast<int>(QString::number(argc).size()) : 0;
#else
    return argc > 100;
#endif
}
