# Sourced by run.sh and test.sh: makes sure that the Debian packages they need are there.

packages_to_run="g++ cmake ninja-build pkg-config libssl-dev libjson-c-dev libcrypt-dev libcurl4-openssl-dev libarchive-dev
  ca-certificates openssl curl"
packages_to_test="$packages_to_run libgtest-dev clang-14 libclang-rt-14-dev python3 binutils procps
  apache2-bin openssh-client python3-asyncssh python3-pyftpdlib" # servers that are programs only: none of them is a service

say() { printf '%s\n' "$*"; }

die() {
  printf '%s: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# missing_packages PACKAGE...: prints those that are not installed.
missing_packages() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || printf '%s ' "$package"
  done
}

# ensure_packages PACKAGE...: installs those that are missing, as root or through sudo.
ensure_packages() {
  command -v dpkg-query >/dev/null || die "this script knows Debian 12 only; elsewhere install: $*"
  local missing as_root=""
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || die "these packages are missing, install them as root: $missing"
    as_root=sudo
  fi
  say "Installing: $missing"
  # shellcheck disable=SC2086 # the lists are meant to be split
  { $as_root apt-get update -q && $as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -q -y --no-install-recommends $missing; } >build/packages.log 2>&1 ||
    die "the packages could not be installed; what apt-get said is in build/packages.log"
}

# build PRESET: configures and builds it, quietly unless it fails.
build() {
  say "Building ($1), the log is in build/$1.log"
  { cmake --preset "$1" && cmake --build --preset "$1"; } >"build/$1.log" 2>&1 ||
    { tail -n 60 "build/$1.log" >&2; die "the build failed"; }
}
