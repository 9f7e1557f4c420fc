#!/usr/bin/env python3
"""uvc_device.py [--truncate-every N] PICTURE.jpg...

Plugs in a USB webcam that exists only in this process, so that the kernel's own uvcvideo driver makes a camera of
it: motion JPEG (the given pictures in turn; one at least for each size that is captured) and YUYV, at 320x240,
640x480 and 1280x720. Runs as root; needs the modules vhci-hcd and uvcvideo.

Reads commands from standard input, one a line, and confirms each on standard output with the same word; the end of
the input unplugs it.
  plug, unplug    the cable, in the same port each time
  stall, resume   no frames, frames again
  truncate N      cut every Nth frame in half; 0 for none
  plug twin, unplug twin  another webcam of the same model and serial number, in the next port
"""
import argparse
import sys

from uvc.webcam import Pictures, Webcam


def obey(webcam, twin, words):
    if words == ['plug', 'twin']:
        twin.plug()
    elif words == ['unplug', 'twin']:
        twin.unplug()
    elif words == ['plug']:
        webcam.plug()
    elif words == ['unplug']:
        webcam.unplug()
    elif words == ['stall']:
        webcam.stalled = True
    elif words == ['resume']:
        webcam.stalled = False
    elif len(words) == 2 and words[0] == 'truncate' and words[1].isdigit():
        webcam.truncate_every = int(words[1])
    else:
        print(f'unknown command: {" ".join(words)}', file=sys.stderr)
        return
    print(words[0], flush=True)


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument('--truncate-every', type=int, default=0)
    parser.add_argument('picture', nargs='+')
    options = parser.parse_args()

    pictures = Pictures(options.picture)
    webcam = Webcam(pictures, options.truncate_every)
    twin = Webcam(pictures, port=1)
    obey(webcam, twin, ['plug'])
    for line in sys.stdin:
        if line.strip():
            obey(webcam, twin, line.split())
    twin.unplug()
    webcam.unplug()


if __name__ == '__main__':
    main()
