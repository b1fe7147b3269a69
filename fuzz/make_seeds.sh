#!/usr/bin/env bash
# Makes the seeds and dictionaries of the fuzz targets anew: fuzz/make_seeds.sh
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build build/release --target make_seeds
build/release/bin/make_seeds fuzz
du -sh --apparent-size fuzz/seeds
