#!/usr/bin/env python3
"""Tables (Markdown) and plots (SVG) of the capture benchmarks.

usage: capture.py RESULTS.json FOLDER

RESULTS.json holds what bench_capture, the peers and the start-up measurement wrote, one JSON object a line. Writes a table
of each kind of result (capture-NAME.md) and the plots (capture-NAME.svg) to FOLDER. Times are processor time; only those
of one run can be compared.
"""
import json
import os
import statistics
import sys

from chart import bars, histogram, lines

FLOOR = "floor"
HABITS = ["taken", "polled at 60 Hz", "polled at 120 Hz", "polled at 10 Hz", "not polled"]
PIXELS = ["BGRA", "BGR", "grey"]
POLLED, WAITING, WAITING_24 = "library, polled", "library, waiting", "library, waiting, 24 bits"
PEERS_32 = ["OpenCV, as 32 bits", "GStreamer v4l2src", "GStreamer pipewiresrc", "ffmpeg v4l2"]
PEERS_24 = ["OpenCV VideoCapture"]


def read(path):
    with open(path, encoding="utf-8") as file:
        return [json.loads(line) for line in file if line.strip()]


def of_kind(results, kind):
    return [result for result in results if result["kind"] == kind]


def table(head, rows):
    align = ["---"] + ["---:"] * (len(head) - 1)
    return "\n".join("| " + " | ".join(row) + " |" for row in [head, align] + rows) + "\n"


def round_ratio(entry, other):
    """The median of the rounds' own ratios: the neighbours of a round ran under the same conditions."""
    return statistics.median(a / b for a, b in zip(entry["rounds"], other["rounds"]))


def costs_by_camera(results):
    """Camera -> contender -> what it cost."""
    cameras = {}
    for entry in of_kind(results, "cost"):
        cameras.setdefault(entry["camera"], {})[entry["contender"]] = entry
    return cameras


def costs(results, folder):
    cameras = costs_by_camera(results)
    if not cameras:
        return ""
    rows, groups = [], []
    for camera, entries in cameras.items():
        floor, taken = entries[FLOOR], entries["taken"]
        ratios = {name: round_ratio(entries[name], floor) for name in HABITS + ["floor, not polled"]}
        rows.append([camera, f"{floor['microseconds']:.0f}"] + [f"{ratios[name]:.3f}" for name in HABITS] +
                    [f"{100 * round_ratio(entries[name], taken):.1f} %"
                     for name in ("polled at 10 Hz", "not polled", "floor, not polled")])
        groups.append((camera, [(name, ratios[name]) for name in HABITS]))
    with open(os.path.join(folder, "capture-costs.svg"), "w", encoding="utf-8") as file:
        file.write(bars("Processor time for each frame of a camera, floor = 1", groups, HABITS, unit="x"))
    head = (["camera at 30 Hz", "floor, us"] + [f"{name} / floor" for name in HABITS] +
            ["10 Hz / taken", "not polled / taken", "bare dequeue / taken"])
    counted = [[camera] + [f"{entries['taken'][field]:g}" for field in
                           ("page_faults", "large_allocations", "frames", "allocations_per_frame",
                            "sleeps_per_frame", "queue_calls_per_frame")]
               for camera, entries in cameras.items()]
    return (table(head, rows) + "\nCounted while every frame was taken:\n\n" +
            table(["camera", "page faults", "allocations of 64 KiB or more", "in frames", "small allocations / frame",
                   "sleeps / frame", "queue calls / frame"], counted))


def waiting(results, folder):
    cameras = costs_by_camera(results)
    if not cameras:
        return ""
    rows, groups = [], []
    for camera, entries in cameras.items():
        bars_of_camera = []
        for pixels in PIXELS:
            waits = entries[f"waiting, {pixels}"]
            one = round_ratio(waits, entries[f"one thread, {pixels}"])
            two = round_ratio(waits, entries[f"two threads, {pixels}"])
            polled = [f"{round_ratio(waits, entries[name]):.3f}" for name in HABITS[:3]] if pixels == "BGRA" else ["-"] * 3
            rows.append([f"{camera}, {pixels}", f"{waits['microseconds']:.0f}", f"{one:.3f}", f"{two:.3f}"] + polled +
                        [f"{waits['own_wake_ups_per_frame']:.2f}"])
            bars_of_camera.append((pixels, two))
        groups.append((camera, bars_of_camera))
    with open(os.path.join(folder, "capture-waiting.svg"), "w", encoding="utf-8") as file:
        file.write(bars("Processor time of a frame that is waited for, two-thread floor = 1", groups, PIXELS, unit="x"))
    return table(["camera at 30 Hz, pixels", "waiting, us", "/ one thread's floor", "/ two threads' floor",
                  "/ polled at 30 Hz", "/ at 60 Hz", "/ at 120 Hz", "client's wake-ups / frame"], rows)


