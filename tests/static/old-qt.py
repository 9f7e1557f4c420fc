#!/usr/bin/env python3
"""old-qt.py BUILD - what meets old programs keeps to the Qt calls that the 4.8 series has as well.

The ground floor and the three subsystems do, in C++11; so do the public headers, the framework's use of Qt behind
them, and the programs in the documentation. No Qt 4 is at hand, so the sources are compiled as BUILD, a Qt 5 build,
compiles them, with everything that Qt 5 calls deprecated taken away and with the switches that forbid what came later;
and the text is searched for the newer ways that no switch forbids.
"""
import json
import pathlib
import re
import shlex
import subprocess
import sys

SWITCHES = ["-fsyntax-only", "-Werror", "-DQT_DISABLE_DEPRECATED_BEFORE=0x050f00", "-DQT_NO_FOREACH",
            "-DQT_NO_KEYWORDS", "-DQT_NO_CAST_FROM_ASCII", "-DQT_NO_CAST_TO_ASCII", "-DQT_NO_NARROWING_CONVERSIONS_IN_CONNECT"]
NEWER_QT = {
    r"\bQ_FOREACH\b|\bforeach\b": "a loop macro that new compilers break in the 4.8 series",
    r"\bQStringLiteral\b|\bQByteArrayLiteral\b": "Qt 5",
    r"(?<!\W::)\bconnect\s*\([^;]*&": "connecting by function pointers is Qt 5",  # ::connect is the system's
    r"\bQScopeGuard\b|\bqScopeGuard\b|\bQStringView\b|\bQ_NAMESPACE\b|\bqAsConst\b": "Qt 5",
    r"\bQMutexLocker<": "Qt 6",
    r"\bfromStdU16String\b|\bQRandomGenerator\b": "Qt 5",
    r"\btoStdString\b|\bfromStdString\b": "QByteArray's came with Qt 5, and QString's are Latin-1 in the 4.8 series",
    r"\b(first|last)Key\s*\(": "Qt 5.2",
    r"\bQString::v?asprintf\b": "Qt 5.5",
    r"\bQThread::[mu]?sleep\b": "not public before Qt 5",
}
NEWER_CXX = {
    r"\bstd::make_unique\b|\bif constexpr\b|\bstd::optional\b|\bstd::string_view\b": "newer than C++11",
}

root = pathlib.Path(__file__).resolve().parents[2]
subsystems = [root / name for name in ("base", "processing", "devices", "capture")]
platform = root / "platform"
problems = []
compiled = 0
headers_compiled = False


def compile_as_old(command, old_cxx, directory, source):
    global compiled
    # gcc takes the last of several -std
    result = subprocess.run(command + SWITCHES + ["-std=c++11"] * old_cxx, cwd=directory, capture_output=True, text=True)
    compiled += 1
    if result.returncode != 0:
        problems.append(f"{source}:\n{result.stderr}")


def uses_qt(source):
    return re.search(r'#\s*(include|import) <(Qt|ostrel/)', source.read_text()) is not None


for entry in json.loads((pathlib.Path(sys.argv[1]) / "compile_commands.json").read_text()):
    source = pathlib.Path(entry["file"])
    old_cxx = source.parent in subsystems
    if source.suffix not in (".cpp", ".mm") or not (old_cxx or platform in source.parents and uses_qt(source)):
        continue
    command = shlex.split(entry["command"])
    if pathlib.Path(command[0]).name == "ccache":
        del command[0]
    at = command.index("-o")
    del command[at:at + 2]
    compile_as_old(command, old_cxx, entry["directory"], source)
    if source.parent == root / "processing" and not headers_compiled:
        headers_compiled = True
        for header in sorted((root / "include/ostrel").glob("*.h")):
            if header.name != "capture_session.h":  # Objective-C++; a source of capture/ brings it
                arguments = [argument for argument in command if argument != entry["file"]]
                compile_as_old(arguments + ["-x", "c++", str(header)], True,
                               entry["directory"], header)


def search(paths, newer):
    for source in sorted(paths):
        if source.suffix not in (".cpp", ".mm", ".h", ".md"):
            continue
        for number, line in enumerate(source.read_text().splitlines(), 1):
            for pattern, why in newer.items():
                if re.search(pattern, line.split("//")[0]):
                    problems.append(f"{source}:{number}: {why}: {line.strip()}")


for folder in subsystems + [root / "include/ostrel"]:
    search(folder.glob("*"), {**NEWER_QT, **NEWER_CXX})
search(platform.rglob("*"), NEWER_QT)
search([root / "README.md", root / "docs/guide.md", *(root / "examples").glob("*")], NEWER_QT)

print(f"{compiled} sources compiled")
if problems or compiled == 0:
    sys.exit("\n".join(problems) or "no source found")
