#!/usr/bin/env bash
# Everything that is checked without running the program: formatting, includes, string tables, the linter.
# With file names, the linter looks at these alone.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
clang-format-14 --dry-run --Werror "${sources[@]}"
echo "formatting: ${#sources[@]} files"
python3 tools/check_includes.py
python3 tools/check_strings.py

cmake --preset dev >/dev/null
cmake --build --preset dev --target platform_qt_autogen -- --quiet
if [ $# -eq 0 ]; then
    mapfile -t checked < <(git ls-files 'app/*.cpp' 'ui/*.cpp' 'check/*.cpp' 'download/*.cpp' 'install/*.cpp' \
        'telemetry/*.cpp' 'foundation/*.cpp' 'platform/*.cpp')
else
    checked=("$@")
fi
printf '%s\0' "${checked[@]}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy-14 -p build/dev --quiet 2>/dev/null
echo "linter: ${#checked[@]} files"
