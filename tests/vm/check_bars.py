#!/usr/bin/env python3
"""check_bars.py WIDTH HEIGHT FRAMES - reads so many frames of 24-bit R, G, B from standard input, and no more, and
checks that each shows vivid's 75 % colour bars. The frames come from ffmpeg's decoders, so that nothing of the
library looks at its own files."""
import sys

BARS = [(191, 191, 191), (191, 191, 0), (0, 191, 191), (0, 191, 0), (191, 0, 191), (191, 0, 0), (0, 0, 191), (0, 0, 0)]
TOLERANCE = 6  # rounding of 8-bit luma and chroma


def check(frame, width, height, name):
    for number, bar in enumerate(BARS):
        for across in (number + 0.1, number + 0.5, number + 0.9):
            for down in (0.01, 0.5, 0.99):
                x, y = int(across * width / len(BARS)), int(down * height)
                at = (y * width + x) * 3
                seen = tuple(frame[at:at + 3])
                if any(abs(a - b) > TOLERANCE for a, b in zip(seen, bar)):
                    sys.exit(f'{name}: {seen} at {x},{y} instead of {bar}')


def main():
    width, height, frames = map(int, sys.argv[1:])
    size = width * height * 3
    data = sys.stdin.buffer.read()
    if len(data) != size * frames:
        sys.exit(f'{len(data)} bytes instead of {size * frames}')
    for number in range(frames):
        check(data[number * size:(number + 1) * size], width, height, f'frame {number}')


if __name__ == '__main__':
    main()
