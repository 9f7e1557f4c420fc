# Runs inside the machine, in the host's own root: prepares the kernel's modules, runs the command, and leaves its
# output and status in the shared folder.
shared=/mnt/vm-shared
exec >"$shared/stdout" 2>"$shared/stderr" </dev/null

mount --bind "$(cat "$shared/modules-path")" /lib/modules
export VM_OUT=/mnt/vm-out

bash "$shared/command.sh"
echo $? >"$shared/status.new"
mv "$shared/status.new" "$shared/status"
