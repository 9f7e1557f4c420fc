# The files that the command line made, as another program reads them.
. "$VM_TESTS/checks.sh"
cd "$VM_OUT" || exit 1

# shows_bars FILE WIDTH HEIGHT FRAMES
shows_bars() {
    ffmpeg -v error -i "$1" -f rawvideo -pix_fmt rgb24 -sws_flags accurate_rnd+full_chroma_int - </dev/null |
        python3 "$VM_TESTS/check_bars.py" "$2" "$3" "$4"
}

# The kernel's names, and the library's three formats for each camera.
expect "the list is the JSON it should be" python3 -c '
import json
cameras = json.load(open("list.json"))
assert [camera["name"] for camera in cameras] == ["vivid-000-vid-cap", "vivid-001-vid-cap"], cameras
assert all(len(camera["formats"]) == 3 for camera in cameras), cameras
'
for size in 320x240 640x480 1280x720; do
    expect "the $size picture shows the bars" shows_bars $size.png ${size%x*} ${size#*x} 1
done
expect "the clip shows the bars in 12 frames" shows_bars clip.y4m 640 480 12
expect "the clip states size and rate" is "$(ffprobe -v error -show_entries stream=width,height,r_frame_rate \
    -of csv=p=0 clip.y4m)" 640,480,30/1
finish
