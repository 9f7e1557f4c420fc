#!/bin/bash
# bench/capture/run.sh PROGRAMS - runs the capture benchmarks whose programs are in the folder PROGRAMS and writes their
# results, one JSON object a line, to standard output. scripts/bench calls it.
#
# Environment: ROUNDS (5), how often everything is measured in turn; VM=0 leaves out the virtual machine.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
programs=$(realpath -e "$1")
rounds=${ROUNDS:-5}

# in_python ostrel|cv2 LAYOUT WIDTH HEIGHT
in_python() {
    TIMED_CAMERA="/dev/video90 $2 $3 $4 30" PYTHONPATH="$here/../../bindings/python" PYTHONDONTWRITEBYTECODE=1 \
        LD_LIBRARY_PATH="$programs/python" \
        timeout 60 /usr/bin/python3 "$here/peers/python.py" "$1" /dev/video90 "$3" "$4" "$2" 30 90 2>/dev/null ||
        echo "$1 cannot read $2 at $3x$4 in Python" >&2
}

# on_timed_camera LAYOUT WIDTH HEIGHT - every way of reading the camera, one after the other.
on_timed_camera() {
    local peer
    for peer in library library_waiting library_waiting_bgr; do
        "$programs/bench_peer_$peer" timed "$2" "$3" "$1" 30 45 2>/dev/null
    done
    for peer in opencv opencv_bgra gstreamer ffmpeg; do
        [ -x "$programs/bench_peer_$peer" ] || continue
        TIMED_CAMERA="/dev/video90 $1 $2 $3 30" LD_PRELOAD="$programs/bench_timed_camera.so" \
            timeout 60 "$programs/bench_peer_$peer" /dev/video90 "$2" "$3" "$1" 30 45 2>/dev/null ||
            echo "$peer cannot read $1 at $2x$3" >&2
    done
    in_python ostrel "$@"
    LD_PRELOAD="$programs/bench_timed_camera.so" in_python cv2 "$@"
}

"$programs/bench_capture" costs "$rounds"
"$programs/bench_capture" growth "$rounds"
"$programs/bench_capture" latency
for cameras in "patterns of the same sizes" "patterns of 1280x720" "YUYV 1280x720" "MJPEG 1280x720"; do
    "$programs/bench_capture" memory "$rounds" "$cameras"
done
for _ in $(seq "$rounds"); do
    for layout in YUYV NV12 MJPG; do
        on_timed_camera $layout 640 480
        on_timed_camera $layout 1280 720
    done
done
"$here/pipewire.sh" "$programs" "$programs/../../tests/support/pipewire/pipewire_camera" "$rounds"
python3 "$here/../report/startup.py" 21 "nothing=$programs/bench_startup_nothing" "load QtCore=$programs/bench_startup_qt" \
    "load Foundation=$programs/bench_startup_foundation" "load the library=$programs/bench_startup_library"
if [ "${VM:-1}" != 0 ]; then
    vm=$here/../../tests/vm
    if "$vm/setup.sh" >&2; then
        "$vm/run-in-vm.sh" -t 400 -e "VM_TESTS=$vm" -e "VM_PICTURES=${XDG_CACHE_HOME:-$HOME/.cache}/ostrelvideounix-vm/pictures" \
            -e "PROGRAMS=$programs" -- "bash $(printf %q "$here/in-vm.sh")" || echo "no results from the virtual machine" >&2
    fi
fi