def peers(results, folder):
    cameras = {}
    for entry in of_kind(results, "peer"):
        key = (entry.get("where", "timed camera"), entry["camera"])
        cameras.setdefault(key, {}).setdefault(entry["contender"], []).append(entry["microseconds"])
    if not cameras:
        return ""
    rows, groups = [], []
    for (where, camera), times in cameras.items():
        median = {name: statistics.median(values) for name, values in times.items()}

        def ratios(names, own):
            return {name: median[name] / median[own] for name in names if name in median}

        bits_32, bits_24 = ratios([POLLED] + PEERS_32, WAITING), ratios(PEERS_24, WAITING_24)
        rows.append([f"{where}, {camera}", f"{median[WAITING]:.0f}"] +
                    [f"{bits_32[name]:.2f}" if name in bits_32 else "-" for name in [POLLED] + PEERS_32] +
                    [f"{median[WAITING_24]:.0f}"] + [f"{bits_24[name]:.2f}" if name in bits_24 else "-" for name in PEERS_24])
        groups.append((f"{where}, {camera}", list(bits_32.items()) + list(bits_24.items())))
    with open(os.path.join(folder, "capture-peers.svg"), "w", encoding="utf-8") as file:
        file.write(bars("Processor time of a frame, the library waiting for as many bits = 1 (longer is slower)", groups,
                        [POLLED] + PEERS_32 + PEERS_24, unit="x"))
    return table(["camera", "32 bits: waiting, us"] + [f"{name} / it" for name in [POLLED] + PEERS_32] +
                 ["24 bits: waiting, us"] + [f"{name} / it" for name in PEERS_24], rows)


def ages(results, folder):
    """Of every way to read a camera, at the moment at which the program has the frame."""
    cameras = {}
    for entry in of_kind(results, "peer"):
        if entry.get("ages"):
            cameras.setdefault(entry["camera"], {}).setdefault(entry["contender"], []).extend(entry["ages"])
    if not cameras:
        return ""
    names = [WAITING, WAITING_24] + PEERS_24 + PEERS_32
    shown = "YUYV 1280x720" if "YUYV 1280x720" in cameras else next(iter(cameras))
    with open(os.path.join(folder, "capture-ages.svg"), "w", encoding="utf-8") as file:
        file.write(histogram(f"Age of a frame when the program has it, {shown} at 30 Hz",
                             [(name, cameras[shown][name]) for name in names if name in cameras[shown]],
                             0.1, "milliseconds since the driver had the frame"))
    return table(["median age, ms"] + names,
                 [[camera] + [f"{statistics.median(values[name]):.2f}" if name in values else "-" for name in names]
                  for camera, values in cameras.items()])


def python(results):
    """Beside the same in C++: waiting for 24 bits."""
    cameras = {}
    for entry in of_kind(results, "peer"):
        if "where" not in entry:
            cameras.setdefault(entry["camera"], {}).setdefault(entry["contender"], []).append(entry["microseconds"])
    rows = []
    for camera, entries in cameras.items():
        if not {"library, waiting, 24 bits", "Python, ostrel", "Python, cv2"} <= entries.keys():
            continue
        native, ours, opencv = (statistics.median(entries[name])
                                for name in ("library, waiting, 24 bits", "Python, ostrel", "Python, cv2"))
        rows.append([camera, f"{native:.0f}", f"{ours:.0f}", f"{ours - 1.05 * native:.0f}", f"{opencv:.0f}",
                     f"{opencv / ours:.2f}"])
    return table(["camera at 30 Hz", "C++, us", "Python, us", "Python - 1.05 C++, us", "cv2.VideoCapture, us",
                  "cv2.VideoCapture / Python"], rows) if rows else ""


