/* The library in C99, for C and for every language that can call C (Linux). The library is libostrelcamera.

   Codes: every call but ostrel_version() returns one. 0 is success, what is positive no error, what is
   negative one. Words: each takes why and why_bytes, where it leaves one line in English about an error or
   what else there is to say, mostly an empty one; null and 0 where nobody reads them. Texts are UTF-8 and end
   with a zero byte. One that does not fit is cut between characters. Structs begin with their size, which the
   caller sets to sizeof: ostrel_frame_info frame = {sizeof frame}. Later releases append members; of a struct
   from a newer header the members that a library does not know become 0. Handles are numbers that are never
   used again. One that is closed, of another kind or made up is answered with OSTREL_BAD_HANDLE. Close each;
   what is open when the program ends is closed then. Threads: any thread may make any call, and none may be
   cancelled in one. Calls that wait, or take, by one handle are one thread's at a time: others get
   OSTREL_BUSY. Closing a handle ends the waiting of other threads with OSTREL_BAD_HANDLE. fork(): in the
   child of a process that has made a call before, every call answers OSTREL_FORKED. Memory is the caller's
   and is not kept after the call. Nothing is written to standard error.
 */
#ifndef OSTREL_CAMERA_C_H
#define OSTREL_CAMERA_C_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define OSTREL_C_API __attribute__((visibility("default")))
#else
#define OSTREL_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint64_t ostrel_handle; /* 0 is never one */

enum {
    OSTREL_OK = 0,
    OSTREL_NOTHING = 1,       /* the time is over, or there is nothing (more) */
    OSTREL_BAD_ARGUMENT = -1, /* null, too small a struct, a number that means nothing */
    OSTREL_BAD_HANDLE = -2,
    OSTREL_BUSY = -3,      /* another thread is in a call by this handle */
    OSTREL_NO_CAMERA = -4, /* none attached that is meant */
    OSTREL_OVER = -5,      /* none will come any more: refused, ended, stopped */
    OSTREL_TOO_SMALL = -6, /* the memory for the answer */
    OSTREL_REFUSED = -7,   /* by the camera, its driver, or the state it is in */
    OSTREL_NO_MEMORY = -8,
    OSTREL_FORKED = -9,
    OSTREL_FAILED = -10 /* anything else */
};

/* "1.1.0", for as long as the program runs: not in the caller's memory. */
OSTREL_C_API const char* ostrel_version(void);
/* Any handle. What it stands for ends: a capture is stopped, a virtual camera unplugged. */
OSTREL_C_API int ostrel_close(ostrel_handle handle, char* why, size_t why_bytes);

/* --- Cameras ------------------------------------------------------------------------------------------- */

typedef struct ostrel_camera_info {
    size_t size;
    char id[1024];  /* printable ASCII; what every call below takes */
    char name[256]; /* for people */
} ostrel_camera_info;

/* A node of the system; id is empty where it is no camera. */
typedef struct ostrel_node_info {
    size_t size;
    char path[256]; /* "/dev/video0" */
    char name[256];
    char id[1024];
    char reason[1024]; /* why it is no camera, or what stands against its use */
} ostrel_node_info;

/* Lists are handles: of what was there at the call, count of them, asked one by one from index 0 on. */
OSTREL_C_API int ostrel_cameras(ostrel_handle* list, size_t* count, char* why, size_t why_bytes);
OSTREL_C_API int ostrel_camera_at(ostrel_handle list, size_t index, ostrel_camera_info* camera, char* why,
                                  size_t why_bytes);
OSTREL_C_API int ostrel_nodes(ostrel_handle* list, size_t* count, char* why, size_t why_bytes);
OSTREL_C_API int ostrel_node_at(ostrel_handle list, size_t index, ostrel_node_info* node, char* why,
                                size_t why_bytes);

/* The camera that a saved or typed text means: an identifier of today or of earlier, the path of a node or of
   a link to it, a name, or a part of a name (letter case ignored) that only one camera has. OSTREL_NO_CAMERA
   where none or several fit; why names those there are. */
OSTREL_C_API int ostrel_find(const char* text, ostrel_camera_info* camera, char* why, size_t why_bytes);

