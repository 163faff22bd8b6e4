#!/usr/bin/env bash
# Writes the manual page of a command from its section of the README, so
# that the two never tell different stories.
#   tools/readme2man.sh <command> [README]
set -euo pipefail
command=$1 readme=${2:-README.md}
case $command in
  tarn) summary="finaliser of compiled ZK modules" heading="Usage" ;;
  bram) summary="compiler of ZK source into compiled modules" heading="bram" ;;
  mosk) summary="reaction simulator of compiled ZK modules" heading="mosk" ;;
  *) echo "readme2man: no manual page for $command" >&2; exit 1 ;;
esac
echo ".TH $(echo "$command" | tr a-z A-Z) 1 \"\" \"ZK toolchain\" \"ZK toolchain\""
echo ".SH NAME"
echo "$command \\- $summary"
echo ".SH DESCRIPTION"
awk -v heading="## $heading" '
  function roff(s) {
    gsub(/\\/, "\\e", s)
    while (match(s, /`[^`]*`/)) s = substr(s, 1, RSTART - 1) "\\fB" substr(s, RSTART + 1, RLENGTH - 2) "\\fR" substr(s, RSTART + RLENGTH)
    if (s ~ /^[.\x27]/) s = "\\&" s
    return s
  }
  $0 == heading { inside = 1; next }
  inside && /^## / { exit }
  !inside { next }
  /^### / { if (code) { print ".fi"; code = 0 } print ".SS " substr($0, 5); next }
  /^    / { if (!code) { print ".PP"; print ".nf"; code = 1 } print roff(substr($0, 5)); next }
  /^$/ { if (code) { print ".fi"; code = 0 } print ".PP"; next }
  { if (code) { print ".fi"; code = 0 } print roff($0) }
  END { if (code) print ".fi" }
' "$readme"
