#!/usr/bin/env bash
# Runs one group of the krlayout tool tests (see tool_tests.py):
#   run-tool-tests.sh KRLAYOUT_EXE GROUP [BUILD_DIR]
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

# ezdxf comes from Debian's python3-ezdxf: take the first interpreter that can import it.
py=""
for candidate in python3 /usr/bin/python3; do
  if command -v "$candidate" >/dev/null 2>&1 && "$candidate" -c "import ezdxf" >/dev/null 2>&1; then
    py="$candidate"
    break
  fi
done
if [[ -z "$py" ]]; then
  echo "no python3 with ezdxf found (apt-get install python3-ezdxf)" >&2
  exit 1
fi
for tool in rsvg-convert pdfinfo pdftotext; do
  if ! command -v "$tool" >/dev/null 2>&1; then
    echo "$tool not found (apt-get install librsvg2-bin poppler-utils)" >&2
    exit 1
  fi
done
exec "$py" "$here/tool_tests.py" "$@"
