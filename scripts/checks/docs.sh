#!/usr/bin/env bash
# The site can be made, each export is documented, each link leads somewhere, and the pages' pictures are
# those that their descriptions give.
set -euo pipefail
scripts/docs.sh
scripts/docs/pictures.sh build/docs-pictures
diff -r build/docs-pictures docs/images || { echo "scripts/docs/pictures.sh draws other pictures"; exit 1; }
