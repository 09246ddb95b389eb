# Debian packages of the project; sourced by the other scripts.

BUILD_PACKAGES="cmake ninja-build g++ pkg-config libxml2-dev libsqlite3-dev libre2-dev
nlohmann-json3-dev libcli11-dev"
TEST_PACKAGES="$BUILD_PACKAGES libgtest-dev libbenchmark-dev clang clang-format clang-tidy
libclang-rt-dev libxml2-utils clips strace python3 python3-jsonschema"

say() { printf '==> %s\n' "$*"; }

# Installs those of the named packages that are missing, when this user may; else says which.
install_missing() {
  local package missing=()
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
      missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! sudo -n true 2>/dev/null; then
      printf 'These Debian packages are missing and may not be installed by this user:\n  %s\n' \
        "${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo -n)
  fi
  say "Installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  "${as_root[@]}" apt-get update -qq &&
    "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
