#!/usr/bin/env bash
# Prints which share of the lines the tests reach, for each folder. Options go to the test runner.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. tools/packages.sh

# shellcheck disable=SC2086 # lists of words
install_packages $build_packages $run_packages $test_packages $package_packages
mkdir -p build
cmake --preset coverage >build/configure.log 2>&1 || { cat build/configure.log >&2; exit 1; }
cmake --build --preset coverage -- --quiet
find build/coverage -name '*.gcda' -delete
ctest --preset coverage "$@" >build/coverage.log 2>&1 || { cat build/coverage.log >&2; echo "coverage: of a run with failures" >&2; }
tail -n 1 build/coverage.log
exec python3 tools/coverage.py build/coverage
