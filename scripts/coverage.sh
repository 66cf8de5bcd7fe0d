#!/bin/bash
# Builds everything with line coverage, runs all tests, and tells how much of the library's lines they
# reach. The list of files goes to build/coverage/coverage.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install_packages.sh gcovr
find build/coverage -name '*.gcda' -delete 2>/dev/null || true
scripts/test.sh coverage
gcovr --root . --filter 'src/' --filter 'include/' --filter 'common/' \
  --exclude-throw-branches --txt build/coverage/coverage.txt --print-summary build/coverage
