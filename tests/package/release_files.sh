#!/usr/bin/env bash
# Makes the release files, and looks whether the sums are right, and the winget manifest, whose installer has one of them.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"

"$here/package.sh"
cd "$here/out/package"
sha256sum --quiet -c SHA256SUMS
"$here/scripts/check_winget.py" .
