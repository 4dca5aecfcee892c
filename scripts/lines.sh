#!/usr/bin/env bash
# Lines of tests against lines of everything else: the source files git
# tracks (C and C++, JavaScript, shell, Python, CMake, HTML); golden data,
# pictures and lockfiles do not count.
#   scripts/lines.sh
set -euo pipefail
cd "$(dirname "$0")/.."
source='\.(cpp|h|c|js|mjs|sh|py|cmake|html)$|CMakeLists\.txt$'
tests=$(git ls-files tests | grep -E "$source" | xargs cat | wc -l)
code=$(git ls-files | grep -v '^tests/' | grep -E "$source" | xargs cat | wc -l)
echo "tests $tests lines, code $code lines: tests are $((100 * tests / code)) % of the code"
