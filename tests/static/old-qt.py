#!/usr/bin/env python3
"""old-qt.py BUILD - the three subsystems keep to C++11 and to the Qt calls that the 4.8 series has as well.

No Qt 4 is at hand, so their sources are compiled as BUILD, a Qt 5 build, compiles them, in C++11, with everything
that Qt 5 calls deprecated taken away and with the switches that forbid what came later; and their text is searched for
the newer ways that no switch forbids.
"""
import json
import pathlib
import re
import shlex
import subprocess
import sys

SWITCHES = ["-std=c++11", "-fsyntax-only", "-Werror", "-DQT_DISABLE_DEPRECATED_BEFORE=0x050f00", "-DQT_NO_FOREACH",
            "-DQT_NO_KEYWORDS", "-DQT_NO_CAST_FROM_ASCII", "-DQT_NO_CAST_TO_ASCII", "-DQT_NO_NARROWING_CONVERSIONS_IN_CONNECT"]
NEWER = {
    r"\bQ_FOREACH\b|\bforeach\b": "a loop macro that new compilers break in the 4.8 series",
    r"\bQStringLiteral\b|\bQByteArrayLiteral\b": "Qt 5",
    r"\bconnect\s*\([^;]*&": "connecting by function pointers is Qt 5",
    r"\bQScopeGuard\b|\bqScopeGuard\b|\bQStringView\b|\bQ_NAMESPACE\b|\bqAsConst\b": "Qt 5",
    r"\bQMutexLocker<": "Qt 6",
    r"\bfromStdU16String\b|\bQRandomGenerator\b": "Qt 5",
    r"\bstd::make_unique\b|\bif constexpr\b|\bstd::optional\b|\bstd::string_view\b": "newer than C++11",
}

root = pathlib.Path(__file__).resolve().parents[2]
folders = [root / name for name in ("base", "processing", "devices", "capture")]
problems = []
compiled = 0
for entry in json.loads((pathlib.Path(sys.argv[1]) / "compile_commands.json").read_text()):
    source = pathlib.Path(entry["file"])
    if source.parent not in folders or source.suffix not in (".cpp", ".mm"):
        continue
    command = shlex.split(entry["command"])
    if pathlib.Path(command[0]).name == "ccache":
        del command[0]
    at = command.index("-o")
    del command[at:at + 2]
    # gcc takes the last of several -std
    result = subprocess.run(command + SWITCHES, cwd=entry["directory"], capture_output=True, text=True)
    compiled += 1
    if result.returncode != 0:
        problems.append(f"{source}:\n{result.stderr}")

for folder in folders + [root / "include/ostrel"]:
    for source in sorted(folder.glob("*")):
        if source.suffix not in (".cpp", ".mm", ".h") or source.name in ("virtual_camera.h", "statistics.h"):
            continue
        for number, line in enumerate(source.read_text().splitlines(), 1):
            for pattern, why in NEWER.items():
                if re.search(pattern, line.split("//")[0]):
                    problems.append(f"{source}:{number}: {why}: {line.strip()}")

print(f"{compiled} sources compiled")
if problems or compiled == 0:
    sys.exit("\n".join(problems) or "no source found")
