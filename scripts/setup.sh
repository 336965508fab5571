# Sourced by run and test: installs the packages that are missing, configures, builds.
# Prints nothing if there is nothing to do.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# missing_packages LIST...: prints the packages of these lists that are not installed.
missing_packages() {
    local wanted installed
    wanted=$(cd "$root" && cat "$@")
    # shellcheck disable=SC2086  # split into words
    # A package that is being configured or waits for another one is there.
    installed=$(dpkg-query -W -f='${db:Status-Status} ${binary:Package}\n' $wanted 2>/dev/null |
        sed -E '/^(not-installed|config-files|half-installed) /d; s/^[^ ]+ //; s/:.*//')
    comm -23 <(sort <<<"$wanted") <(sort <<<"$installed")
}

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# install_packages LIST...: installs what is missing of these lists.
install_packages() {
    local missing
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
        echo "These packages are missing, and installing them needs root or sudo:" >&2
        # shellcheck disable=SC2086
        echo $missing >&2
        return 1
    fi
    # shellcheck disable=SC2086
    echo "Installing:" $missing
    local log
    log=$(mktemp)
    # shellcheck disable=SC2086
    if ! { as_root apt-get update -qq &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing; } \
        >"$log" 2>&1; then
        echo "The packages could not be installed: $(grep -m1 '^E: ' "$log" || tail -n 1 "$log") (see $log)" >&2
        return 1
    fi
    rm -f "$log"
}

# Options of the build with AddressSanitizer, UBSan and the fuzz targets. With Clang, which has
# libFuzzer.
# shellcheck disable=SC2034  # used by .ci/run and scripts/fuzz
sanitizer_options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
    -DTVM_SANITIZE=ON -DTVM_FUZZ=ON -DTVM_TESTS=ON "-DTVM_WERROR=${TVM_WERROR:-OFF}")

# build FOLDER [CMAKE OPTION...]: configures if needed (the first time, or with other options) and
# builds everything, or the targets in TVM_TARGETS.
build() {
    local folder=$root/$1 log
    shift
    local options="$*"
    if [ ! -f "$folder/build.ninja" ] || [ "$(cat "$folder/options" 2>/dev/null)" != "$options" ]; then
        mkdir -p "$folder"
        log=$folder/configure.log
        if ! cmake -S "$root" -B "$folder" -G Ninja "$@" >"$log" 2>&1; then
            cat "$log" >&2
            return 1
        fi
        printf '%s' "$options" >"$folder/options"
    fi
    log=$folder/build.log
    # shellcheck disable=SC2086  # split into words
    if ! cmake --build "$folder" ${TVM_TARGETS:+--target $TVM_TARGETS} >"$log" 2>&1; then
        cat "$log" >&2
        return 1
    fi
}
