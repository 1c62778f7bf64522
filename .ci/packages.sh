# Sourced by the scripts of the project: sees to the Debian packages they need.

# need_packages NAME... : each is a package, or command:package where the command alone decides.
# Installs what is missing when run as root; otherwise prints the line to run and ends the script.
need_packages() {
  local entry missing=()
  for entry in "$@"; do
    case $entry in
      *:*) command -v "${entry%%:*}" >/dev/null || missing+=("${entry##*:}") ;;
      *) if command -v dpkg-query >/dev/null &&
           ! dpkg-query -W -f='${db:Status-Status}' "$entry" 2>/dev/null | grep -qx installed; then
           missing+=("$entry")
         fi ;;
    esac
  done
  [ ${#missing[@]} -eq 0 ] && return
  if [ "$(id -u)" -eq 0 ] && command -v apt-get >/dev/null; then
    echo "== installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq </dev/null
    apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null >/dev/null
    return
  fi
  echo "Missing packages. Please run:" >&2
  echo "  sudo apt-get install ${missing[*]}" >&2
  exit 1
}

build_packages=(g++:g++ cmake:cmake ninja:ninja-build pkg-config:pkg-config libboost-dev
                libcli11-dev nlohmann-json3-dev libeigen3-dev libopencv-contrib-dev libjpeg-dev
                libpng-dev libtiff-dev libexif-dev libhpdf-dev libgeographiclib-dev libcgal-dev
                libpugixml-dev)
test_packages=("${build_packages[@]}" libgtest-dev locales python3-jsonschema
               python3-dev python3-numpy python3-pytest python3-mypy pybind11-dev)
fuzz_packages=("${build_packages[@]}" clang:clang libomp-dev libclang-rt-14-dev)
ci_packages=("${test_packages[@]}" "${fuzz_packages[@]}" git:git libbenchmark-dev
             clang-format:clang-format python3-opencv python3-scipy python3-distributed python3-ezdxf)
