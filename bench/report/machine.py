#!/usr/bin/env python3
"""What the benchmarks run on, and how busy it is, as a line of Markdown on standard output."""
import datetime
import os
import subprocess


def processor():
    for line in subprocess.run(["lscpu"], capture_output=True, text=True, check=True).stdout.splitlines():
        if line.startswith("Model name:"):
            return line.split(":", 1)[1].strip()
    return "unknown processor"


if __name__ == "__main__":
    print(f"Run on {datetime.date.today().isoformat()}: {processor()}, {os.cpu_count()} processors, "
          f"Linux {os.uname().release.split('-')[0]}, load before it {os.getloadavg()[0]:.1f}.")
