#!/usr/bin/env python3
"""Ratios of the processing benchmarks: a table on standard output, a Markdown section and a plot (SVG).

usage: processing.py RESULTS.json MARKDOWN SVG

RESULTS.json is what bench_processing writes with --benchmark_out. Times are processor time, medians of the
repetitions; all contenders of one row ran interleaved in one process, so that only their ratios mean anything.
"""
import json
import sys

from chart import bars

CONTENDERS = ["libyuv", "swscale", "OpenCV", "memcpy"]


def medians(path):
    """{(operation, size): {contender: microseconds}} in the order of the file."""
    with open(path, encoding="utf-8") as file:
        results = json.load(file)
    rows = {}
    for entry in results["benchmarks"]:
        if entry.get("aggregate_name") != "median":
            continue
        operation, size, contender = entry["run_name"].split("/")
        rows.setdefault((operation, size), {})[contender] = entry["cpu_time"] / 1000
    if not rows:
        sys.exit(f"{path}: no medians in it; run with --benchmark_repetitions")
    return rows


def operation_order(key):
    operation, size = key
    sides = [int(side) for pair in size.split("-") for side in pair.split("x")]
    return (operation.startswith("scale"), operation, sides)


def table(rows):
    lines = ["| operation | size | library, us | " + " | ".join(f"{name} / library" for name in CONTENDERS) + " |",
             "|---|---|---:|" + "---:|" * len(CONTENDERS)]
    for key in sorted(rows, key=operation_order):
        times = rows[key]
        cells = [f"{times[name] / times['library']:.2f}" if name in times else "-" for name in CONTENDERS]
        lines.append(f"| {key[0]} | {key[1]} | {times['library']:.1f} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def plot(rows):
    groups = []
    for key in sorted(rows, key=operation_order):
        operation, size = key
        if size in ("1280x720", "1280x720-640x480"):
            times = rows[key]
            values = [(name, times[name] / times["library"]) for name in CONTENDERS if name in times]
            groups.append((f"{operation} {size}", values))
    return bars("Processor time of a frame, library = 1 (longer is slower)", groups, CONTENDERS, unit="x")


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    rows = medians(sys.argv[1])
    text = table(rows)
    print(text, end="")
    with open(sys.argv[2], "w", encoding="utf-8") as file:
        file.write(text)
    with open(sys.argv[3], "w", encoding="utf-8") as file:
        file.write(plot(rows))


if __name__ == "__main__":
    main()
