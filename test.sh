#!/usr/bin/env bash
# Builds everything and runs all tests: once as GCC builds the product, once built by Clang with AddressSanitizer and
# UndefinedBehaviorSanitizer, there with the fuzz targets as well. Installs what is missing.
#
#   ./test.sh            all of it
#   ./test.sh test       only the first half; ./test.sh sanitize only the second
set -eu
cd "$(dirname "$0")"
mkdir -p build
. tools/dependencies.sh

case "${1:-all}" in
all) presets="test sanitize" ;;
test | sanitize) presets=$1 ;;
*) die "usage: ./test.sh [test|sanitize]" ;;
esac

# shellcheck disable=SC2086 # a list of packages
ensure_packages $packages_to_test
# shellcheck disable=SC2086 # the same
unpack_servers $servers_to_test
for preset in $presets; do
  build "$preset"
  say "Testing ($preset)"
  ctest --test-dir "build/$preset" --output-on-failure --no-tests=error -j "$(nproc)" ||
    die "tests failed in build/$preset"
done
