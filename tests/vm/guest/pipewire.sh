# Sourced by the cases: a PipeWire daemon with a session manager that gives it the machine's cameras. Needs cameras.sh,
# and udev, by which both know of the cameras.

# start_pipewire - returns when the session manager is there. Its process is then in SESSION_MANAGER.
start_pipewire() {
    local program
    for program in pipewire wireplumber pw-cli; do
        command -v "$program" >/dev/null || skip "the program $program is not installed"
    done
    export XDG_RUNTIME_DIR=/tmp/session XDG_CONFIG_HOME=/tmp/session/config XDG_STATE_HOME=/tmp/session/state
    mkdir -p -m 700 /tmp/session
    configure_session
    # Without the descriptor that the webcam takes for its cable.
    pipewire >/tmp/session/pipewire.log 2>&1 7>&- &
    session=$!
    wait_until 120 test -S /tmp/session/pipewire-0 || { cat /tmp/session/*.log; exit 1; }
    wireplumber "${profile[@]}" >/tmp/session/wireplumber.log 2>&1 7>&- &
    export SESSION_MANAGER=$!
    wait_until 120 sh -c 'pw-cli ls Client 7>&- | grep -q WirePlumber' || { cat /tmp/session/*.log; exit 1; }
}

stop_pipewire() {
    kill "$SESSION_MANAGER" "$session"
    wait "$SESSION_MANAGER" "$session" 2>/dev/null
}

# Cameras only, and nothing that asks a message bus: none runs in the machine.
configure_session() {
    local config=$XDG_CONFIG_HOME/wireplumber
    profile=(-p video-only)
    [ -f /usr/share/wireplumber/policy.conf ] || return 0
    # Before 0.5 there are no profiles: all is on that is not switched off.
    profile=()
    mkdir -p "$config/main.lua.d" "$config/bluetooth.lua.d"
    cat >"$config/main.lua.d/80-cameras-only.lua" <<'END'
alsa_monitor.enabled = false
libcamera_monitor.enabled = false
default_access.properties["enable-flatpak-portal"] = false
END
    echo 'bluez_monitor.enabled = false' >"$config/bluetooth.lua.d/80-none.lua"
}
