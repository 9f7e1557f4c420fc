#!/usr/bin/env python3
"""Processor time of programs that end at once, medians of runs in turn, as lines of JSON.

usage: startup.py ROUNDS NAME=PROGRAM...
"""
import json
import os
import statistics
import subprocess
import sys


def milliseconds(program):
    process = subprocess.Popen([program], stdin=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{program} failed")
    return (usage.ru_utime + usage.ru_stime) * 1000


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    programs = [argument.split("=", 1) for argument in sys.argv[2:]]
    times = {name: [] for name, _ in programs}
    for _ in range(int(sys.argv[1])):
        for name, program in programs:
            times[name].append(milliseconds(program))
    for name, values in times.items():
        print(json.dumps({"kind": "startup", "program": name, "milliseconds": statistics.median(values)}))


if __name__ == "__main__":
    main()
