#!/bin/bash
# The macOS sources pass the type check, and the check is worth passing: it rejects copies of real
# sources with one fault each, for the right reason.
set -u
root=$(cd "$(dirname "$0")/../../.." && pwd)
check=$root/platform/macos/check/typecheck.sh
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT

# mutate NAME SOURCE SED-EXPRESSION EXPECTED-MESSAGE
mutate() {
  sed -E "$3" "$root/platform/macos/$2" > "$work/$1.mm"
  if cmp -s "$work/$1.mm" "$root/platform/macos/$2"; then
    echo "$1: the mutation no longer fits $2" >&2
    exit 1
  fi
  echo "$4" > "$work/$1.expected"
}

mutate misspelt_selector workspace.mm \
  's/activateFileViewerSelectingURLs/activateFileViewerSelectingUrls/' \
  "no visible @interface for 'NSWorkspace' declares the selector"
mutate wrong_argument pasteboard.mm \
  's/setData:nsData\(text\)/setData:nsString(*text)/' \
  "cannot initialize a parameter of type 'NSData *' with an rvalue of type 'NSString *'"
mutate missing_method pasteboard.mm \
  '/bool announcesChanges/d' \
  'abstract'
mutate unknown_action windows.mm \
  's/@selector\(pressed:\)/@selector(clicked:)/' \
  'undeclared selector'

# The sources and the mutants at the same time; one job each, so that messages stay whole.
JOBS=1 "$check" > "$work/sources.log" 2>&1 &
sources=$!
JOBS=1 "$check" "$work"/*.mm > "$work/mutants.log" 2>&1
failed=0
for expected in "$work"/*.expected; do
  name=$(basename "$expected" .expected)
  if ! grep -F "/$name.mm:" "$work/mutants.log" | grep -qF "$(cat "$expected")"; then
    echo "$name: not rejected for its fault" >&2
    failed=1
  fi
done
if [ "$failed" -ne 0 ]; then cat "$work/mutants.log" >&2; fi
if ! wait "$sources" || [ -s "$work/sources.log" ]; then
  echo "the sources are rejected, or the check is not quiet:" >&2
  cat "$work/sources.log" >&2
  failed=1
fi
exit "$failed"
