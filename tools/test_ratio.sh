#!/usr/bin/env bash
# Test lines against product lines: test_ratio.sh [tree]
# Tests: every .cc .h .sh .cmake .py and CMakeLists.txt under tests/, the
# golden texts aside (they are outputs of the generators, not test code).
# Product: every .cc .h .l .y under the subsystem folders, fuzz folders aside.
set -e
root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
cd "$root"
count() { if [ $# -eq 0 ]; then echo 0; else cat "$@" | wc -l; fi; }
mapfile -t tests < <(find tests -type d -name golden -prune -o -type f \( -name '*.cc' -o -name '*.h' -o -name '*.sh' \
  -o -name '*.cmake' -o -name '*.py' -o -name CMakeLists.txt \) -print | sort)
mapfile -t product < <(find support context bdd wood signals data model zkc targets sim \
  source driver tools -type d -name '*fuzz*' -prune -o -type f \
  \( -name '*.cc' -o -name '*.h' -o -name '*.l' -o -name '*.y' \) -print | sort)
t=$(count "${tests[@]}")
p=$(count "${product[@]}")
echo "test lines:    $t"
echo "product lines: $p"
awk -v t="$t" -v p="$p" 'BEGIN { printf "ratio:         %.1f%%\n", p ? 100 * t / p : 0 }'
