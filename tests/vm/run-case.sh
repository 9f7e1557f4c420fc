#!/bin/bash
# run-case.sh CASE [NAME=VALUE...] - runs cases/CASE.sh in the virtual machine, with these variables. ctest calls it.
# Exit status: the case's; 77 when there can be no machine here, or the case cannot run in it, with the reason.
set -u
here=$(cd "$(dirname "$0")" && pwd)
. "$here/common.sh"

[ $# -ge 1 ] && [ -f "$here/cases/$1.sh" ] || vm_usage_error "name one of: $(cd "$here/cases" && ls | sed 's/\.sh$//' | paste -sd ' ')"
case=$1
shift
variables=(-e "VM_TESTS=$here")
for variable in "$@"; do
    variables+=(-e "$variable")
done

"$here/setup.sh" || exit
exec "$here/run-in-vm.sh" -k -t 150 "${variables[@]}" -- "bash $(printf %q "$here/cases/$case.sh")"
