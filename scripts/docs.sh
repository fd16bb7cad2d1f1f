#!/usr/bin/env bash
# Sets the machine up and makes the reference of all public declarations, build/docs/html/index.html. One that is not
# documented is an error.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh docs
mkdir -p build/docs
doxygen Doxyfile
echo "docs: build/docs/html/index.html"
