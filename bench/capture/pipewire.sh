#!/bin/bash
# bench/capture/pipewire.sh PROGRAMS CAMERA ROUNDS - what a camera costs through PipeWire: the program CAMERA is one, in a
# session of its own. Writes one JSON object a line, as the peers do.
set -euo pipefail
programs=$1 camera=$2 rounds=$3
for needed in pipewire wireplumber; do
    command -v $needed >/dev/null || { echo "no results through PipeWire: $needed is not installed" >&2; exit 0; }
done
[ -x "$camera" ] || { echo "no results through PipeWire: the library is built without it" >&2; exit 0; }
unset PIPEWIRE_REMOTE PIPEWIRE_RUNTIME_DIR PIPEWIRE_NODE DISPLAY DBUS_SESSION_BUS_ADDRESS
XDG_RUNTIME_DIR=$(mktemp -d)
export XDG_RUNTIME_DIR XDG_STATE_HOME=$XDG_RUNTIME_DIR/state XDG_CONFIG_HOME=$XDG_RUNTIME_DIR/config
processes=()
finish() {
    kill "${processes[@]}" 2>/dev/null || true
    wait
    rm -rf "$XDG_RUNTIME_DIR"
}
trap finish EXIT

pipewire >/dev/null 2>&1 &
processes+=($!)
for _ in $(seq 100); do
    [ ! -S "$XDG_RUNTIME_DIR/pipewire-0" ] || break
    sleep 0.05
done
if [ -e /usr/share/wireplumber/policy.conf ]; then manager=(-c policy.conf); else manager=(-p policy); fi
wireplumber "${manager[@]}" >/dev/null 2>&1 &
processes+=($!)
sleep 1
mkfifo "$XDG_RUNTIME_DIR/words"
exec 3<>"$XDG_RUNTIME_DIR/words" # the camera ends with its input, and nobody says anything there

for layout in YUYV NV12; do
    for size in 640x480 1280x720; do
        said=$XDG_RUNTIME_DIR/$layout-$size
        "$camera" one format=$layout sizes=$size <&3 >"$said" 2>/dev/null &
        processes+=($!)
        for _ in $(seq 100); do
            ! grep -q paused "$said" || break # it is there
            sleep 0.05
        done
        for _ in $(seq "$rounds"); do
            for peer in library library_waiting library_waiting_bgr gstreamer; do
                [ -x "$programs/bench_peer_$peer" ] || continue
                timeout 60 "$programs/bench_peer_$peer" pipewire:one ${size%x*} ${size#*x} $layout 30 45 2>/dev/null |
                    sed 's/{/{"where": "PipeWire", /' || echo "$peer cannot read $layout at $size through PipeWire" >&2
            done
        done
        kill "${processes[-1]}"
        wait "${processes[-1]}" || true
        unset 'processes[-1]'
    done
done
