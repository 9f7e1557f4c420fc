#!/usr/bin/env python3
"""check_links.py ROOT - every relative link and picture in the Markdown documents of the project leads somewhere, and
every heading that a link names is there. So does every path in backticks that begins with a folder of the project:
`platform/cameras/stream.h`, `cmake/`, `platform/cameras/messages.*`."""
import pathlib
import re
import subprocess
import sys


def anchors(path):
    headings = re.findall(r"^#+ +(.*)$", path.read_text(), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


root = pathlib.Path(sys.argv[1]).resolve()
skipped = {"build", ".git"}
documents = [p for p in root.rglob("*.md") if not skipped & set(p.relative_to(root).parts)]
folders = {p.name for p in root.iterdir() if p.is_dir()} - skipped
broken, links, paths = [], 0, 0
for document in documents:
    for target in re.findall(r"\]\(([^)\s]+)\)", document.read_text()):
        if re.match(r"[a-z]+:", target):
            continue
        links += 1
        name, _, anchor = target.partition("#")
        path = (document.parent / name).resolve() if name else document
        if not path.exists() or (anchor and path.suffix == ".md" and anchor not in anchors(path)):
            broken.append(f"{document.relative_to(root)}: {target}")
    for path in re.findall(r"`([\w.-]+/[\w./*-]*)`", document.read_text()):
        if path.split("/")[0] in folders:
            paths += 1
            if not any(root.glob(path.rstrip("/"))):
                broken.append(f"{document.relative_to(root)}: `{path}`")
print(f"{links} links and {paths} paths in {len(documents)} documents")
if links == 0 or paths == 0 or broken:
    sys.exit("broken links:\n" + "\n".join(broken))
