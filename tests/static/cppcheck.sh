#!/bin/bash
# cppcheck over our own C++.
#   readdirCalled   readdir is safe as long as each thread reads a directory stream of its own; its replacement is
#                   deprecated
#   getgrgidCalled  asked by the command line's only thread
set -euo pipefail
command -v cppcheck >/dev/null || { echo "skipped: cppcheck is not installed"; exit 77; }
cppcheck -q --enable=warning,performance,portability --inline-suppr --error-exitcode=1 --suppress=readdirCalled --suppress=getgrgidCalled --std=c++17 \
    --library=qt --library=posix --library=googletest -D__linux__ -D__GNUC__=12 -I include -I . \
    base processing devices capture platform bindings apps examples