/* Plugging: which cameras came and went, for one who knows of those that were there when it was made. */
OSTREL_C_API int ostrel_monitor(ostrel_handle* monitor, char* why, size_t why_bytes);
/* A list of the cameras that its owner knows of: at first, then as changed by what was taken. */
OSTREL_C_API int ostrel_monitor_cameras(ostrel_handle monitor, ostrel_handle* list, size_t* count, char* why,
                                        size_t why_bytes);
/* Waits until there may be something to take, by a monitor or by a watch of controls. Negative times wait for
   ever. OSTREL_NOTHING when the time, in milliseconds, is over; OSTREL_OVER when it will never be. */
OSTREL_C_API int ostrel_wait(ostrel_handle handle, int32_t timeout_ms, char* why, size_t why_bytes);

enum { OSTREL_ADDED = 1, OSTREL_REMOVED = 2 };

typedef struct ostrel_change_info {
    size_t size;
    int32_t kind;
    char id[1024];
    char name[256];
} ostrel_change_info;

/* A list of what has changed since the call before, removals first; it may be empty. */
OSTREL_C_API int ostrel_take_changes(ostrel_handle monitor, ostrel_handle* list, size_t* count, char* why,
                                     size_t why_bytes);
OSTREL_C_API int ostrel_change_at(ostrel_handle list, size_t index, ostrel_change_info* change, char* why,
                                  size_t why_bytes);

/* --- Capturing ----------------------------------------------------------------------------------------- */

/* Bytes of a pixel, top row first, as everywhere in this header. */
enum {
    OSTREL_BGRA = 1, /* B, G, R, A; A is 255 */
    OSTREL_BGR = 2,  /* B, G, R */
    OSTREL_GREY = 3, /* from 0, black, to 255 */
    OSTREL_I420 = 4, /* planes Y, U, V: for pushing, converting and scaling alone */
    OSTREL_YUY2 = 5  /* Y0, U, Y1, V: for converting and scaling alone */
};

enum {
    OSTREL_START_OF_EXPOSURE = 1,
    OSTREL_END_OF_FRAME = 2,
    OSTREL_ARRIVAL = 3 /* when the library received it: the driver does not say */
};

typedef struct ostrel_frame_info {
    size_t size;
    int64_t captured;     /* nanoseconds of CLOCK_MONOTONIC */
    uint64_t passed_over; /* frames since the last one by this handle that it did not get */
    uint32_t number;      /* 1 for the first since the start; wraps */
    uint32_t sequence;    /* as the driver counts; wraps, may be 0 throughout */
    int32_t time_source;
    int32_t native_width; /* as the camera delivered it, pixels */
    int32_t native_height;
    char native_format[20]; /* "MJPG", "YUYV" */
} ostrel_frame_info;

enum { OSTREL_BT601 = 1, OSTREL_BT709 = 2, OSTREL_BT2020 = 3 };
enum { OSTREL_WOVEN = 0, OSTREL_TOP_FIRST = 1, OSTREL_BOTTOM_FIRST = 2 };

typedef struct ostrel_native_info {
    size_t size;
    uint64_t bytes; /* of the picture */
    uint64_t offset[4];
    int32_t bytes_per_line[4]; /* 0 of compressed pictures */
    int32_t planes;
    int32_t width, height; /* pixels */
    int32_t encoding;      /* how Y, U and V stand for colours: OSTREL_BT601 and its kin */
    int32_t full_range;    /* Y from 0 to 255 instead of 16 to 235 */
    int32_t fields;        /* rows: OSTREL_WOVEN, or those of one field before those of the other */
    char format[20];       /* four characters, blanks at the end left out */
} ostrel_native_info;

/* Starts capturing from the camera with this identifier at exactly width x height pixels. Returns at once;
   frames come later, or the reason why none do. */
OSTREL_C_API int ostrel_start(const char* id, int32_t width, int32_t height, ostrel_handle* capture,
                              char* why, size_t why_bytes);
