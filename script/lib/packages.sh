# Sourced by the scripts: changes into the project's root and sees to the packages a script needs.
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1

is_installed() { dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed; }

# need PACKAGE...: installs the missing ones and says so; where that is not ours to do, names them and gives up.
need() {
  command -v dpkg-query >/dev/null || return 0  # another system: its packages have other names
  local package missing=()
  for package in "$@"; do is_installed "$package" || missing+=("$package"); done
  [ ${#missing[@]} -eq 0 ] && return
  if [ "$(id -u)" -ne 0 ]; then
    echo "$0: these packages are missing; as root: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  echo "installing ${missing[*]}" >&2
  { apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >&2 ||
    { echo "$0: could not install ${missing[*]}" >&2; exit 1; }
}

build_tools=(cmake ninja-build g++)
docs_tools=(doxygen python3)
mips_tools=(g++-mips-linux-gnu qemu-user)
test_tools=("${docs_tools[@]}" mandoc groff-base man-db googletest iproute2 jq util-linux pkg-config libnl-3-dev libnl-route-3-dev
  libxml2-utils prometheus)
bench_tools=(pkg-config libbenchmark-dev libmnl-dev libnl-3-dev libnl-route-3-dev libxml2-dev libglib2.0-dev libgdbm-dev)