def growth(results, folder):
    listings, captures = of_kind(results, "listing"), of_kind(results, "captures")
    if not listings or not captures:
        return ""
    each = {name: [(entry["cameras"], entry[f"{name}_microseconds"] / entry["cameras"]) for entry in listings]
            for name in ("list", "look_up")}
    with open(os.path.join(folder, "capture-growth.svg"), "w", encoding="utf-8") as file:
        file.write(lines("Listing cameras, and looking one up", [("list all", each["list"]), ("look up the last", each["look_up"])],
                         "microseconds for each camera", "cameras"))
    with open(os.path.join(folder, "capture-many.svg"), "w", encoding="utf-8") as file:
        file.write(lines("Capturing from several cameras at once",
                         [("YUYV 640x480, every frame taken", [(e["cameras"], e["microseconds"]) for e in captures])],
                         "microseconds for each frame", "cameras"))
    return (table(["cameras listed", "list, us", "look up, us", "list, us for each camera"],
                  [[f"{e['cameras']:g}", f"{e['list_microseconds']:.0f}", f"{e['look_up_microseconds']:.0f}",
                    f"{e['list_microseconds'] / e['cameras']:.1f}"] for e in listings]) + "\n" +
            table(["cameras captured", "us for each frame"],
                  [[f"{e['cameras']:g}", f"{e['microseconds']:.0f}"] for e in captures]))


def percentiles(values):
    ordered = sorted(values)
    return [f"{ordered[int(len(ordered) * share)]:.2f}" for share in (0.05, 0.5, 0.95)]


def latency(results, folder):
    ages, starts = of_kind(results, "age"), of_kind(results, "first_frame")
    if not ages or not starts:
        return ""
    with open(os.path.join(folder, "capture-age.svg"), "w", encoding="utf-8") as file:
        file.write(histogram(f"Age of a polled frame, {ages[0]['camera']} at 30 Hz",
                             [("when the poll returns", ages[0]["milliseconds"]),
                              ("of the newest there is when it is called", ages[0]["at_best"])],
                             2, "milliseconds since the driver had the frame"))
    with open(os.path.join(folder, "capture-start.svg"), "w", encoding="utf-8") as file:
        file.write(histogram(f"From startCapture to the first frame, {starts[0]['camera']}",
                             [("all of it", starts[0]["milliseconds"]),
                              ("without the camera's first 33 ms", starts[0]["without_exposure"])],
                             5, "milliseconds"))
    rows = [[f"age at the poll's return, {e['camera']}"] + percentiles(e["milliseconds"]) for e in ages]
    rows += [[f"newest there is at the poll's call, {e['camera']}"] + percentiles(e["at_best"]) for e in ages]
    rows += [[f"the poll itself, {e['camera']}"] + percentiles(e["poll"]) for e in ages]
    waits = of_kind(results, "age_waiting")
    rows += [[f"age when the wait returns, {e['camera']}"] + percentiles(e["milliseconds"]) for e in waits]
    rows += [[f"the bare conversion, {e['camera']}"] + percentiles(e["conversion"]) for e in waits]
    rows += [[f"startCapture to the first frame, {e['camera']}"] + percentiles(e["milliseconds"]) for e in starts]
    rows += [["the same without the camera's first 33 ms"] + percentiles(e["without_exposure"]) for e in starts]
    return table(["milliseconds", "5 %", "median", "95 %"], rows)


def memory(results):
    entries = of_kind(results, "memory")
    return table(["sixteen captures from", "resident, MB", "before they started, MB"],
                 [[entry["cameras"], f"{entry['megabytes']:.0f}", f"{entry['before_megabytes']:.0f}"]
                  for entry in entries]) if entries else ""


def startup(results):
    entries = of_kind(results, "startup")
    return table(["a program that does nothing but", "processor time, ms"],
                 [[entry["program"], f"{entry['milliseconds']:.2f}"] for entry in entries]) if entries else ""


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    results, folder = read(sys.argv[1]), sys.argv[2]
    tables = {"costs": costs(results, folder), "waiting": waiting(results, folder),
              "ages": ages(results, folder), "peers": peers(results, folder), "python": python(results),
              "growth": growth(results, folder),
              "latency": latency(results, folder), "memory": memory(results),
              "startup": startup(results)}
    for name, text in tables.items():
        if not text:
            continue
        print(text)
        with open(os.path.join(folder, f"capture-{name}.md"), "w", encoding="utf-8") as file:
            file.write(text)


if __name__ == "__main__":
    main()