/* Ends it, as closing does; the handle stays. */
OSTREL_C_API int ostrel_stop(ostrel_handle capture, char* why, size_t why_bytes);
/* One more place in the frames of a capture, for another thread; the calls below take it like a capture. */
OSTREL_C_API int ostrel_reader(ostrel_handle capture, ostrel_handle* reader, char* why, size_t why_bytes);
/* For poll() and its kin, to wait for reading only: readable while there is a frame that this handle has not
   had, and once none will come any more. Belongs to the handle. OSTREL_FAILED when the system has none left.
   Of a monitor and a watch: while there may be something to take. */
OSTREL_C_API int ostrel_descriptor(ostrel_handle handle, int32_t* descriptor, char* why, size_t why_bytes);

/* Waits for the newest frame that this handle has not had and writes it to the caller's memory: pixels has
   bytes bytes, rows are stride bytes apart (0: without padding), layout is BGRA, BGR or GREY. Negative times
   wait for ever. OSTREL_NOTHING when the time, in milliseconds, is over. frame may be null. */
OSTREL_C_API int ostrel_next(ostrel_handle capture, uint8_t* pixels, size_t bytes, int32_t stride,
                             int32_t layout, int32_t timeout_ms, ostrel_frame_info* frame, char* why,
                             size_t why_bytes);
/* The newest picture of a capture, had before or not, as BGRA without padding. number: frames until now. */
OSTREL_C_API int ostrel_poll(ostrel_handle capture, uint8_t* pixels, size_t bytes, uint32_t* number,
                             char* why, size_t why_bytes);
/* As ostrel_next(), the camera's own bytes. OSTREL_TOO_SMALL says in native->bytes how many there are, and
   the next such call gives the same frame, whatever has come since; the descriptor does not tell of it, and
   after an ostrel_next() it is gone. frame may be null. */
OSTREL_C_API int ostrel_next_native(ostrel_handle capture, uint8_t* data, size_t bytes, int32_t timeout_ms,
                                    ostrel_native_info* native, ostrel_frame_info* frame, char* why,
                                    size_t why_bytes);

/* --- State --------------------------------------------------------------------------------------------- */

enum {
    OSTREL_NOT_REFUSED = 0,
    OSTREL_REFUSED_AT_OPENING = 1,
    OSTREL_REFUSED_AT_INPUT = 2,
    OSTREL_REFUSED_AT_OUTPUT = 3
};

/* Texts are empty, and numbers 0, where there is nothing to say. */
typedef struct ostrel_state_info {
    size_t size;
    uint64_t delivered;  /* frames since the camera was started, of all captures that share it */
    uint64_t taken;      /* pictures made because somebody asked */
    uint64_t skipped;    /* passed over, since a newer one was there already */
    uint64_t lost;       /* missing in the driver's numbering */
    uint64_t dropped;    /* broken */
    uint64_t restarts;   /* after the camera had fallen silent */
    double granted_rate; /* frames a second */
    int32_t known;       /* this process has had it in a listing */
    int32_t open;        /* by a capture of this process */
    int32_t refused_at;
    int32_t granted_width; /* the camera's own, pixels */
    int32_t granted_height;
    char granted_format[20];
    char why_no_frames[1024]; /* the first of the next three that there is */
    char refused[1024];       /* why the last start failed */
    char ended[1024];         /* why the stream ended by itself */
    char stalled[1024];       /* why no frames come though it runs */
    char shared[1024];        /* why a capture that joined others got no larger native size */
    char captured_by[256];    /* "V4L2 (/dev/video0)" */
    char drops[2048];         /* a line for each reason: how many frames, a blank, the reason */
} ostrel_state_info;

/* Answers at once, also while the camera is being opened and after a start that failed. */
OSTREL_C_API int ostrel_state(const char* id, ostrel_state_info* state, char* why, size_t why_bytes);

/* --- Details and modes --------------------------------------------------------------------------------- */

typedef struct ostrel_details_info {
    size_t size;
    int32_t attached; /* else nothing is known */
    int32_t vendor;   /* of USB and PCI devices */
    int32_t product;
    char kind[64];   /* "V4L2", "virtual"; others may come */
    char node[256];  /* "/dev/video0" */
    char driver[64]; /* of the kernel */
    char bus[256];   /* where it is plugged in */
    char serial[512];
} ostrel_details_info;

