#!/usr/bin/env bash
# Builds the product and runs it here, on a software switch: installs what is missing, makes a certificate and the
# account "admin" if there are none, starts the daemon and prints how to log in. Everything it writes is in var/.
set -eu
cd "$(dirname "$0")"
mkdir -p build
. tools/dependencies.sh

usage() {
  cat <<'TEXT'
usage: ./run.sh [--address ADDRESS] [--http PORT] [--https PORT]

  --address ADDRESS  listen there; 127.0.0.1 unless given, 0.0.0.0 for all addresses
  --http PORT        plain HTTP, 8080 unless given
  --https PORT       HTTPS, 8446 unless given

Environment: KESTREL_VAR          folder for everything that is written, var/ unless given
             KESTREL_ADMIN_PASSWORD  password of "admin" at the first start, random unless given
             KESTREL_PROFILE, KESTREL_TRACE  see docs/operations.md
TEXT
}

address=127.0.0.1 http_port=8080 https_port=8446 var=${KESTREL_VAR:-var}
while [ $# -gt 0 ]; do
  case "$1" in
  --address | --http | --https) [ $# -ge 2 ] || die "$1 needs a value" ;;&
  --address) address=$2 && shift 2 ;;
  --http) http_port=$2 && shift 2 ;;
  --https) https_port=$2 && shift 2 ;;
  --help | -h) usage && exit 0 ;;
  *) usage >&2 && exit 1 ;;
  esac
done
local_address=$address
[ "$address" != 0.0.0.0 ] || local_address=127.0.0.1

port_answers() { (exec 3<>"/dev/tcp/$local_address/$1") 2>/dev/null; }

make_certificate() {
  [ ! -s "$var/ssl.pem" ] || return 0
  say "Making a certificate: $var/ssl.pem"
  (
    umask 077
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 3650 -subj /CN=localhost \
      -addext "subjectAltName=DNS:localhost,IP:127.0.0.1" -keyout "$var/key.new" -out "$var/cert.new" 2>"$var/openssl.log" &&
      cat "$var/key.new" "$var/cert.new" >"$var/ssl.new" && mv "$var/ssl.new" "$var/ssl.pem"
  ) || die "no certificate could be made; what openssl said is in $var/openssl.log"
  install -m 644 "$var/cert.new" "$var/ssl.crt"
  rm -f "$var/key.new" "$var/cert.new" "$var/openssl.log"
}

wait_until_serving() {
  local tries=0
  while ! port_answers "$http_port" || ! port_answers "$https_port"; do
    kill -0 "$daemon" 2>/dev/null || die "the daemon has ended; what it said stands above"
    tries=$((tries + 1))
    [ "$tries" -lt 150 ] || { kill "$daemon"; die "the daemon does not listen on ports $http_port and $https_port"; }
    sleep 0.1
  done
}

print_first_session() {
  local base="http://$local_address:$http_port" secure="https://$local_address:$https_port"
  local where="in the file $var/state/admin-password" password="\$(cat $var/state/admin-password)"
  if [ ! -e "$var/state/admin-password" ]; then # it was chosen, not made up
    where="as it was set (build/release/tools/kestrel-passwd -d $var/state admin sets another)" password="PASSWORD"
  fi
  cat <<TEXT

The switch is up. Ctrl-C ends it; what was configured is kept in $var/state.

  HTTP         $base
  HTTPS        $secure
  account      admin, password $where
  certificate  $var/ssl.crt
               $(openssl x509 -noout -fingerprint -sha256 -in "$var/ssl.pem")

A first session, to paste into another terminal in this folder:

  PATH=\$PWD/build/release/tools/kestrelctl:\$PATH KESTRELCTL_SERVER=$secure
  export KESTRELCTL_SERVER
  kestrelctl trust && kestrelctl login
  kestrelctl vlans list

The same without kestrelctl:

  KEY=\$(curl -s $base/login -d user=admin --data-urlencode "password=$password" | grep -o '[0-9a-f]\{32\}')
  curl -X POST "$base/vlans/10?sessionkey=\$KEY"
  curl -X PUT "$base/vlans/10/name?value=servers&sessionkey=\$KEY"
  curl "$base/vlans/10?sessionkey=\$KEY"
  curl --cacert $var/ssl.crt "$secure/vlans?format=json&sessionkey=\$KEY"

TEXT
}

# shellcheck disable=SC2086 # a list of packages
ensure_packages $packages_to_run
for port in "$http_port" "$https_port"; do
  ! port_answers "$port" || die "port $port is taken by another program; choose others with --http and --https"
done
build release
mkdir -p "$var"
make_certificate

export KESTREL_ROOT=$var KESTREL_STATE_DIR=$var/state KESTREL_SESSION_FILE=$var/restsessionstatus
export KESTREL_LISTENING_PORT="$address:$http_port,ssl://$address:$https_port:$var/ssl.pem"
build/release/engine/restful_api_engine &
daemon=$!
trap 'kill "$daemon" 2>/dev/null || true' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
wait_until_serving
print_first_session
wait "$daemon"
