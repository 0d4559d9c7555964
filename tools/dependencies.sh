# Sourced by run.sh and test.sh: makes sure that the Debian packages they need are there.

packages_to_run="g++ cmake ninja-build pkg-config libssl-dev libjson-c-dev libcrypt-dev libcurl4-openssl-dev libarchive-dev
  ca-certificates openssl curl"
# Beyond what builds it: what the servers need that transfers are tested with (libraries, and the other half of scp), a
# browser, what validates OpenAPI documents, clients of WebSocket and WebDAV, and what reads manual pages and completes.
packages_to_test="$packages_to_run libgtest-dev clang-14 libclang-rt-14-dev python3 binutils procps openssh-client
  libnss-wrapper libaudit1 libcap2 libcom-err2 libgssapi-krb5-2 libkrb5-3 libpam0g libpcre2-8-0 libselinux1 libsystemd0
  libwrap0
  chromium chromium-driver openapi-specification python3-jsonschema nodejs node-ws cadaver litmus mandoc zsh"
servers_to_test="atftpd nginx openssh-server openssh-sftp-server vsftpd"

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

# as_root COMMAND...: runs it as root, through sudo if need be.
as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# ensure_packages PACKAGE...: installs those that are missing, as root or through sudo.
ensure_packages() {
  command -v dpkg-query >/dev/null || die "this script knows Debian 12 only; elsewhere install: $*"
  local missing
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0
  [ "$(id -u)" = 0 ] || command -v sudo >/dev/null ||
    die "these packages are missing, install them as root: $missing"
  say "Installing: $missing"
  # shellcheck disable=SC2086 # the lists are meant to be split
  { as_root apt-get update -q && as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -q -y --no-install-recommends $missing; } >build/packages.log 2>&1 ||
    die "the packages could not be installed; what apt-get said is in build/packages.log"
}

# unpack_servers PACKAGE...: puts them into build/servers. They are not installed, as then they would start as services.
unpack_servers() {
  local folder=build/servers package
  [ "$(cat $folder/packages 2>/dev/null)" != "$*" ] || return 0
  say "Unpacking, not installing: $*"
  rm -rf $folder
  mkdir -p $folder/archives
  # The lists of packages may be out of date, or not there.
  (cd $folder/archives && { apt-get download -q "$@" || { as_root apt-get update -q && apt-get download -q "$@"; }; }) \
    >build/servers.log 2>&1 || die "the packages could not be fetched; what apt-get said is in build/servers.log"
  for package in $folder/archives/*.deb; do
    dpkg-deb -x "$package" $folder || die "$package could not be unpacked"
  done
  printf '%s\n' "$*" >$folder/packages
}

# build PRESET: configures and builds it, quietly unless it fails.
build() {
  say "Building ($1), the log is in build/$1.log"
  { cmake --preset "$1" && cmake --build --preset "$1"; } >"build/$1.log" 2>&1 ||
    { tail -n 60 "build/$1.log" >&2; die "the build failed"; }
}
