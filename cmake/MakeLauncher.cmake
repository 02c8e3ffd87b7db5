# Puts a script that runs PROGRAM under EMULATOR in its place, and the program beside it with ".target"
# behind its name. A copy of the script fetches the program into its own folder, so that the program
# finds itself where it was started.
set(target "${PROGRAM}.target")
file(RENAME "${PROGRAM}" "${target}")
list(JOIN EMULATOR " " emulator)
file(WRITE "${PROGRAM}" "#!/bin/sh
program=$0.target
[ -e \"$program\" ] || ln '${target}' \"$program\" 2>/dev/null || cp '${target}' \"$program\"
exec ${emulator} -0 \"$0\" \"$program\" \"$@\"
")
file(CHMOD "${PROGRAM}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
