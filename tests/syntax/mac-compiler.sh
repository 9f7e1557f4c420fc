#!/bin/bash
# Whether clang, set up as on a Mac, takes the Objective-C++ of the library's own subsystems: C++11, the macOS
# runtime, manual reference counting, Foundation as macOS declares it. Warnings count.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

clang=$(command -v clang++ || command -v clang++-14 || true)
[ -n "$clang" ] || { echo "clang++ is not installed (Debian: package clang)" >&2; exit 1; }

switches=(-fsyntax-only -x objective-c++ -std=c++11 -fobjc-runtime=macosx-10.9 -fno-objc-arc -fexceptions
    -fobjc-exceptions -Wall -Wextra -Wshadow -Werror -Itests/syntax/mac -Iinclude -I. -Iplatform/CoreVideo/include -Iplatform/QTKit/include)

shopt -s nullglob
sources=(capture/*.mm devices/*.mm)
[ ${#sources[@]} -ge 3 ] || { echo "the Objective-C++ sources are not where this test looks" >&2; exit 1; }
for source in "${sources[@]}"; do
    "$clang" "${switches[@]}" "$source"
    echo "accepted: $source"
done

# The check itself: something that only GNUstep knows has to be refused.
if "$clang" "${switches[@]}" - <<'PROBE' 2>/dev/null
#import <Foundation/Foundation.h>
void probe() { GSPrintf(0, @"text"); }
PROBE
then
    echo "a call that only GNUstep knows was accepted" >&2
    exit 1
fi
