# What the scripts share: installing packages on Debian, running commands quietly. Sourced, not run.
# All its messages go to standard error.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
logs=$root/build/logs

say() { printf '%s\n' "$*" >&2; }

# quietly NAME COMMAND...: runs the command without input and sends its output to
# build/logs/NAME.log; shows the end of that log when the command fails.
quietly() {
  local log=$logs/$1.log
  shift
  mkdir -p "$logs"
  "$@" < /dev/null > "$log" 2>&1 && return 0
  local status=$?
  say "failed: $*"
  tail -n 60 "$log" >&2
  say "(the whole output: $log)"
  return $status
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

is_installed() {
  [ "$(dpkg-query -W -f '${Status}' "$1" 2> /dev/null)" = "install ok installed" ]
}

# install_missing PACKAGE...: installs those Debian packages that are missing. If none is, it
# changes nothing and needs neither rights nor a network. On other systems it only says what is
# needed, which may well be installed already.
install_missing() {
  if ! command -v apt-get > /dev/null; then
    say "not a Debian machine; this needs the equivalents of: $*"
    return 0
  fi
  local missing=() package
  for package; do is_installed "$package" || missing+=("$package"); done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -ne 0 ] && ! command -v sudo > /dev/null; then
    say "these packages are missing, and there are no rights to install them: ${missing[*]}"
    return 1
  fi
  say "installing ${missing[*]}"
  local wait="-o DPkg::Lock::Timeout=300"
  quietly apt-update as_root apt-get $wait -qq update || return
  quietly apt-install as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get $wait install -y -qq --no-install-recommends "${missing[@]}"
}

# Makes cmake use ccache, if it is installed. It keeps what uses precompiled headers only when it is
# told that it may.
export CCACHE_SLOPPINESS=pch_defines,time_macros
launcher=()
if command -v ccache > /dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
