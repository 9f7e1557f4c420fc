#!/usr/bin/env python3
"""run_blocks.py DOCUMENT TREE - runs the commands of a Markdown document, in the order in which a reader meets them.

A fenced block `LANGUAGE FILE` is written to that file; a `sh` block is run by bash, from an empty folder in which
scripts/ is the project's own and the tree that was installed into TREE is found. A block is left out only when the
line above it says why: <!-- not run: REASON -->, or <!-- only with FILE --> where there is no such file.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^(?:<!-- (?:not run: (?P<reason>.*?)|only with (?P<file>\S+)) -->\n)?```(?P<info>[^\n]*)\n(?P<text>.*?)^```$", re.M | re.S)


def environment(tree):
    env = dict(os.environ)
    libdir = next(tree.glob("lib/**/libostrelvideounix.so")).parent
    # The system's own Python first: that is the one with Debian's packages.
    env["PATH"] = f"{tree}/bin:/usr/bin:" + env["PATH"]
    env["CMAKE_PREFIX_PATH"] = str(tree)
    env["PKG_CONFIG_PATH"] = f"{libdir}/pkgconfig"
    env["LD_LIBRARY_PATH"] = str(libdir)
    env["PYTHONPATH"] = f"{tree}/lib/python3/dist-packages"
    return env


def main():
    document, tree = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    env = environment(tree)
    root = pathlib.Path(__file__).resolve().parents[2]
    ran = 0
    with tempfile.TemporaryDirectory() as folder:
        (pathlib.Path(folder) / "scripts").symlink_to(root / "scripts")
        for block in BLOCK.finditer(document.read_text()):
            language, _, name = block["info"].partition(" ")
            place = f"{document.name}:{document.read_text()[:block.start()].count(chr(10)) + 1}"
            if block["reason"]:
                print(f"{place}: not run: {block['reason']}", flush=True)
            elif block["file"] and not pathlib.Path(block["file"]).exists():
                print(f"{place}: not run: no {block['file']}", flush=True)
            elif name:
                print(f"{place}: writes {name}", flush=True)
                (pathlib.Path(folder) / name).write_text(block["text"])
            elif language == "sh":
                print(f"{place}: runs\n{block['text']}", end="", flush=True)
                done = subprocess.run(["bash", "-euo", "pipefail", "-c", block["text"]], cwd=folder, env=env,
                                      stdin=subprocess.DEVNULL, timeout=300)
                if done.returncode != 0:
                    sys.exit(f"{place}: exit status {done.returncode}")
                ran += 1
            else:
                sys.exit(f"{place}: a block that is neither run nor a file: ```{block['info']}")
    if ran == 0:
        sys.exit(f"{document.name}: no command in it")
    print(f"{document.name}: {ran} blocks ran")


main()