OSTREL_C_API int ostrel_details(const char* id, ostrel_details_info* details, char* why, size_t why_bytes);

/* A mode that a camera offers; of a range of sizes or intervals, its largest size and its shortest interval.
   0 where the driver does not say. Or a wish for a mode, in which what is empty or 0 means any: of a wish the
   format, the size and the interval count. */
typedef struct ostrel_mode_info {
    size_t size;
    uint32_t interval_numerator; /* from frame to frame, in seconds as a fraction */
    uint32_t interval_denominator;
    uint32_t longest_numerator; /* the longest of a range; else the same */
    uint32_t longest_denominator;
    int32_t has_picture; /* without one there are only native frames */
    int32_t width, height;
    int32_t least_width,
        least_height; /* the smallest of a range, and from size to size; else the same, and 0 */
    int32_t step_width, step_height;
    char format[20]; /* "MJPG" */
} ostrel_mode_info;

/* A list of what the camera offers. The hardware is asked unless this process has it open. Where a driver
   broke off why says so, beside what it had told until then; OSTREL_REFUSED where nothing is known. */
OSTREL_C_API int ostrel_modes(const char* id, ostrel_handle* list, size_t* count, char* why,
                              size_t why_bytes);
OSTREL_C_API int ostrel_mode_at(ostrel_handle list, size_t index, ostrel_mode_info* mode, char* why,
                                size_t why_bytes);
/* From now on streams of this camera are started in such a mode, in this process. Null: in any, as at first.
   OSTREL_REFUSED when the camera offers none that fits. */
OSTREL_C_API int ostrel_request_mode(const char* id, const ostrel_mode_info* wish, char* why,
                                     size_t why_bytes);
OSTREL_C_API int ostrel_requested_mode(const char* id, ostrel_mode_info* wish, char* why, size_t why_bytes);
/* Whether cameras that have native frames alone (raw Bayer, depth, H.264) are listed; at first they are not.
 */
OSTREL_C_API int ostrel_list_native_only(int32_t list, char* why, size_t why_bytes);

/* --- Controls ------------------------------------------------------------------------------------------ */

/* V4L2's numbers; more may come. */
enum {
    OSTREL_INTEGER = 1,
    OSTREL_BOOLEAN = 2,
    OSTREL_MENU = 3,
    OSTREL_BUTTON = 4, /* has no value; setting it, to anything, presses it */
    OSTREL_INTEGER64 = 5,
    OSTREL_TEXT = 7, /* minimum and maximum are those of its length */
    OSTREL_BITMASK = 8,
    OSTREL_INTEGER_MENU = 9
};

/* Numbers and units are V4L2's. */
typedef struct ostrel_control_info {
    size_t size;
    int64_t minimum, maximum, step, default_value;
    int64_t value;
    uint32_t id;        /* V4L2_CID_... */
    uint32_t automatic; /* the control that may have the say over this one; 0: none is known */
    int32_t type;
    int32_t items; /* of menus: how many there are */
    int32_t has_value;
    int32_t inactive;    /* another setting has the say for the time being */
    int32_t read_only;   /* cannot be set */
    int32_t is_volatile; /* the camera changes it by itself, so that no watch tells */
    int32_t grabbed;     /* cannot be set for now */
    char name[64];       /* the driver's, for people */
    char text[1024];     /* of OSTREL_TEXT */
} ostrel_control_info;

/* These reach the hardware and may take as long as it does. A list of the camera's controls with their
   values; why says it when there are none. */
OSTREL_C_API int ostrel_controls(const char* id, ostrel_handle* list, size_t* count, char* why,
                                 size_t why_bytes);
OSTREL_C_API int ostrel_control_at(ostrel_handle list, size_t index, ostrel_control_info* control, char* why,
                                   size_t why_bytes);
/* The item-th item of a menu: the value by which it is set, and its name. */
OSTREL_C_API int ostrel_control_item(ostrel_handle list, size_t index, size_t item, int64_t* value,
                                     char* name, size_t name_bytes, char* why, size_t why_bytes);
