#!/bin/bash
# bench/capture/pipewire.sh PROGRAMS CAMERA ROUNDS - what a camera costs through PipeWire: the program CAMERA is one, in a
# session of its own. Writes one JSON object a line, as the peers do.
set -euo pipefail
programs=$1 camera=$2 rounds=$3
for needed in pipewire wireplumber; do
    command -v $needed >/dev/null || { echo "no results through PipeWire: $needed is not installed" >&2; exit 0; }
done
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

for layout in YUYV NV12; do
    for size in 640x480 1280x720; do
        "$camera" one format=$layout sizes=$size < <(sleep infinity) >/dev/null 2>&1 &
        one=$!
        sleep 1
        for _ in $(seq "$rounds"); do
            for peer in library gstreamer; do
                [ -x "$programs/bench_peer_$peer" ] || continue
                timeout 60 "$programs/bench_peer_$peer" pipewire ${size%x*} ${size#*x} $layout 30 45 2>/dev/null |
                    sed 's/{/{"where": "PipeWire", /' || echo "$peer cannot read $layout at $size through PipeWire" >&2
            done
        done
        kill $one
        wait $one 2>/dev/null || true
    done
done
