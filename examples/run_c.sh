#!/usr/bin/env bash
# Compiles the C that tarn wrote for an example with the user files of
# examples/user, and runs it on the example's trace: one line per reaction,
# the inputs as in the trace (each parameter of the reaction that is an
# input, in order), then the outputs.
#   examples/run_c.sh <folder of the generated C> <module>
set -euo pipefail
out=$1 module=$2
here=$(cd "$(dirname "$0")" && pwd)
header="$out/$module.h"
params=$(tr -d '\n' < "$header" | sed -n "s/.*extern void ${module}_automaton(\([^)]*\));.*/\1/p")

decls="" reads="" args="" prints="" n=0
IFS=',' read -ra list <<< "$params"
for p in "${list[@]}"; do
  p=$(echo "$p" | sed 's/^ *//; s/ *$//')
  [ -z "$p" ] && continue
  name=${p##*[ *]}
  if [[ $p == *'*'* ]]; then
    decls+="  int $name = 0;\n"
    args+="${args:+, }&$name"
    prints+="    printf(\" $name=%d\", (int) $name);\n"
  else
    decls+="  int $name = 0;\n"
    args+="${args:+, }$name"
    reads+="    if (sscanf(at, \"%d%n\", &$name, &used) == 1) at += used; else $name = 0;\n"
  fi
  n=$((n + 1))
done

cat > "$out/${module}_main.c" <<DRIVER
#include <stdio.h>
#include "$module.h"
int main(void)
{
  char line[256];
  int reaction = 0;
$(printf "%b" "$decls")
  ${module}_reset_automaton();
  while (fgets(line, sizeof line, stdin) != NULL) {
    const char* at = line;
    int used = 0;
$(printf "%b" "$reads")
    (void) at; (void) used;
    ${module}_automaton($args);
    printf("reaction %d:", ++reaction);
$(printf "%b" "$prints")
    printf("\n");
  }
  return 0;
}
DRIVER

user=""
[ -f "$here/user/${module}_user.c" ] && user="$here/user/${module}_user.c"
# Output under-wire lines read the output's pointer as an int: the
# generated text is so, and gcc only warns of it.
gcc -Wno-int-conversion -I "$here/user" -I "$out" -o "$out/${module}_run" \
    "$out/${module}_main.c" "$out/$module.c" $user
"$out/${module}_run" < "$here/$module.trace"
