#!/usr/bin/env bash
# Makes the Wine folder. If test.sh runs this, it also keeps Wine's server alive until test.sh ends. For
# a server that ends with each program has two costs: a program that starts in that moment fails
# without a word, and every other one waits a second for a new server.
#
# What holds it is Wine's desktop. It is started here, and the services with it, since each of them would
# else be started by the first test that needs it and then hold that test's output open.
set -euo pipefail
scripts/wine_folder.sh
[ -p "${ZEM_TESTS_RUN:-}" ] || exit 0
exec </dev/null >/dev/null 2>&1
setsid wine explorer /desktop &
setsid bash -c 'cat "$ZEM_TESTS_RUN"; wineserver --kill' &
wine cmd /c 'exit 0'
