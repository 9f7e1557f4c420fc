# The Python package on the kernel's own cameras: vivid's colour bars, and the emulated webcam, which is pulled out while
# a loop waits for its frames.
. "$VM_TESTS/guest/cameras.sh"
export PYTHONPATH="$PACKAGE" LD_LIBRARY_PATH="$LIBRARIES" PYTHONDONTWRITEBYTECODE=1
load_vivid
/usr/bin/python3 "$VM_TESTS/programs/python_test.py" vivid || exit 1
unload_vivid
plug_webcam
rm -f /tmp/captured
/usr/bin/python3 "$VM_TESTS/programs/python_test.py" webcam /tmp/captured 7>&- & # else it holds the cable
test=$!
wait_until 240 test -e /tmp/captured || { echo "no frames from the webcam"; exit 1; }
unplug_webcam
wait $test
