#!/bin/bash
# run-case.sh CASE [NAME=VALUE...] - runs cases/CASE.sh in the virtual machine, with these variables. ctest calls it.
# What the case leaves in $VM_OUT is then looked at by cases/CASE.after.sh, where there is one, outside: programs such as
# decoders need many seconds in an emulated machine.
#
# Exit status: the case's; 77 when there can be no machine here, or the case cannot run in it, with the reason.
set -u
here=$(cd "$(dirname "$0")" && pwd)
. "$here/common.sh"

[ $# -ge 1 ] && [ -f "$here/cases/$1.sh" ] ||
    vm_usage_error "name a case: $(cd "$here/cases" && ls | sed '/after/d; s/\.sh$//' | paste -sd ' ')"
case=$1
shift
variables=(-e "VM_TESTS=$here" -e "VM_PICTURES=$VM_CACHE/pictures")
for variable in "$@"; do
    variables+=(-e "$variable")
done

"$here/setup.sh" || exit
VM_OUT=$(mktemp -d "${TMPDIR:-/tmp}/vm-out.XXXXXX")
trap 'rm -rf "$VM_OUT"' EXIT
"$here/run-in-vm.sh" -t 600 -o "$VM_OUT" "${variables[@]}" -- "bash $(printf %q "$here/cases/$case.sh")"
status=$?
if [ $status = 0 ] && [ -f "$here/cases/$case.after.sh" ]; then
    VM_TESTS=$here VM_OUT=$VM_OUT bash "$here/cases/$case.after.sh"
    status=$?
fi
exit $status
