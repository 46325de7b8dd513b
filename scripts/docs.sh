#!/usr/bin/env bash
# Makes the documentation's site, build/docs/index.html: the reference of the header and the written pages.
# Fails for an export that is not documented and for a link that leads nowhere. Needs no network to be read.
source "$(dirname "$0")/setup.sh"

step "packages" install_missing "${docs_packages[@]}"
rm -rf build/docs build/docs-xml
step "read the headers" doxygen scripts/docs/Doxyfile
/usr/bin/python3 -B scripts/docs/site.py build/docs
echo "build/docs/index.html"
