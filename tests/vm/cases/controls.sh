# Controls of the kernel's drivers, by the library and by the command line.
. "$VM_TESTS/guest/cameras.sh"
load_vivid n_devs=1
expect "controls of every type" "$TEST" --gtest_filter='VividControls.*'
unload_vivid

plug_webcam
cd /tmp
expect "controls of a webcam" "$TEST" --gtest_filter='WebcamControls.*'
tell_webcam unplug
expect "the node vanishes" wait_until 120 test ! -e /dev/video0
tell_webcam plug
expect "the node comes back" wait_until 120 test -c /dev/video0

# value NAME - as another program reads it.
value() { v4l2-ctl -d /dev/video0 -C "$1" | sed 's/.*: //; s/ (.*//'; }
refused() { ! "$CAMERA" controls "$@" 2>refusal && grep -q 'xposure.* has the say' refusal; }

expect "the table names who has the say" sh -c '"$0" controls | grep -E "^exposure_(time_)?absolute .*exposure.* has the say$"' "$CAMERA"
expect "what is automatic is not switched off silently" refused exposure_absolute=100
expect "nor was it" is "$(value exposure_time_absolute)" 250
expect "set with its automatic mode, by an old name and a new one" \
    "$CAMERA" controls exposure_time_absolute=100 exposure_auto=manual focus_absolute=40 focus_auto=off brightness=70
expect "save" "$CAMERA" controls --save saved.json
tell_webcam unplug
expect "the node vanishes" wait_until 120 test ! -e /dev/video0
tell_webcam plug
expect "the node comes back" wait_until 120 test -c /dev/video0
expect "plugged in again it has forgotten" is "$(value brightness) $(value exposure_time_absolute)" "50 250"
expect "load" "$CAMERA" controls --load saved.json
expect "exposure" is "$(value auto_exposure) $(value exposure_time_absolute)" "1 100"
expect "focus" is "$(value focus_automatic_continuous) $(value focus_absolute)" "0 40"
expect "brightness" is "$(value brightness)" 70
expect "back to automatic by the name of what it has the say over" "$CAMERA" controls exposure_time_absolute=auto
expect "the mode" is "$(value auto_exposure)" 3
unplug_webcam
finish
