/* A client in C: waits for ten frames and says how bright each is. No Qt, no C++. */
#include <ostrel/camera_c.h>

#include <stdio.h>
#include <stdlib.h>

enum { WIDTH = 640, HEIGHT = 480 };

int main(int argc, char** argv) {
    static uint8_t grey[WIDTH * HEIGHT]; /* pictures are written straight into it */
    char why[512];
    ostrel_handle pattern = 0, capture = 0;
    ostrel_camera_info camera = {sizeof camera, "", ""};
    ostrel_frame_info frame = {sizeof frame, 0, 0, 0, 0, 0, 0, 0, ""};
    int code = 0, i;

    if (argc < 2) /* no camera is named, so capture from one without hardware */
        code = ostrel_test_camera("example-c", "Test pattern", WIDTH, HEIGHT, 30, &pattern, why, sizeof why);
    if (code == OSTREL_OK)
        code = ostrel_find(argc < 2 ? "example-c" : argv[1], &camera, why, sizeof why);
    if (code == OSTREL_OK)
        code = ostrel_start(camera.id, WIDTH, HEIGHT, &capture, why, sizeof why);
    for (i = 0; i < 10 && code == OSTREL_OK; ++i) {
        code = ostrel_next(capture, grey, sizeof grey, 0, OSTREL_GREY, 5000, &frame, why, sizeof why);
        if (code == OSTREL_OK) {
            unsigned long sum = 0;
            size_t pixel;
            for (pixel = 0; pixel < sizeof grey; ++pixel)
                sum += grey[pixel];
            printf("frame %lu of %s: %lu of 255\n", (unsigned long)frame.number, camera.name,
                   sum / (unsigned long)sizeof grey);
        }
    }
    if (code == OSTREL_NOTHING)
        fprintf(stderr, "no frame within five seconds\n");
    else if (code != OSTREL_OK)
        fprintf(stderr, "%s\n", why);
    ostrel_close(capture, why, sizeof why);
    ostrel_close(pattern, why, sizeof why);
    return code == OSTREL_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}
