#!/bin/bash
# make-wheel.sh PYTHON FOLDER - packs the Python package as a wheel for every machine, into FOLDER, with what Debian's
# python3-setuptools and python3-wheel bring: nothing is downloaded, and the source folder stays as it is.
set -euo pipefail
python=$1 out=$2
source=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir -p "$out"
cp -r "$source/pyproject.toml" "$source/ostrel" "$work/"
find "$work" -name __pycache__ -prune -exec rm -r {} +
cd "$work"
"$python" -W ignore -c 'from setuptools import setup; setup()' -qq bdist_wheel --dist-dir "$out"
ls "$out"/ostrel-*-py3-none-any.whl
