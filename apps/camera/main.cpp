// ostrel-camera: the library's cameras from the command line.
#include "apps/camera/application.h"

int main(int argc, char** argv) {
    return ostrel::apps::cli::runApplication(argc, argv);
}
