#!/usr/bin/env bash
# Every command line of the README and the pages, as it stands there: in bash and, on Windows, in cmd.exe,
# which do the same; and what the pages show of their output. See pages.py for what a page may leave open.
source "$(dirname "$0")/rom_support.sh"

shells=(bash)
[ $system = linux ] || shells+=(cmd)
python3 -B tests/zemctl/pages.py write $work "${zemctl/build/$PWD/build}" "${shells[@]}"
(cd $work/bash && bash ../run.bash) &
[ $system = linux ] || (cd $work/cmd && wine cmd /c ..\\run.cmd)
wait $!
python3 -B tests/zemctl/pages.py compare $work "$(path 0)" "$(device_path 0)" "${shells[@]}"
