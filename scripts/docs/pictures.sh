#!/usr/bin/env bash
# Draws the pages' pictures anew: docs/images, or the folder of the argument.
set -euo pipefail
cd "$(dirname "$0")/../.."
folder=${1:-docs/images}
mkdir -p "$folder"
python3 -B scripts/docs/session_picture.py "$folder/session.svg"
python3 -B scripts/docs/wire.py "$folder/wire"
