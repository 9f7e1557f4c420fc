#!/bin/bash
# cppcheck over our own C++.
set -euo pipefail
command -v cppcheck >/dev/null || { echo "skipped: cppcheck is not installed"; exit 77; }
cppcheck -q --enable=warning,performance,portability --inline-suppr --error-exitcode=1 --std=c++17 \
    --library=qt --library=posix --library=googletest -D__linux__ -D__GNUC__=12 -I include -I . \
    processing devices capture platform apps examples
