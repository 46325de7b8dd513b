#!/usr/bin/env bash
# The tables of docs/performance.md and their rows are those that scripts/benchmark.sh prints, in its
# order and words. Nothing is measured.
set -euo pipefail
cd "$(dirname "$0")/../.."

shown() {
  sed -n '/^## Figures/,/^## What does not/p' docs/performance.md |
    sed -n 's/^### .*/&/p; s/^| \([^| ][^|]*\) |.*/\1/p'
}
printed=$(scripts/benchmark.sh --list build/native)
diff <(echo "$printed") <(shown)
echo "$(grep -vc '^###' <<<"$printed") figures have their place on the page"
