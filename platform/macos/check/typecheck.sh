#!/bin/bash
# Type-checks the macOS sources on another system: clang reads them against GNUstep's headers and
# the declarations in shim/. Nothing is linked or run. Quiet when all is well.
#   typecheck.sh            every .mm under platform/macos and Marbelot
#   typecheck.sh FILE...    these files
# CLANGXX names the compiler (at least version 19, default clang++-19), JOBS how many run at once.
set -u
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../../.." && pwd)

flags=(
  -std=c++20 -fblocks -fobjc-arc -fexceptions
  # The runtime whose code generation knows ARC and typed ivars; only the checks matter here.
  -fobjc-runtime=gnustep-2.0 -fobjc-exceptions -fconstant-string-class=NSConstantString
  -DGNUSTEP -DGNUSTEP_BASE_LIBRARY=1 -DGNU_GUI_LIBRARY=1 -D_NATIVE_OBJC_EXCEPTIONS
  -isystem "$here/shim" -isystem "$here/old_runtime" -isystem /usr/include/GNUstep -I.
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror
  # GNUstep requires some methods of its protocols that are optional on macOS.
  -Wno-protocol
  -Wundeclared-selector
)
files=()
for file in "$@"; do files+=("$(realpath "$file")"); done
cd "$root" || exit 1
if [ $# -eq 0 ]; then
  mapfile -t files < <(find platform/macos Marbelot -name '*.mm' -not -path '*/gnustep/*' 2>/dev/null | sort)
fi
[ ${#files[@]} -gt 0 ] || { echo "typecheck.sh: no sources" >&2; exit 1; }

# What every source reads, read once: most of the time goes into the standard library.
common=$(mktemp -d) || exit 1
trap 'rm -rf "$common"' EXIT
compiler=${CLANGXX:-clang++-19}
printf '%s\n' '#import <Foundation/Foundation.h>' '#include "platform/platform.h"' > "$common/common.h"
"$compiler" -x objective-c++-header "${flags[@]}" "$common/common.h" -o "$common/common.pch" || exit 1

printf '%s\0' "${files[@]}" |
  xargs -0 -n 1 -P "${JOBS:-2}" "$compiler" -fsyntax-only -x objective-c++ "${flags[@]}" \
    -include-pch "$common/common.pch"
