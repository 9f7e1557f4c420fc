#!/usr/bin/env python3
"""Puts the results of a run of scripts/bench into docs/performance.md, and its plots into docs/pictures.

usage: document.py RESULTS_FOLDER

A part of the document between "<!-- results NAME -->" and "<!-- end -->" is replaced by NAME.md of the folder, where there is
one: scripts/bench measures all of them, bench/capture/run.sh some.
"""
import os
import re
import shutil
import sys

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    folder = sys.argv[1]
    document = os.path.join(ROOT, "docs", "performance.md")

    def results(match):
        name = match.group(1)
        if not os.path.exists(os.path.join(folder, f"{name}.md")):
            return match.group(0)
        with open(os.path.join(folder, f"{name}.md"), encoding="utf-8") as file:
            text = file.read()
        return f"<!-- results {name} -->\n{text}<!-- end -->"

    with open(document, encoding="utf-8") as file:
        text = file.read()
    text = re.sub(r"<!-- results (\S+) -->\n.*?<!-- end -->", results, text, flags=re.DOTALL)
    for plot in re.findall(r"\(pictures/([\w-]+\.svg)\)", text):
        if os.path.exists(os.path.join(folder, plot)):
            shutil.copy(os.path.join(folder, plot), os.path.join(ROOT, "docs", "pictures", plot))
    with open(document, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
