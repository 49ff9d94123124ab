#!/usr/bin/env bash
# Makes the Debian packages of a build of the preset package, in its folder, and has them checked by lintian:
# package.sh BUILD_FOLDER
set -euo pipefail
build=$(readlink -f "$1")
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

# The time in the packages is that of the last commit, so that the same sources make the same packages.
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
rm -f "$build"/*.deb
cpack --config "$build/CPackConfig.cmake" -B "$build"
rm -rf "$build/_CPack_Packages"

# The first upload to Debian would close the report that asks for the packages. Nothing is uploaded there.
lintian --allow-root --fail-on error --suppress-tags initial-upload-closes-no-bugs "$build"/*.deb
