/* A client in C that does everything wrong. It gets codes and words; the sanitizers see whether more happens.
 */
#include <ostrel/camera_c.h>

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static char why[256];

#define WHY why, sizeof why
#define CHECK(condition)                                                                                     \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            fprintf(stderr, "%s:%d: %s (%s)\n", __FILE__, __LINE__, #condition, why);                        \
            exit(1);                                                                                         \
        }                                                                                                    \
    } while (0)
#define REFUSED(code, call)                                                                                  \
    do {                                                                                                     \
        memset(why, 'x', sizeof why);                                                                        \
        CHECK((call) == (code));                                                                             \
        CHECK(why[0] != '\0' && strlen(why) < sizeof why);                                                   \
    } while (0)

enum { WIDTH = 64, HEIGHT = 48 };
static uint8_t pixels[WIDTH * HEIGHT * 4];

static void null_pointers(ostrel_handle capture, ostrel_handle push) {
    const size_t all = sizeof pixels;
    size_t count;
    ostrel_handle handle;
    uint32_t number;
    ostrel_camera_info camera = {sizeof camera, "", ""};
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_cameras(NULL, &count, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_cameras(&handle, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_nodes(NULL, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_find(NULL, &camera, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_find("", &camera, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_find("misused", NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_start(NULL, WIDTH, HEIGHT, &handle, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_start("misused", WIDTH, HEIGHT, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_reader(capture, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_descriptor(capture, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_next(capture, NULL, all, 0, OSTREL_BGRA, 0, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_next_native(capture, NULL, all, 0, NULL, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_next_native(capture, pixels, all, 0, NULL, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_poll(capture, NULL, all, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_state("misused", NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_state(NULL, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_test_camera(NULL, NULL, 0, 0, 0, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_push_camera("other", "", NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_file_camera("other", "", NULL, 0, &handle, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_push(push, NULL, all, WIDTH, HEIGHT, 0, OSTREL_BGRA, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_read_pattern(pixels, all, WIDTH, HEIGHT, 0, &number, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_convert(OSTREL_BGRA, pixels, all, OSTREL_I420, NULL, all, WIDTH, HEIGHT, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_scale(OSTREL_I420, NULL, 320 * 240 * 3 / 2, 320, 240, pixels, all, 640, 480, 0, WHY));
    CHECK(ostrel_find(NULL, NULL, NULL, 0) == OSTREL_BAD_ARGUMENT);
    CHECK(ostrel_find(NULL, NULL, NULL, 100) == OSTREL_BAD_ARGUMENT);
    CHECK(ostrel_find(NULL, NULL, why, 0) == OSTREL_BAD_ARGUMENT);
}

static void numbers_that_mean_nothing(ostrel_handle capture, ostrel_handle push) {
    const size_t all = sizeof pixels;
    ostrel_handle handle;
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_start("misused", 0, HEIGHT, &handle, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_start("misused", WIDTH, -1, &handle, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_start("misused", INT32_MAX, INT32_MAX, &handle, WHY));
    REFUSED(OSTREL_NO_CAMERA, ostrel_start("no such camera", WIDTH, HEIGHT, &handle, WHY));
    REFUSED(OSTREL_NO_CAMERA, ostrel_start("\xff\xfe", WIDTH, HEIGHT, &handle, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_next(capture, pixels, all, 0, OSTREL_I420, 0, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_next(capture, pixels, all, 0, 99, 0, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_next(capture, pixels, all, 7, OSTREL_BGRA, 0, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_next(capture, pixels, all, -WIDTH * 4, OSTREL_BGRA, 0, NULL, WHY));
    REFUSED(OSTREL_TOO_SMALL, ostrel_next(capture, pixels, all, INT32_MAX, OSTREL_BGRA, 0, NULL, WHY));
    REFUSED(OSTREL_TOO_SMALL, ostrel_next(capture, pixels, all - 1, 0, OSTREL_BGRA, 0, NULL, WHY));
    REFUSED(OSTREL_TOO_SMALL, ostrel_poll(capture, pixels, all - 1, NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_push(push, pixels, all - 1, WIDTH, HEIGHT, 0, OSTREL_BGRA, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_push(push, pixels, all, WIDTH, HEIGHT, 0, 99, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_push(push, pixels, all, WIDTH, -HEIGHT, 0, OSTREL_BGRA, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_push(push, pixels, all, WIDTH, HEIGHT, 3, OSTREL_BGR, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_set_fault(push, 6, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_set_fault(push, -1, WHY));
    REFUSED(OSTREL_REFUSED, ostrel_push_camera("misused", "taken", &handle, WHY));
    REFUSED(OSTREL_REFUSED, ostrel_push_camera("\xc3\xa9", "not ASCII", &handle, WHY));
    REFUSED(OSTREL_REFUSED, ostrel_file_camera("file", "", "/no/such/file.y4m", 1, &handle, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_convert(OSTREL_BGRA, pixels, all, OSTREL_I420, pixels, all, WIDTH + 1, HEIGHT, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_convert(OSTREL_BGRA, pixels, all, OSTREL_I420, pixels, all, WIDTH, HEIGHT - 1, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_convert(OSTREL_GREY, pixels, all, OSTREL_I420, pixels, all, WIDTH, HEIGHT, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_convert(OSTREL_BGRA, pixels, 10, OSTREL_I420, pixels, all, WIDTH, HEIGHT, WHY));
    REFUSED(OSTREL_TOO_SMALL,
            ostrel_convert(OSTREL_BGRA, pixels, all, OSTREL_I420, pixels, 10, WIDTH, HEIGHT, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_scale(OSTREL_I420, pixels, all, WIDTH, HEIGHT, pixels, all, 640, 480, 0, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT,
            ostrel_scale(OSTREL_I420, pixels, all, 320, 240, pixels, all, 640, 480, 7, WHY));
}

static void sizes_of_structs(void) {
    struct {
        ostrel_camera_info camera;
        unsigned char later[16];
    } grown;
    ostrel_camera_info camera;
    ostrel_state_info state;
    memset(&camera, 'x', sizeof camera);
    camera.size = sizeof camera - 1;
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_find("misused", &camera, WHY));
    camera.size = 0;
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_find("misused", &camera, WHY));
    CHECK(camera.id[0] == 'x');
    camera.size = (size_t)-1;
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_find("misused", &camera, WHY));
    state.size = 8;
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_state("misused", &state, WHY));

    /* A client of a later release: what this one does not know is 0, and nothing behind it is touched. */
    memset(&grown, 'x', sizeof grown);
    grown.camera.size = sizeof grown - 8;
    CHECK(ostrel_find("misused", &grown.camera, WHY) == OSTREL_OK);
    CHECK(why[0] == '\0');
    CHECK(grown.camera.size == sizeof grown - 8);
    CHECK(strcmp(grown.camera.id, "misused") == 0);
    CHECK(grown.later[0] == 0 && grown.later[7] == 0 && grown.later[8] == 'x');
}

static void wrong_handles(ostrel_handle capture, ostrel_handle push) {
    const ostrel_handle wrong[] = {0, 1, 3, (ostrel_handle)-1, (ostrel_handle)1 << 32};
    ostrel_handle handle;
    int32_t descriptor;
    size_t i;
    for (i = 0; i < sizeof wrong / sizeof *wrong; ++i) {
        ostrel_camera_info camera = {sizeof camera, "", ""};
        REFUSED(OSTREL_BAD_HANDLE, ostrel_close(wrong[i], WHY));
        REFUSED(OSTREL_BAD_HANDLE, ostrel_stop(wrong[i], WHY));
        REFUSED(OSTREL_BAD_HANDLE, ostrel_reader(wrong[i], &handle, WHY));
        REFUSED(OSTREL_BAD_HANDLE, ostrel_descriptor(wrong[i], &descriptor, WHY));
        REFUSED(OSTREL_BAD_HANDLE, ostrel_camera_at(wrong[i], 0, &camera, WHY));
        REFUSED(OSTREL_BAD_HANDLE,
                ostrel_next(wrong[i], pixels, sizeof pixels, 0, OSTREL_BGRA, -1, NULL, WHY));
        REFUSED(OSTREL_BAD_HANDLE, ostrel_poll(wrong[i], pixels, sizeof pixels, NULL, WHY));
        REFUSED(OSTREL_BAD_HANDLE,
                ostrel_push(wrong[i], pixels, sizeof pixels, WIDTH, HEIGHT, 0, OSTREL_BGRA, WHY));
        REFUSED(OSTREL_BAD_HANDLE, ostrel_set_fault(wrong[i], 0, WHY));
        REFUSED(OSTREL_BAD_HANDLE, ostrel_attach(wrong[i], 0, WHY));
    }
    REFUSED(OSTREL_BAD_HANDLE, ostrel_stop(push, WHY));
    REFUSED(OSTREL_BAD_HANDLE, ostrel_descriptor(push, &descriptor, WHY));
    REFUSED(OSTREL_BAD_HANDLE,
            ostrel_push(capture, pixels, sizeof pixels, WIDTH, HEIGHT, 0, OSTREL_BGRA, WHY));
}

static void closed_handles(void) {
    ostrel_handle list, capture, reader, camera;
    size_t count;
    ostrel_camera_info info = {sizeof info, "", ""};
    CHECK(ostrel_cameras(&list, &count, WHY) == OSTREL_OK);
    CHECK(ostrel_camera_at(list, 0, &info, WHY) == OSTREL_OK);
    CHECK(ostrel_camera_at(list, count, &info, WHY) == OSTREL_NOTHING);
    CHECK(ostrel_close(list, WHY) == OSTREL_OK);
    REFUSED(OSTREL_BAD_HANDLE, ostrel_camera_at(list, 0, &info, WHY));
    REFUSED(OSTREL_BAD_HANDLE, ostrel_close(list, WHY));

    CHECK(ostrel_push_camera("closed", "Closed", &camera, WHY) == OSTREL_OK);
    CHECK(ostrel_start("closed", WIDTH, HEIGHT, &capture, WHY) == OSTREL_OK);
    CHECK(ostrel_reader(capture, &reader, WHY) == OSTREL_OK);
    CHECK(ostrel_close(camera, WHY) == OSTREL_OK);
    REFUSED(OSTREL_BAD_HANDLE,
            ostrel_push(camera, pixels, sizeof pixels, WIDTH, HEIGHT, 0, OSTREL_BGRA, WHY));
    CHECK(ostrel_stop(capture, WHY) == OSTREL_OK);
    CHECK(ostrel_stop(capture, WHY) == OSTREL_OK);
    REFUSED(OSTREL_OVER, ostrel_next(capture, pixels, sizeof pixels, 0, OSTREL_BGRA, -1, NULL, WHY));
    CHECK(ostrel_close(capture, WHY) == OSTREL_OK);
    REFUSED(OSTREL_OVER, ostrel_next(reader, pixels, sizeof pixels, 0, OSTREL_BGRA, -1, NULL, WHY));
    REFUSED(OSTREL_BAD_HANDLE, ostrel_next(capture, pixels, sizeof pixels, 0, OSTREL_BGRA, 0, NULL, WHY));
    CHECK(ostrel_close(reader, WHY) == OSTREL_OK);
}

/* Waits for ever by the handle; answers the code that ended it. */
static void* wait_for_a_frame(void* handle) {
    uint8_t own[WIDTH * HEIGHT];
    char words[200];
    int code;
    do {
        code = ostrel_next(*(ostrel_handle*)handle, own, sizeof own, 0, OSTREL_GREY, -1, NULL, words,
                           sizeof words);
    } while (code == OSTREL_OK || code == OSTREL_BUSY); /* busy: the other thread has looked just now */
    return words[0] ? (void*)(intptr_t)code : NULL;
}

static int is_in_use(ostrel_handle handle) {
    return ostrel_next(handle, pixels, sizeof pixels, 0, OSTREL_GREY, 0, NULL, WHY) == OSTREL_BUSY;
}

static void handles_closed_by_other_threads(void) {
    ostrel_handle camera, capture, reader, waiting[2];
    int32_t descriptor;
    pthread_t threads[2];
    void* code;
    int i;
    CHECK(ostrel_push_camera("silent", "Never pushed to", &camera, WHY) == OSTREL_OK);
    CHECK(ostrel_start("silent", WIDTH, HEIGHT, &capture, WHY) == OSTREL_OK);
    CHECK(ostrel_reader(capture, &reader, WHY) == OSTREL_OK);
    waiting[0] = capture;
    waiting[1] = reader;
    for (i = 0; i < 2; ++i)
        CHECK(pthread_create(&threads[i], NULL, wait_for_a_frame, &waiting[i]) == 0);
    while (!is_in_use(capture) || !is_in_use(reader))
        continue;
    CHECK(ostrel_descriptor(capture, &descriptor, WHY) == OSTREL_OK); /* it neither waits nor takes */
    CHECK(ostrel_close(reader, WHY) == OSTREL_OK);
    CHECK(pthread_join(threads[1], &code) == 0 && (intptr_t)code == OSTREL_BAD_HANDLE);
    CHECK(ostrel_close(capture, WHY) == OSTREL_OK);
    CHECK(pthread_join(threads[0], &code) == 0 && (intptr_t)code == OSTREL_BAD_HANDLE);
    CHECK(ostrel_close(camera, WHY) == OSTREL_OK);
}

/* Each thread opens, uses and closes what the others use and close. */
static ostrel_handle shared_capture, shared_camera;

static void* use_what_others_close(void* nothing) {
    uint8_t own[WIDTH * HEIGHT * 4] = {0};
    int i;
    for (i = 0; i < 200; ++i) {
        ostrel_handle reader = 0;
        uint32_t number;
        ostrel_push(shared_camera, own, sizeof own, WIDTH, HEIGHT, 0, OSTREL_BGR, NULL, 0);
        ostrel_next(shared_capture, own, sizeof own, 0, OSTREL_BGR, 1, NULL, NULL, 0);
        ostrel_reader(shared_capture, &reader, NULL, 0);
        ostrel_next(reader, own, sizeof own, 0, OSTREL_GREY, 0, NULL, NULL, 0);
        ostrel_poll(shared_capture, own, sizeof own, &number, NULL, 0);
        ostrel_close(reader, NULL, 0);
        if (i == 100)
            ostrel_stop(shared_capture, NULL, 0);
        if (i == 150)
            ostrel_close(i % 2 ? shared_camera : shared_capture, NULL, 0);
    }
    ostrel_close(shared_camera, NULL, 0);
    return nothing;
}

static void everything_at_once(void) {
    pthread_t threads[4];
    int i;
    CHECK(ostrel_push_camera("busy", "Pushed to by all", &shared_camera, WHY) == OSTREL_OK);
    CHECK(ostrel_start("busy", WIDTH, HEIGHT, &shared_capture, WHY) == OSTREL_OK);
    for (i = 0; i < 4; ++i)
        CHECK(pthread_create(&threads[i], NULL, use_what_others_close, NULL) == 0);
    for (i = 0; i < 4; ++i)
        CHECK(pthread_join(threads[i], NULL) == 0);
    REFUSED(OSTREL_BAD_HANDLE, ostrel_close(shared_capture, WHY));
    REFUSED(OSTREL_BAD_HANDLE, ostrel_close(shared_camera, WHY));
}

static void extensions(ostrel_handle capture) {
    size_t count;
    ostrel_handle camera, list, monitor;
    const uint32_t control = 1;
    const int64_t value = 1;
    int64_t item;
    ostrel_mode_info mode = {sizeof mode, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, ""};
    ostrel_control_info info = {sizeof info, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, "", ""};
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_details("misused", NULL, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_modes("misused", NULL, &count, WHY));
    REFUSED(OSTREL_REFUSED, ostrel_modes("no such camera", &list, &count, WHY));
    mode.width = mode.height = 8;
    REFUSED(OSTREL_REFUSED, ostrel_request_mode("no such camera", &mode, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_request_mode(NULL, &mode, WHY));
    memset(mode.format, 'x', sizeof mode.format); /* without an end */
    REFUSED(OSTREL_REFUSED, ostrel_request_mode("misused", &mode, WHY));
    mode.size = 4;
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_request_mode("misused", &mode, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_requested_mode("misused", &mode, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_controls("misused", NULL, NULL, WHY));
    CHECK(ostrel_test_camera("pattern", "Has controls", 64, 48, 30, &camera, WHY) == OSTREL_OK);
    CHECK(ostrel_controls("pattern", &list, &count, WHY) == OSTREL_OK && count > 0);
    REFUSED(OSTREL_NOTHING, ostrel_control_item(list, 0, 0, &item, NULL, 0, WHY)); /* it is no menu */
    CHECK(ostrel_close(list, WHY) == OSTREL_OK && ostrel_close(camera, WHY) == OSTREL_OK);
    CHECK(ostrel_controls("no such camera", &list, &count, WHY) == OSTREL_OK && count == 0 && why[0]);
    REFUSED(OSTREL_NOTHING, ostrel_control_at(list, 0, &info, WHY));
    mode.size = sizeof mode;
    REFUSED(OSTREL_BAD_HANDLE, ostrel_mode_at(list, 0, &mode, WHY));
    CHECK(ostrel_close(list, WHY) == OSTREL_OK);
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_set_controls("misused", NULL, &value, NULL, 1, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_set_controls("misused", &control, NULL, NULL, 1, WHY));
    REFUSED(OSTREL_REFUSED, ostrel_set_controls("misused", &control, &value, NULL, 1, WHY));
    REFUSED(OSTREL_REFUSED, ostrel_watch_controls("no such camera", &list, WHY));
    REFUSED(OSTREL_BAD_HANDLE, ostrel_wait(capture, 0, WHY));
    REFUSED(OSTREL_BAD_HANDLE, ostrel_wait(0, -1, WHY));
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_monitor(NULL, WHY));
    CHECK(ostrel_monitor(&monitor, WHY) == OSTREL_OK);
    REFUSED(OSTREL_BAD_ARGUMENT, ostrel_take_changes(monitor, NULL, NULL, WHY));
    REFUSED(OSTREL_BAD_HANDLE, ostrel_take_controls(monitor, &list, &count, WHY));
    CHECK(ostrel_close(monitor, WHY) == OSTREL_OK);
    REFUSED(OSTREL_BAD_HANDLE, ostrel_wait(monitor, -1, WHY));
}

static void words_that_do_not_fit(void) {
    char small[20];
    ostrel_handle capture;
    memset(small, 'x', sizeof small);
    CHECK(ostrel_start("1234\xc3\xa9", WIDTH, HEIGHT, &capture, small, 10) == OSTREL_NO_CAMERA);
    CHECK(strcmp(small, "No camera") == 0 && small[10] == 'x');
    CHECK(ostrel_start("\xc3\xa9", WIDTH, HEIGHT, &capture, WHY) == OSTREL_NO_CAMERA);
    {
        const size_t before = (size_t)(strstr(why, "\xc3\xa9") - why);
        char cut[64];
        memset(cut, 'x', sizeof cut);
        CHECK(before + 2 < sizeof cut);
        CHECK(ostrel_start("\xc3\xa9", WIDTH, HEIGHT, &capture, cut, before + 2) == OSTREL_NO_CAMERA);
        CHECK(strlen(cut) == before);
    }
}

int main(void) {
    ostrel_handle camera, capture, never_closed;
    CHECK(strcmp(ostrel_version(), OSTREL_EXPECTED_VERSION) == 0);
    CHECK(ostrel_push_camera("misused", "Misused camera", &camera, WHY) == OSTREL_OK);
    CHECK(ostrel_start("misused", WIDTH, HEIGHT, &capture, WHY) == OSTREL_OK);
    null_pointers(capture, camera);
    numbers_that_mean_nothing(capture, camera);
    sizes_of_structs();
    wrong_handles(capture, camera);
    closed_handles();
    handles_closed_by_other_threads();
    everything_at_once();
    extensions(capture);
    words_that_do_not_fit();
    CHECK(ostrel_close(camera, WHY) == OSTREL_OK);
    CHECK(ostrel_close(capture, WHY) == OSTREL_OK);
    /* What is open at the end is closed then. */
    CHECK(ostrel_test_camera("left", "Left behind", 64, 48, 500, &camera, WHY) == OSTREL_OK);
    CHECK(ostrel_start("left", WIDTH, HEIGHT, &never_closed, WHY) == OSTREL_OK);
    CHECK(ostrel_next(never_closed, pixels, sizeof pixels, 0, OSTREL_BGR, 30000, NULL, WHY) == OSTREL_OK);
    puts("misused");
    return 0;
}