/* Sets count controls at once: all, or none where the driver can do that. texts may be null when none of them
   has a text, and so may each of its pointers. OSTREL_REFUSED with the reason. */
OSTREL_C_API int ostrel_set_controls(const char* id, const uint32_t* controls, const int64_t* values,
                                     const char* const* texts, size_t count, char* why, size_t why_bytes);
/* Sees the controls of one camera change, whoever changes them. ostrel_wait() waits by it. */
OSTREL_C_API int ostrel_watch_controls(const char* id, ostrel_handle* watch, char* why, size_t why_bytes);
/* A list, as of ostrel_controls(), of those that changed since the call before. */
OSTREL_C_API int ostrel_take_controls(ostrel_handle watch, ostrel_handle* list, size_t* count, char* why,
                                      size_t why_bytes);

/* --- Cameras without hardware -------------------------------------------------------------------------- */

/* Listed beside the others until they are closed. id is printable ASCII, at most 1023 characters, and no
   attached virtual camera's. A test camera has the nearest size and rate that it can. */
OSTREL_C_API int ostrel_test_camera(const char* id, const char* name, int32_t width, int32_t height,
                                    double frames_per_second, ostrel_handle* camera, char* why,
                                    size_t why_bytes);
OSTREL_C_API int ostrel_push_camera(const char* id, const char* name, ostrel_handle* camera, char* why,
                                    size_t why_bytes);
/* A Y4M file, once or again and again. */
OSTREL_C_API int ostrel_file_camera(const char* id, const char* name, const char* path, int32_t loop,
                                    ostrel_handle* camera, char* why, size_t why_bytes);
/* Delivers a picture to every running capture of a push camera: BGRA, BGR or GREY with rows stride bytes
   apart (0: without padding), or I420 without padding. OSTREL_NOTHING while nobody captures. */
OSTREL_C_API int ostrel_push(ostrel_handle camera, const uint8_t* pixels, size_t bytes, int32_t width,
                             int32_t height, int32_t stride, int32_t layout, char* why, size_t why_bytes);
/* In the listing or not, as if plugged in or unplugged. */
OSTREL_C_API int ostrel_attach(ostrel_handle camera, int32_t attached, char* why, size_t why_bytes);
/* 0 heals; 1 cannot be opened, 2 refused as input, 3 refused as output, 4 padded rows, 5 no frames. */
OSTREL_C_API int ostrel_set_fault(ostrel_handle camera, int32_t fault, char* why, size_t why_bytes);
/* The frame counter, and the clock in milliseconds modulo 2^32, in a BGRA picture of a test camera.
   OSTREL_NOTHING when they cannot be read. */
OSTREL_C_API int ostrel_read_pattern(const uint8_t* pixels, size_t bytes, int32_t width, int32_t height,
                                     int32_t stride, uint32_t* counter, uint32_t* clock, char* why,
                                     size_t why_bytes);

/* --- Converting and scaling ---------------------------------------------------------------------------- */

/* A whole picture without padding, of even width and height, into memory of its own: BGRA to I420; BGR to
   BGRA, I420 or YUY2; I420 to BGRA or YUY2; YUY2 to BGRA or I420. */
OSTREL_C_API int ostrel_convert(int32_t from, const uint8_t* pixels, size_t bytes, int32_t to,
                                uint8_t* converted, size_t converted_bytes, int32_t width, int32_t height,
                                char* why, size_t why_bytes);

enum { OSTREL_NEAREST = 0, OSTREL_BILINEAR = 1, OSTREL_BOX = 2 };

/* I420 or YUY2 without padding, between 320 x 240, 640 x 480 and 1280 x 720. */
OSTREL_C_API int ostrel_scale(int32_t layout, const uint8_t* pixels, size_t bytes, int32_t width,
                              int32_t height, uint8_t* scaled, size_t scaled_bytes, int32_t scaled_width,
                              int32_t scaled_height, int32_t filter, char* why, size_t why_bytes);

#ifdef __cplusplus
}
#endif

#endif
